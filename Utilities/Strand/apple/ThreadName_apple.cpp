// Thread names on macOS: the platform keeps 63 bytes and names only the calling
// thread, which is all the library asks of it.
#include <pthread.h>

#include <atomic>

#include "Strand/Platform.h"

namespace Strand::platform {

namespace {

int setPlatformName(const char* name) { return pthread_setname_np(name); }

std::atomic<NameSetter> gNameSetter{&setPlatformName};

}  // namespace

int setCurrentThreadName(const char* name) {
    return gNameSetter.load(std::memory_order_acquire)(name);
}

std::string threadName(const ThreadId& id) {
    char buffer[128] = {};
    pthread_getname_np(std::get<0>(id), buffer, sizeof buffer);
    return buffer;
}

NameSetter exchangeNameSetterForTesting(NameSetter setter) {
    return gNameSetter.exchange(setter != nullptr ? setter : &setPlatformName,
                                std::memory_order_acq_rel);
}

}  // namespace Strand::platform

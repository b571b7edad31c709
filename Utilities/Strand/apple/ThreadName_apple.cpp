// Thread names on macOS: the platform keeps 63 bytes and names only the calling
// thread, which is all the library asks of it.
#include <mach/mach.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <cstdint>

#include "Strand/Platform.h"
#include "Strand/apple/KernelThreadId_apple.h"

namespace Strand::platform {

namespace {

// pthread_setname_np returns -1 and sets errno when it refuses.
int setPlatformName(const char* name) { return pthread_setname_np(name) == 0 ? 0 : errno; }

std::atomic<NameSetter> gNameSetter{&setPlatformName};

}  // namespace

int setCurrentThreadName(const char* name) {
    return gNameSetter.load(std::memory_order_acquire)(name);
}

std::string threadName(const ThreadId& id) {
    if (std::get<0>(id) == pthread_t{}) {
        return {};  // a listed thread without a POSIX handle cannot be asked
    }
    // libpthread still answers for a thread that has ended and is not yet
    // joined, with its old name: only a thread whose port the kernel still
    // gives to it (with the same id) is asked.
    std::uint64_t handleId = 0;
    std::uint64_t kernelId = 0;
    if (pthread_threadid_np(std::get<0>(id), &handleId) != 0 ||
        static_cast<int>(static_cast<std::uint32_t>(handleId)) != std::get<1>(id) ||
        !kernelThreadId(pthread_mach_thread_np(std::get<0>(id)), kernelId) ||
        kernelId != handleId) {
        return {};
    }
    char buffer[128] = {};
    pthread_getname_np(std::get<0>(id), buffer, sizeof buffer);
    return buffer;
}

NameSetter exchangeNameSetterForTesting(NameSetter setter) {
    return gNameSetter.exchange(setter != nullptr ? setter : &setPlatformName,
                                std::memory_order_acq_rel);
}

}  // namespace Strand::platform

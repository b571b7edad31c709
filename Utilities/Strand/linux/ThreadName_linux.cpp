// Thread names on Linux. The kernel keeps 15 bytes of a name; the library keeps
// the full name (up to 63 bytes) in the thread registry and hands the kernel its
// first 15 bytes, which is what top and debuggers show. A name reads back whole
// while the kernel still holds what the library gave it; a thread renamed by
// other code (prctl, pthread_setname_np) reads back as the kernel has it.
#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>

#include "Strand/Platform.h"
#include "Strand/linux/ThreadRegistry.h"

namespace Strand::platform {

namespace {

// TASK_COMM_LEN less the terminating NUL.
constexpr std::size_t kKernelNameBytes = 15;

int setKernelName(const char* name) { return pthread_setname_np(pthread_self(), name); }

std::atomic<NameSetter> gNameSetter{&setKernelName};

// The kernel's name of thread tid; empty if it cannot be read.
std::string kernelName(int tid) {
    char buffer[128] = {};
    if (tid == gettid()) {
        // PR_GET_NAME writes at most 16 bytes, NUL included.
        if (prctl(PR_GET_NAME, buffer, 0, 0, 0) != 0) {
            return {};
        }
        return buffer;
    }
    char path[48];
    std::snprintf(path, sizeof path, "/proc/self/task/%d/comm", tid);
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return {};
    }
    const ssize_t count = read(fd, buffer, sizeof buffer - 1);
    close(fd);
    if (count <= 0) {
        return {};
    }
    std::string name(buffer, static_cast<std::size_t>(count));
    if (!name.empty() && name.back() == '\n') {
        name.pop_back();
    }
    return name;
}

}  // namespace

int setCurrentThreadName(const char* name) {
    const std::string fullName(name);
    const std::string shortName = fullName.substr(0, kKernelNameBytes);
    const int rc = gNameSetter.load(std::memory_order_acquire)(shortName.c_str());
    if (rc == 0) {
        const ThreadId self = currentThreadId();
        linux_layer::rememberCurrentThreadName(std::get<1>(self), std::get<0>(self), fullName,
                                               shortName);
    }
    return rc;
}

std::string threadName(const ThreadId& id) {
    const int tid = std::get<1>(id);
    if (tid <= 0) {
        return {};
    }
    std::string name = kernelName(tid);
    if (auto full = linux_layer::fullNameIfCurrent(tid, name)) {
        return std::move(*full);
    }
    return name;
}

NameSetter exchangeNameSetterForTesting(NameSetter setter) {
    return gNameSetter.exchange(setter != nullptr ? setter : &setKernelName,
                                std::memory_order_acq_rel);
}

}  // namespace Strand::platform

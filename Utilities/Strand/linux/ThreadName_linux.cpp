// Thread names on Linux. The kernel keeps 15 bytes of a name; the library keeps
// the full name (up to 63 bytes) in the thread registry and hands the kernel its
// first 15 bytes, which is what top and debuggers show. A name reads back whole
// while the kernel still holds what it held when the library named the thread;
// a thread renamed by other code (prctl, pthread_setname_np) reads back as the
// kernel has it.
//
// The kernel's name of the main thread is the process's name (ps, pgrep,
// killall), so the main thread's name is kept by the library alone and the
// kernel keeps the program's name.
#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>

#include "Strand/Platform.h"
#include "Strand/linux/ThreadRegistry.h"

namespace Strand::platform {

namespace {

// TASK_COMM_LEN less the terminating NUL.
constexpr std::size_t kKernelNameBytes = 15;

// What pthread_setname_np does for the calling thread, without its length check
// (name fits) and its lookup of the thread.
int setKernelName(const char* name) { return prctl(PR_SET_NAME, name, 0, 0, 0) == 0 ? 0 : errno; }

std::atomic<NameSetter> gNameSetter{&setKernelName};

// The calling thread's kernel name into buffer (16 bytes); empty if it cannot
// be read.
std::string_view ownKernelName(char (&buffer)[kKernelNameBytes + 1]) {
    if (prctl(PR_GET_NAME, buffer, 0, 0, 0) != 0) {
        buffer[0] = '\0';
    }
    buffer[kKernelNameBytes] = '\0';
    return buffer;
}

// The kernel's name of thread tid of this process; empty if it cannot be read.
std::string kernelName(int tid) {
    char path[48];
    std::snprintf(path, sizeof path, "/proc/self/task/%d/comm", tid);
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return {};
    }
    char buffer[128] = {};
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
    const std::string_view fullName(name);
    char kernelNow[kKernelNameBytes + 1] = {};
    if (linux_layer::currentIsMainThread()) {
        ownKernelName(kernelNow);
    } else {
        fullName.substr(0, kKernelNameBytes).copy(kernelNow, kKernelNameBytes);
        if (const int rc = gNameSetter.load(std::memory_order_acquire)(kernelNow)) {
            return rc;
        }
    }
    if (linux_layer::ThreadRecord* const self = linux_layer::currentRecord()) {
        linux_layer::rememberName(*self, fullName, kernelNow);
    }
    return 0;
}

std::string threadName(const ThreadId& id) {
    const int tid = std::get<1>(id);
    if (tid <= 0) {
        return {};
    }
    if (tid == std::get<1>(getThreadId())) {
        char buffer[kKernelNameBytes + 1] = {};
        const std::string_view name = ownKernelName(buffer);
        if (linux_layer::ThreadRecord* const self = linux_layer::currentRecord()) {
            if (auto full = linux_layer::ownFullName(*self, name)) {
                return std::move(*full);
            }
        }
        return std::string(name);
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

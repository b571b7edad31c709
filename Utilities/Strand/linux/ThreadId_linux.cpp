// Thread identity on Linux: (pthread_self(), TID, TID). The TID is the kernel's
// per-thread handle, unique among live threads and stable for a thread's life,
// so it serves as both the numeric id and the primary id. The thread registry
// (ThreadRegistry.cpp) caches the triple per thread, defines
// getThreadId, and keeps the handles for listings.
#include <dirent.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>

#include "Strand/Platform.h"
#include "Strand/linux/TaskStart.h"
#include "Strand/linux/ThreadRegistry.h"

namespace Strand {

int gettid() { return static_cast<int>(syscall(SYS_gettid)); }

namespace platform {

std::vector<ThreadId> listThreads() {
    DIR* const directory = opendir("/proc/self/task");
    if (directory == nullptr) {
        return {};
    }
    std::vector<int> tids;
    // readdir is safe here: the stream is private to this call.
    while (const dirent* entry = readdir(directory)) {  // NOLINT(concurrency-mt-unsafe)
        char* end = nullptr;
        const long tid = std::strtol(entry->d_name, &end, 10);
        if (end != entry->d_name && *end == '\0' && tid > 0) {
            tids.push_back(static_cast<int>(tid));
        }
    }
    closedir(directory);

    const ThreadId self = getThreadId();
    const std::vector<pthread_t> handles = linux_layer::knownHandles(tids);
    std::vector<ThreadId> threads;
    threads.reserve(tids.size());
    for (std::size_t i = 0; i < tids.size(); ++i) {
        if (tids[i] == std::get<1>(self)) {
            threads.push_back(self);
        } else {
            threads.emplace_back(handles[i], tids[i], static_cast<unsigned int>(tids[i]));
        }
    }
    return threads;
}

std::uint64_t threadIncarnation(const ThreadId& id) {
    const linux_layer::TaskStart start = linux_layer::taskStart(std::get<1>(id));
    switch (start.state) {
        case linux_layer::TaskStart::State::kRunning:
            return start.ticks;
        case linux_layer::TaskStart::State::kEnded:
            return kThreadEnded;
        case linux_layer::TaskStart::State::kUnknown:
            break;
    }
    return kThreadUnknown;
}

}  // namespace platform
}  // namespace Strand

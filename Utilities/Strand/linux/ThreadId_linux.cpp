// Thread identity on Linux: (pthread_self(), TID, TID). The TID is the kernel's
// per-thread handle, unique among live threads and stable for a thread's life,
// so it serves as both the numeric id and the primary id.
#include <dirent.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>

#include "Strand/Platform.h"
#include "Strand/linux/ThreadRegistry.h"

namespace Strand {

namespace {

// The calling thread's triple. Trivially destructible, so reading it needs no
// guard; invalidated in a fork child, where the thread has a new TID.
struct CachedIdentity {
    ThreadId id{};
    bool valid = false;
};
constinit thread_local CachedIdentity tCached;

ThreadId computeAndCache() {
    const int tid = gettid();
    const pthread_t self = pthread_self();
    linux_layer::rememberCurrentThread(tid, self);
    tCached.id = ThreadId{self, tid, static_cast<unsigned int>(tid)};
    tCached.valid = true;
    return tCached.id;
}

void prepareFork() { linux_layer::lockForFork(); }

void parentAfterFork() { linux_layer::unlockAfterForkInParent(); }

void childAfterFork() {
    // Runs on the forking thread, the only thread of the child.
    const int oldTid = tCached.valid ? std::get<1>(tCached.id) : 0;
    tCached.valid = false;
    linux_layer::unlockAfterForkInChild(oldTid, gettid());
}

[[maybe_unused]] const bool gForkHandlersInstalled =
    pthread_atfork(&prepareFork, &parentAfterFork, &childAfterFork) == 0;

}  // namespace

int gettid() { return static_cast<int>(syscall(SYS_gettid)); }

int getUnixThreadId(pthread_t thread) {
    if (pthread_equal(thread, pthread_self())) {
        return std::get<1>(platform::currentThreadId());
    }
    return linux_layer::knownTid(thread);
}

namespace platform {

ThreadId currentThreadId() {
    if (tCached.valid) [[likely]] {
        return tCached.id;
    }
    return computeAndCache();
}

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

    const ThreadId self = currentThreadId();
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

}  // namespace platform
}  // namespace Strand

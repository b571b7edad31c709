#include "Strand/linux/ThreadRegistry.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <mutex>
#include <unordered_map>

namespace Strand::linux_layer {

namespace {

struct KnownThread {
    pthread_t handle{};
    std::string fullName;
    std::string kernelName;
    bool named = false;
};

struct Registry {
    std::mutex mutex;
    std::unordered_map<int, KnownThread> threads;
};

// Never destroyed: threads may end while static destructors run.
Registry& registry() {
    static auto* const instance = new Registry;
    return *instance;
}

// Drops the calling thread's entry when the thread ends.
struct ExitHook {
    bool armed = false;
    ~ExitHook() {
        if (armed) {
            const int tid = static_cast<int>(syscall(SYS_gettid));
            const std::lock_guard<std::mutex> guard(registry().mutex);
            registry().threads.erase(tid);
        }
    }
};

void armExitHook() {
    thread_local ExitHook hook;
    hook.armed = true;
}

}  // namespace

void rememberCurrentThread(int tid, pthread_t handle) {
    armExitHook();
    const std::lock_guard<std::mutex> guard(registry().mutex);
    // A TID is reused only after its thread has gone, so an existing entry with
    // another handle is stale and is replaced.
    auto& entry = registry().threads[tid];
    if (!pthread_equal(entry.handle, handle)) {
        entry = KnownThread{handle, {}, {}, false};
    }
}

void rememberCurrentThreadName(int tid, pthread_t handle, const std::string& fullName,
                               const std::string& kernelName) {
    armExitHook();
    const std::lock_guard<std::mutex> guard(registry().mutex);
    registry().threads[tid] = KnownThread{handle, fullName, kernelName, true};
}

std::vector<pthread_t> knownHandles(const std::vector<int>& tids) {
    std::vector<pthread_t> handles(tids.size(), pthread_t{});
    const std::lock_guard<std::mutex> guard(registry().mutex);
    for (std::size_t i = 0; i < tids.size(); ++i) {
        const auto found = registry().threads.find(tids[i]);
        if (found != registry().threads.end()) {
            handles[i] = found->second.handle;
        }
    }
    return handles;
}

int knownTid(pthread_t handle) {
    const std::lock_guard<std::mutex> guard(registry().mutex);
    for (const auto& [tid, thread] : registry().threads) {
        if (pthread_equal(thread.handle, handle)) {
            return tid;
        }
    }
    return 0;
}

std::optional<std::string> fullNameIfCurrent(int tid, const std::string& kernelName) {
    const std::lock_guard<std::mutex> guard(registry().mutex);
    const auto found = registry().threads.find(tid);
    if (found == registry().threads.end() || !found->second.named ||
        found->second.kernelName != kernelName) {
        return std::nullopt;
    }
    return found->second.fullName;
}

void lockForFork() { registry().mutex.lock(); }

void unlockAfterForkInParent() { registry().mutex.unlock(); }

void unlockAfterForkInChild(int oldTid, int newTid) {
    auto& threads = registry().threads;
    std::optional<KnownThread> forking;
    if (const auto found = threads.find(oldTid); found != threads.end()) {
        forking = std::move(found->second);
    }
    threads.clear();
    if (forking) {
        threads.emplace(newTid, std::move(*forking));
    }
    registry().mutex.unlock();
}

}  // namespace Strand::linux_layer

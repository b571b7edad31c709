// Test helpers shared by the thread-layer tests.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <future>
#include <mutex>
#include <thread>
#include <vector>

#include "Strand/Platform.h"
#include "Strand/ThreadId.h"

namespace StrandTest {

// Threads that park until released, so the process has a known set of threads.
class ParkedThreads {
public:
    ParkedThreads(int count, bool askIdentity) {
        for (int i = 0; i < count; ++i) {
            threads_.emplace_back([this, askIdentity] {
                std::unique_lock<std::mutex> lock(mutex_);
                ids_.push_back(askIdentity ? Strand::getThreadId()
                                           : Strand::ThreadId{pthread_t{}, Strand::gettid(), 0});
                ready_.notify_all();
                released_.wait(lock, [this] { return release_; });
            });
        }
        std::unique_lock<std::mutex> lock(mutex_);
        ready_.wait(lock, [this, count] { return ids_.size() == static_cast<std::size_t>(count); });
    }
    ~ParkedThreads() {
        {
            const std::lock_guard<std::mutex> guard(mutex_);
            release_ = true;
        }
        released_.notify_all();
        for (auto& thread : threads_) {
            thread.join();
        }
    }
    const std::vector<Strand::ThreadId>& ids() const { return ids_; }

private:
    std::mutex mutex_;
    std::condition_variable ready_;
    std::condition_variable released_;
    bool release_ = false;
    std::vector<Strand::ThreadId> ids_;
    std::vector<std::thread> threads_;
};

// Runs fn on a fresh thread and returns its result, so names never leak between cases.
template <typename Fn>
auto onNewThread(Fn fn) {
    auto task = std::packaged_task<decltype(fn())()>(fn);
    auto result = task.get_future();
    std::thread(std::move(task)).join();
    return result.get();
}

}  // namespace StrandTest

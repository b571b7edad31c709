// A thread that is joined when it goes: std::jthread without the stop token,
// which not every standard library offers yet (libc++ keeps it experimental).
#pragma once

#include <latch>
#include <thread>
#include <utility>
#include <vector>

class JoiningThread : public std::thread {
public:
    using std::thread::thread;
    JoiningThread(JoiningThread&&) noexcept = default;
    JoiningThread& operator=(JoiningThread&& other) noexcept {
        if (joinable()) join();
        std::thread::operator=(std::move(other));
        return *this;
    }
    ~JoiningThread() {
        if (joinable()) join();
    }
};

// Runs body(0) .. body(count - 1) on threads released together, and joins them.
template <typename Fn>
void onThreadsAtOnce(int count, Fn body) {
    std::latch start(count);
    std::vector<JoiningThread> threads;
    for (int t = 0; t < count; ++t) {
        threads.emplace_back([&, t] {
            start.arrive_and_wait();
            body(t);
        });
    }
}

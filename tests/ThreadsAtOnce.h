// Runs body(0) .. body(count - 1) on threads released together, and joins them.
#pragma once

#include <latch>
#include <thread>
#include <vector>

template <typename Fn>
void onThreadsAtOnce(int count, Fn body) {
    std::latch start(count);
    std::vector<std::thread> threads;
    for (int t = 0; t < count; ++t) {
        threads.emplace_back([&, t] {
            start.arrive_and_wait();
            body(t);
        });
    }
    for (auto& thread : threads) thread.join();
}

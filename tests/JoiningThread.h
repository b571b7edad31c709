// A thread that is joined when it goes: std::jthread without the stop token,
// which not every standard library offers yet (libc++ keeps it experimental).
#pragma once

#include <thread>
#include <utility>

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

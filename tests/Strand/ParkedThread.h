// Test threads with a known stack: a ParkedThread idles in parkedThreadWait
// between tasks, which it runs outside any signal handler.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "Strand/ThreadId.h"

// Functions whose names tests look for in traces: never inlined, and exported
// (with the executable's ENABLE_EXPORTS) so that trace lines name them.
#define STRAND_TEST_TRACEABLE __attribute__((noinline, visibility("default")))

// Waits on changed until ready() holds.
STRAND_TEST_TRACEABLE void parkedThreadWait(std::condition_variable& changed,
                                            std::unique_lock<std::mutex>& lock,
                                            const std::function<bool()>& ready);

// Recurses depth frames deep, then returns atBottom().
STRAND_TEST_TRACEABLE int recurseThen(int depth, const std::function<int()>& atBottom);

class ParkedThread {
public:
    ParkedThread();
    ~ParkedThread();
    ParkedThread(const ParkedThread&) = delete;
    ParkedThread& operator=(const ParkedThread&) = delete;

    Strand::ThreadId id() const { return id_; }

    // Runs task on the thread and waits for it to return.
    void run(const std::function<void()>& task);

private:
    void loop();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::function<void()> task_;
    bool stop_ = false;
    Strand::ThreadId id_{};
    std::thread thread_;
};

#include "StackTraceDemo.h"

#include <Strand/Strand.h>

#include <condition_variable>
#include <iostream>
#include <mutex>
#include <thread>

// A worker's idle loop. Exported (and never inlined) so that its name shows in
// stack traces: the demo is linked with ENABLE_EXPORTS, and the project compiles
// with hidden visibility by default.
__attribute__((noinline, visibility("default"))) void waitForFramesToParse(
    std::condition_variable& changed, std::unique_lock<std::mutex>& lock, const bool& done) {
    changed.wait(lock, [&done] { return done; });
}

void showStackTraces() {
    std::mutex mutex;
    std::condition_variable changed;
    bool waiting = false;
    bool done = false;
    Strand::ThreadId workerId;
    std::thread worker([&] {
        Strand::setThreadName("demo-parser");
        std::unique_lock<std::mutex> lock(mutex);
        workerId = Strand::getThreadId();
        waiting = true;
        changed.notify_all();
        waitForFramesToParse(changed, lock, done);
    });
    {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [&] { return waiting; });
    }

    // The worker holds the mutex until its wait inside waitForFramesToParse
    // releases it, so that is where it is now.
    std::cout << "stack trace of " << Strand::getThreadName(workerId) << " ("
              << Strand::getThreadIdString(workerId) << "), innermost frame first:\n"
              << Strand::getStackTrace({}, workerId);

    std::cout << "threads of this process:\n";
    for (const Strand::ThreadId& id : Strand::getThreadIds()) {
        std::cout << "  " << Strand::getThreadIdString(id) << "  " << Strand::getThreadName(id)
                  << "\n";
    }

    {
        const std::lock_guard<std::mutex> lock(mutex);
        done = true;
    }
    changed.notify_all();
    worker.join();
}

// A tour of the thread layer: who am I, name a thread, read the name from
// another thread, and list the process's threads with their names.
#include <Strand/Strand.h>

#include <condition_variable>
#include <iostream>
#include <mutex>
#include <thread>

#include "StackTraceDemo.h"

int main() {
    Strand::setThreadName("demo-main");
    const Strand::ThreadId self = Strand::getThreadId();
    std::cout << "calling thread: handle " << Strand::getPosixThreadId(self) << ", id "
              << Strand::getThreadIdString() << " (" << Strand::getThreadIdHexString()
              << "), primary id " << Strand::getPrimaryThreadId() << "\n";

    // A worker names itself with more than the kernel's 15 bytes, then waits.
    std::mutex mutex;
    std::condition_variable changed;
    bool named = false;
    bool done = false;
    Strand::ThreadId workerId;
    std::thread worker([&] {
        Strand::setThreadName("demo-worker: parses incoming frames");
        std::unique_lock<std::mutex> lock(mutex);
        workerId = Strand::getThreadId();
        named = true;
        changed.notify_all();
        changed.wait(lock, [&] { return done; });
    });
    {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [&] { return named; });
    }
    std::cout << "worker " << Strand::getThreadIdString(workerId) << " is named \""
              << Strand::getThreadName(workerId) << "\" (read from the main thread)\n";

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

    showStackTraces();
    return 0;
}

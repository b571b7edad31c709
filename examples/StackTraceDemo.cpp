#include "StackTraceDemo.h"

#include <Strand/Strand.h>

#include <future>
#include <iostream>
#include <thread>

// A worker's idle wait. Exported (and never inlined) so that its name shows in
// stack traces: the demo is linked with ENABLE_EXPORTS, and the project compiles
// with hidden visibility by default.
__attribute__((noinline, visibility("default"))) void waitForFramesToParse(
    std::promise<Strand::ThreadId>& waiting, std::future<void>& release) {
    waiting.set_value(Strand::getThreadId());
    release.wait();
}

void showStackTraces() {
    std::promise<Strand::ThreadId> waiting;
    std::promise<void> release;
    std::thread worker([&waiting, done = release.get_future()]() mutable {
        Strand::setThreadName("demo-parser");
        waitForFramesToParse(waiting, done);
    });
    const Strand::ThreadId workerId = waiting.get_future().get();

    std::cout << "== stack trace of " << Strand::getThreadName(workerId) << " ("
              << Strand::getThreadIdString(workerId) << "), innermost frame first:\n"
              << Strand::getStackTrace({}, workerId);
    release.set_value();
    worker.join();
}

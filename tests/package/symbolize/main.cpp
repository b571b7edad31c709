// Prints the trace of its stuck worker, whose frames have no dynamic symbol: client(+0x...).
#include <Strand/Strand.h>

#include <atomic>
#include <future>
#include <iostream>
#include <thread>

namespace {

__attribute__((noinline)) void waitForRelease(std::promise<Strand::ThreadId>& started,
                                              const std::shared_future<void>& release) {
    started.set_value(Strand::getThreadId());  // trace: started
    release.wait();                            // trace: stuck
}

}  // namespace

int main() {
    std::promise<Strand::ThreadId> started;
    std::promise<void> release;
    std::atomic<bool> finished{false};
    // The store after the call keeps the lambda's frame (no tail call).
    std::thread worker([&started, &finished, done = release.get_future().share()] {
        waitForRelease(started, done);  // trace: worker
        finished.store(true);
    });
    std::cout << Strand::getStackTrace({}, started.get_future().get());
    release.set_value();
    worker.join();
    return finished.load() ? 0 : 1;
}

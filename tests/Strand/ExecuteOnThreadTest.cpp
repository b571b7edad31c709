// Running functions on other threads, and the stack traces taken that way.
#include "Strand/ExecuteOnThread.h"
#include "Strand/StackTrace.h"
#include "TestSupport.h"

// Recurses depth frames deep, then runs atBottom.
STRAND_TEST_TRACEABLE void recurseThen(int depth, const std::function<void()>& atBottom) {
    depth > 0 ? recurseThen(depth - 1, atBottom) : atBottom();
    asm volatile("" ::: "memory");  // keeps the call out of tail position
}

// The caller's own frame, which must never show in another thread's trace.
STRAND_TEST_TRACEABLE std::string traceFromTheCaller(const Strand::ThreadId& thread) {
    return Strand::getStackTrace({}, thread);
}

namespace {

using Strand::executeOnThread;

// Where a function that then runs also ran (empty if it did not); not for calls that time out.
Strand::ThreadId ranOn(
    const Strand::ThreadId& thread, const std::function<void()>& also = [] {}) {
    Strand::ThreadId where{};
    executeOnThread(thread, [&] { (where = Strand::getThreadId(), also()); });
    return where;
}

TEST(ExecuteOnThread, RunsOnTheTargetOrNowhere) {
    const Strand::ThreadId self = Strand::getThreadId();
    EXPECT_EQ(ranOn(self), self);
    EXPECT_THROW(ranOn(self, [] { throw std::logic_error("mine"); }), std::logic_error);
    EXPECT_THROW(executeOnThread(self, {}), std::bad_function_call);
    const ParkedThread target;
    EXPECT_EQ(ranOn(target.id()), target.id());
    EXPECT_EQ(ranOn(target.id(), [] { throw std::runtime_error("dropped"); }), target.id());
    EXPECT_NO_THROW(executeOnThread(target.id(), {}));
    const Strand::ThreadId ended = onNewThread([] { return Strand::getThreadId(); });
    for (const Strand::ThreadId& id :
         {ended, Strand::ThreadId{}, {pthread_t{}, -1, UINT_MAX}, {pthread_self(), INT_MAX, 7}}) {
        EXPECT_EQ(ranOn(id), Strand::ThreadId{});
        EXPECT_EQ(Strand::getStackTrace({}, id), "");
    }
}

TEST(ExecuteOnThread, BlockedTargetIsGivenUpAndNeverRunsLate) {
    ParkedThread target;
    target.run([] { Strand::platform::blockCrossThreadSignal(); });
    std::atomic<bool> ran{false};
    executeOnThread(target.id(), [&ran] { ran = true; });
    bool pending = false;
    target.run([&pending] {
        sigset_t set;
        sigpending(&set);
        pending = sigismember(&set, SIGUSR1) == 1;
        Strand::platform::unblockCrossThreadSignal();  // the late handler runs here
    });
    EXPECT_TRUE(pending) << "the signal is still held back";
    EXPECT_FALSE(ran);
    EXPECT_EQ(ranOn(target.id()), target.id()) << "the target still takes calls";
}

TEST(ExecuteOnThread, SlowFunctionOutlivesTheWaitAndCompletes) {
    ParkedThread target;
    std::latch returned(1), completed(1);
    executeOnThread(target.id(), [&] {  // runs on after the call has given up waiting
        returned.wait();
        completed.count_down();
    });
    EXPECT_FALSE(completed.try_wait());
    returned.count_down();
    completed.wait();
    EXPECT_EQ(ranOn(target.id()), target.id());
}

TEST(ExecuteOnThread, ConcurrentCallersAreServedOneAfterTheOther) {
    const ParkedThread targets[2];
    std::atomic<int> inFlight{0}, overlaps{0}, misplaced{0}, runs{0};
    onThreadsAtOnce(2, [&](int which) {
        for (int i = 0; i < 50; ++i) {
            executeOnThread(targets[which].id(), [&, which] {
                overlaps += inFlight.fetch_add(1) != 0 ? 1 : 0;
                misplaced += Strand::getThreadId() != targets[which].id() ? 1 : 0;
                ++runs;
                std::this_thread::yield();
                --inFlight;
            });
        }
    });
    EXPECT_EQ(overlaps, 0);
    EXPECT_EQ(misplaced, 0);
    EXPECT_EQ(runs, 100);
}

TEST(StackTrace, TracesShowTheTargetsFramesCutAt100) {
    std::string own, other;
    recurseThen(150, [&own] { own = traceFromTheCaller(Strand::getThreadId()); });
    ParkedThread target;  // traced while it waits for a thread that traces it
    target.run([&] {
        // Taken once untraced first: a trace taken in a lazy-binding stub stops short (aarch64).
        std::thread([] {}).join();
        recurseThen(150,
                    [&] { std::thread([&] { other = traceFromTheCaller(target.id()); }).join(); });
    });
    for (const std::string& trace : {own, other}) {  // 100 lines, none empty, all ended
        EXPECT_EQ(std::count(trace.begin(), trace.end(), '\n'), 100) << trace;
        EXPECT_TRUE(trace.ends_with('\n') && ('\n' + trace).find("\n\n") == std::string::npos);
        EXPECT_NE(trace.find("recurseThen"), std::string::npos) << trace;
    }
    EXPECT_NE(own.find("traceFromTheCaller"), std::string::npos) << own;
    EXPECT_EQ(other.find("traceFromTheCaller"), std::string::npos) << other;
}

}  // namespace

#include "Strand/ExecuteOnThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <csignal>
#include <future>
#include <stdexcept>
#include <thread>

#include "ParkedThread.h"
#include "Strand/Platform.h"

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

Strand::ThreadId endedThread() {
    Strand::ThreadId id;
    std::thread([&id] { id = Strand::getThreadId(); }).join();
    return id;
}

TEST(ExecuteOnThread, CallingThreadRunsInlineAndLetsExceptionsThrough) {
    const Strand::ThreadId self = Strand::getThreadId();
    Strand::ThreadId ranOn{};
    Strand::executeOnThread(self, [&ranOn] { ranOn = Strand::getThreadId(); });
    EXPECT_EQ(ranOn, self);

    EXPECT_THROW(Strand::executeOnThread(self, [] { throw std::logic_error("mine"); }),
                 std::logic_error);
    EXPECT_THROW(Strand::executeOnThread(self, {}), std::bad_function_call);
}

TEST(ExecuteOnThread, RunsOnTheTargetAndWaitsForIt) {
    ParkedThread target;
    struct Case {
        const char* label;
        std::function<void(Strand::ThreadId&)> body;
    };
    const Case cases[] = {
        {"records its thread", [](Strand::ThreadId& ranOn) { ranOn = Strand::getThreadId(); }},
        {"throws after recording",
         [](Strand::ThreadId& ranOn) {
             ranOn = Strand::getThreadId();
             throw std::runtime_error("dropped on the target");
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        Strand::ThreadId ranOn{};
        Strand::executeOnThread(target.id(), [&] { c.body(ranOn); });
        EXPECT_EQ(ranOn, target.id());
    }
    EXPECT_NO_THROW(Strand::executeOnThread(target.id(), {}));
}

TEST(ExecuteOnThread, UnreachableThreadsReturnAtOnce) {
    const Strand::ThreadId cases[] = {
        endedThread(),
        {pthread_t{}, 0, 0},
        {pthread_t{}, -1, UINT_MAX},
        {pthread_self(), INT_MAX, 7},
    };
    for (const Strand::ThreadId& id : cases) {
        SCOPED_TRACE(std::get<1>(id));
        bool ran = false;
        const auto start = Clock::now();
        Strand::executeOnThread(id, [&ran] { ran = true; });
        EXPECT_LT(Clock::now() - start, milliseconds(90)) << "no wait for a signal never sent";
        EXPECT_FALSE(ran);
    }
}

TEST(ExecuteOnThread, BlockedTargetIsGivenUpAndNeverRunsLate) {
    ParkedThread target;
    target.run([] { Strand::platform::blockCrossThreadSignal(); });
    std::atomic<bool> ran{false};
    const auto start = Clock::now();
    Strand::executeOnThread(target.id(), [&ran] { ran = true; });
    EXPECT_GE(Clock::now() - start, milliseconds(100));

    bool pending = false;
    target.run([&pending] {
        sigset_t set;
        sigpending(&set);
        pending = sigismember(&set, SIGUSR1) == 1;
        Strand::platform::unblockCrossThreadSignal();  // the late handler runs here
    });
    EXPECT_TRUE(pending);
    EXPECT_FALSE(ran);

    Strand::executeOnThread(target.id(), [&ran] { ran = true; });
    EXPECT_TRUE(ran) << "the target still takes calls";
}

TEST(ExecuteOnThread, SlowFunctionOutlivesTheWaitAndCompletes) {
    ParkedThread target;
    std::promise<void> completed;
    std::future<void> completion = completed.get_future();
    const auto start = Clock::now();
    Strand::executeOnThread(target.id(), [&completed] {
        std::this_thread::sleep_for(std::chrono::seconds(6));
        completed.set_value();
    });
    EXPECT_GE(Clock::now() - start, std::chrono::seconds(4));
    EXPECT_EQ(completion.wait_for(milliseconds(0)), std::future_status::timeout)
        << "returned before the function ended";
    completion.wait();

    bool ran = false;
    Strand::executeOnThread(target.id(), [&ran] { ran = true; });
    EXPECT_TRUE(ran);
}

TEST(ExecuteOnThread, StraySignalsHaveNoEffect) {
    ParkedThread target;
    Strand::executeOnThread(Strand::getThreadId(), [] {});  // installs the handler
    EXPECT_EQ(Strand::platform::sendCrossThreadSignal(target.id()), 0);
    EXPECT_EQ(Strand::platform::sendCrossThreadSignal(Strand::getThreadId()), 0);
    target.run([] {});  // the target has been back in user space: its handler has run

    bool ran = false;
    Strand::executeOnThread(target.id(), [&ran] { ran = true; });
    EXPECT_TRUE(ran);
}

TEST(ExecuteOnThread, ConcurrentCallersAreServedOneAfterTheOther) {
    constexpr int kCalls = 50;
    ParkedThread targets[2];
    std::atomic<int> inFlight{0};
    std::atomic<bool> overlapped{false};
    int runs[2] = {0, 0};
    bool misplaced[2] = {false, false};

    const auto caller = [&](int which) {
        for (int i = 0; i < kCalls; ++i) {
            Strand::executeOnThread(targets[which].id(), [&, which] {
                overlapped = overlapped || inFlight.fetch_add(1) != 0;
                misplaced[which] = misplaced[which] || Strand::getThreadId() != targets[which].id();
                ++runs[which];
                std::this_thread::yield();
                inFlight.fetch_sub(1);
            });
        }
    };
    std::thread first(caller, 0);
    std::thread second(caller, 1);
    first.join();
    second.join();

    EXPECT_FALSE(overlapped);
    for (int which : {0, 1}) {
        SCOPED_TRACE(which);
        EXPECT_EQ(runs[which], kCalls);
        EXPECT_FALSE(misplaced[which]);
    }
}

}  // namespace

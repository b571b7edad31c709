// The Apple layer on the Darwin emulation, in what only a fault of the system shows.

#include <cerrno>

#include "DarwinEmulation/Control.h"
#include "Strand/ExecuteOnThread.h"
#include "Strand/StackTrace.h"
#include "Strand/TestSupport.h"

namespace {

namespace emu = darwin_emulation;

TEST(AppleLayer, ALiveThreadIsNeverListedAsAnEndedOne) {
    emu::setPortGenerations(1);  // the kernel gives a freed name out again at once
    Strand::ThreadId ended{};
    std::latch known(1);
    std::thread zombie([&] {
        Strand::setThreadName("dead, unjoined");
        ended = Strand::getThreadId();
        known.count_down();
    });
    known.wait();
    while (pthread_kill(zombie.native_handle(), 0) != ESRCH) sched_yield();  // ended, unjoined
    ParkedThread live;
    live.run([] { Strand::setThreadName("alive"); });
    ASSERT_EQ(std::get<2>(live.id()), std::get<2>(ended)) << "the name was given out again";

    const auto listed = Strand::getThreadIds();
    const auto entry = std::find_if(listed.begin(), listed.end(), [&](const Strand::ThreadId& id) {
        return std::get<2>(id) == std::get<2>(live.id());
    });
    ASSERT_NE(entry, listed.end());
    EXPECT_FALSE(pthread_equal(std::get<0>(*entry), zombie.native_handle())) << "the ended handle";
    EXPECT_EQ(std::get<1>(*entry), std::get<1>(live.id()));
    EXPECT_NE(Strand::getThreadName(*entry), "dead, unjoined");
    EXPECT_EQ(Strand::getThreadName(ended), "") << "an ended thread has no name";
    EXPECT_EQ(Strand::getThreadName(live.id()), "alive");
    zombie.join();
    emu::setPortGenerations(64);
}

// Without a semaphore the caller waits in slices, asking for one again after each (two refusals
// show it went round), and never spins on a dead name.
TEST(AppleLayer, WaitersRetryWithoutASemaphoreTheSystemRefuses) {
    emu::injectFault(emu::Fault::SemaphoreCreateFails, -1);
    const std::string child = inChildProcess(30, [] {  // a fork child makes its own
        const ParkedThread target;
        const unsigned long before = emu::callsOnInvalidSemaphores();
        bool ran = false;
        Strand::executeOnThread(target.id(), [&] {
            const unsigned long refused = emu::faultsFired(emu::Fault::SemaphoreCreateFails);
            while (emu::faultsFired(emu::Fault::SemaphoreCreateFails) < refused + 2 &&
                   emu::callsOnInvalidSemaphores() < before + 1000)
                sched_yield();
            ran = true;
        });
        return ran && emu::callsOnInvalidSemaphores() == before;
    });
    emu::clearFaults();
    EXPECT_EQ(child, "ok");
}

// A send from a handler that interrupted libpthread's list lock is refused, never a recursive lock.
TEST(AppleLayer, ASendFromInsideTheHandlerNeverTakesTheListLockAgain) {
    const std::string child = inChildProcess(30, [] {
        struct Holder {
            Strand::ThreadId id{};
            std::latch known{1};
            std::atomic<int> stage{0};  // 1 take the lock, 2 holding it, 3 release
        } holder;
        std::thread thread([&holder] {
            holder.id = Strand::getThreadId();
            holder.known.count_down();
            while (holder.stage.load() == 0) sched_yield();
            emu::withThreadListLockHeld([](void* state) {
                auto& self = *static_cast<Holder*>(state);
                self.stage = 2;
                while (self.stage.load() != 3) sched_yield();
            }, &holder);
        });
        holder.known.wait();
        const ParkedThread other;
        emu::runBeforeNextSignalSent([](void* state) {
            auto& self = *static_cast<Holder*>(state);
            self.stage = 1;
            while (self.stage.load() != 2) sched_yield();
        }, &holder);
        std::string nested = "not run";
        Strand::executeOnThread(holder.id, [&] { nested = Strand::getStackTrace({}, other.id()); });
        holder.stage = 3;
        thread.join();
        return nested.empty();
    });
    EXPECT_EQ(child, "ok");
}

// Each refusal gives the documented empty result and leaks no port reference or array.
TEST(AppleLayer, RefusalsOfTheSystemGiveEmptyResults) {
    ParkedThread worker;
    worker.run([] { emu::markCallingThreadAsDispatchWorker(); });
    const ParkedThread plain;
    struct Case {
        const char* what;
        emu::Fault fault;
        int times;            // how many calls refuse; -1 every one
        bool listed;          // getThreadIds() not empty
        bool plainHandle;     // the plain thread listed with its handle
    } cases[] = {
        {"no refusal", emu::Fault::TaskForPidRefused, 0, true, true},
        {"task_for_pid refused", emu::Fault::TaskForPidRefused, -1, false, false},
        {"task_threads refused", emu::Fault::TaskThreadsRefused, -1, false, false},
        {"no handle for any port", emu::Fault::FromMachThreadNull, -1, true, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        emu::injectFault(c.fault, c.times);
        const auto listed = Strand::getThreadIds();
        emu::clearFaults();
        EXPECT_EQ(!listed.empty(), c.listed);
        const auto entry = std::find_if(listed.begin(), listed.end(), [&](const Strand::ThreadId& id) {
            return std::get<2>(id) == std::get<2>(plain.id());
        });
        EXPECT_EQ(entry != listed.end() && *entry == plain.id(), c.plainHandle);
        EXPECT_TRUE(entry == listed.end() || std::get<1>(*entry) == std::get<1>(plain.id()))
            << "the kernel's id also without a handle";
    }
    bool ran = false;
    Strand::executeOnThread(worker.id(), [&] { ran = true; });
    EXPECT_FALSE(ran) << "a dispatch worker cannot be signalled";
    EXPECT_EQ(Strand::getStackTrace({}, worker.id()), "");
    EXPECT_NE(Strand::getStackTrace({}, plain.id()), "");
    EXPECT_EQ(emu::accountingReport(), "");
}

}  // namespace

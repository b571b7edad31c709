// Threads that end, or leave, while library code is on their stack (each in a child process).
#include "Strand/ExecuteOnThread.h"
#include "TestSupport.h"

namespace {

using Strand::executeOnThread;

TEST(ThreadEnding, CancelLandingWhileStraySignalsInterruptABlockingCall) {
    if (!kCancellationUnwinds) GTEST_SKIP() << "cancelled threads cannot unwind C++ frames here";
    EXPECT_EQ(inChildProcess(60, [] {
        executeOnThread(Strand::getThreadId(), [] {});  // installs the handler
        for (int round = 0; round < 300; ++round) {
            PausingThread target;
            std::atomic<int> sent{0};
            std::atomic<bool> stop{false};
            std::thread stray([&] {
                while (!stop.load()) {
                    Strand::platform::sendCrossThreadSignal(target.id());
                    sent.fetch_add(1);
                }
            });
            while (sent.load() < 8) std::this_thread::yield();
            pthread_cancel(target.handle);
            void* const result = target.join();
            stop.store(true);
            stray.join();
            if (result != PTHREAD_CANCELED) return false;
        }
        return true;
    }), "ok");
}

TEST(ThreadEnding, ACallThatEndsItsThreadFinishesTheCall) {
    if (!kCancellationUnwinds) GTEST_SKIP() << "ending threads cannot unwind C++ frames here";
    EXPECT_EQ(inChildProcess(20, [] {
        PausingThread target;
        executeOnThread(target.id(), [] { pthread_exit(reinterpret_cast<void*>(7)); });
        const bool ended = target.join() == reinterpret_cast<void*>(7);
        const ParkedThread next;  // calls still work afterwards
        bool ran = false;
        executeOnThread(next.id(), [&] { ran = true; });
        return ended && ran;
    }), "ok");
}

// The caller gives up after its 4 s; its parked record goes once the target thread has ended.
TEST(ThreadEnding, ACallLeftByLongjmpIsReclaimedOnceItsThreadEnds) {
    EXPECT_EQ(inChildProcess(30, [] {
        PausingThread target;
        const auto token = std::make_shared<int>(0);
        executeOnThread(target.id(), [token, &target] { siglongjmp(target.resume, 1); });
        target.join();
        const ParkedThread next;
        executeOnThread(next.id(), [] {});  // collects parked records
        return token.use_count() == 1;
    }), "ok");
}

// Opens a scope named by a location (the constructor that drops exceptions), or by a name.
void* openScope(void* withLocation) {
    if (*static_cast<const bool*>(withLocation)) {
        const Strand::ScopedThreadName scope(
            "worker", quill::source::location::current(__FILE__, __LINE__, __func__));
    } else {
        const Strand::ScopedThreadName scope("worker");
    }
    return nullptr;
}

TEST(ThreadEnding, CancellingAThreadInsideAScopeListenerEndsItCleanly) {
    if (!kCancellationUnwinds) GTEST_SKIP() << "cancelled threads cannot unwind C++ frames here";
    const struct {
        const char* name;
        bool blockInStarted, withLocation;
    } cases[] = {
        {"blocked in onStarted, named scope", true, false},
        {"blocked in onEnded, named scope", false, false},
        {"blocked in onStarted, location scope", true, true},
        {"blocked in onEnded, location scope", false, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(inChildProcess(20, [&c] {
            std::atomic<bool> blocking{false};
            const std::function<void()> pass = [] {}, block = [&blocking] {
                blocking.store(true);
                for (;;) usleep(1000);  // a cancellation point
            };
            const auto listener = std::make_shared<Listener>(c.blockInStarted ? block : pass,
                                                             c.blockInStarted ? pass : block);
            Strand::ScopedThreadName::registerCallback(listener);
            pthread_t thread{};
            pthread_create(&thread, nullptr, &openScope, const_cast<bool*>(&c.withLocation));
            while (!blocking.load()) std::this_thread::yield();
            pthread_cancel(thread);
            void* result = nullptr;
            pthread_join(thread, &result);
            return result == PTHREAD_CANCELED;
        }), "ok");
    }
}

}  // namespace

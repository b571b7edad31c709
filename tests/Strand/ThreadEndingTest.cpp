// Threads that end, or leave, while library code is on their stack: a cancel
// that lands while SIGUSR1 interrupts a blocking call, cancellation inside a
// scope listener, pthread_exit and longjmp inside a cross-thread call. Each
// case runs in a forked child with a time limit, so an abort or a hang fails
// the case instead of the run.
#include <csetjmp>

#include "Strand/ExecuteOnThread.h"
#include "TestSupport.h"

namespace {

using Strand::executeOnThread;

// A POSIX thread that announces its numeric id, then waits in pause(), a
// cancellation point inside which glibc turns asynchronous cancellation on.
struct PausingThread {
    pthread_t handle{};
    std::atomic<int> tid{0};

    PausingThread() {
        pthread_create(&handle, nullptr, &PausingThread::main, this);
        while (tid.load() == 0) std::this_thread::yield();
    }
    Strand::ThreadId id() const {
        return Strand::ThreadId{handle, tid.load(), static_cast<unsigned>(tid.load())};
    }
    // What the thread ended with: PTHREAD_CANCELED, or what it passed to pthread_exit.
    void* join() const {
        void* result = nullptr;
        pthread_join(handle, &result);
        return result;
    }

private:
    static void* main(void* self) {
        static_cast<PausingThread*>(self)->tid.store(Strand::gettid());
        for (;;) pause();
    }
};

bool skipWithoutUnwinding() {
    return !kCancellationUnwinds;
}

TEST(ThreadEnding, CancelLandingWhileStraySignalsInterruptABlockingCall) {
    if (skipWithoutUnwinding()) GTEST_SKIP() << "cancelled threads cannot unwind C++ frames here";
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
    if (skipWithoutUnwinding()) GTEST_SKIP() << "ending threads cannot unwind C++ frames here";
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

sigjmp_buf gResume;

// A thread that comes back here when a call jumps out of its handler
// (savemask 0, so SIGUSR1 stays blocked, as it is inside the handler).
void* pauseUntilJumpedOut(void* tid) {
    static_cast<std::atomic<int>*>(tid)->store(Strand::gettid());
    if (sigsetjmp(gResume, 0) == 0) {
        for (;;) pause();
    }
    return nullptr;
}

// The caller gives up after its 4 s; the record it parks must be reclaimed (and
// its copy of the function destroyed) once the target thread has ended.
TEST(ThreadEnding, ACallLeftByLongjmpIsReclaimedOnceItsThreadEnds) {
    EXPECT_EQ(inChildProcess(30, [] {
        std::atomic<int> tid{0};
        pthread_t target{};
        pthread_create(&target, nullptr, &pauseUntilJumpedOut, &tid);
        while (tid.load() == 0) std::this_thread::yield();
        const auto token = std::make_shared<int>(0);
        executeOnThread(Strand::ThreadId{target, tid.load(), static_cast<unsigned>(tid.load())},
                        [token] { siglongjmp(gResume, 1); });
        pthread_join(target, nullptr);
        const ParkedThread next;
        executeOnThread(next.id(), [] {});  // collects parked records
        return token.use_count() == 1;
    }), "ok");
}

// A listener that waits in a cancellation point in one of its two calls.
class BlockingListener : public Strand::IScopedThreadCallback {
public:
    explicit BlockingListener(bool inStarted) : inStarted_(inStarted) {}
    void onStarted() override {
        if (inStarted_) block();
    }
    void onEnded() override {
        if (!inStarted_) block();
    }
    std::atomic<bool> blocking{false};

private:
    void block() {
        blocking.store(true);
        for (;;) usleep(1000);
    }
    bool inStarted_;
};

struct ScopeCase {
    const char* name;
    bool blockInStarted;
    bool withLocation;  // the constructor that drops exceptions
};

void* openScope(void* scopeCase) {
    const auto& c = *static_cast<const ScopeCase*>(scopeCase);
    if (c.withLocation) {
        const Strand::ScopedThreadName scope(
            "worker", quill::source::location::current(__FILE__, __LINE__, __func__));
    } else {
        const Strand::ScopedThreadName scope("worker");
    }
    return nullptr;
}

TEST(ThreadEnding, CancellingAThreadInsideAScopeListenerEndsItCleanly) {
    if (skipWithoutUnwinding()) GTEST_SKIP() << "cancelled threads cannot unwind C++ frames here";
    const ScopeCase cases[] = {
        {"blocked in onStarted, named scope", true, false},
        {"blocked in onEnded, named scope", false, false},
        {"blocked in onStarted, location scope", true, true},
        {"blocked in onEnded, location scope", false, true},
    };
    for (const ScopeCase& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(inChildProcess(20, [&c] {
            const auto listener = std::make_shared<BlockingListener>(c.blockInStarted);
            Strand::ScopedThreadName::registerCallback(listener);
            pthread_t thread{};
            pthread_create(&thread, nullptr, &openScope, const_cast<ScopeCase*>(&c));
            while (!listener->blocking.load()) std::this_thread::yield();
            pthread_cancel(thread);
            void* result = nullptr;
            pthread_join(thread, &result);
            return result == PTHREAD_CANCELED;
        }), "ok");
    }
}

}  // namespace

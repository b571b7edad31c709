// Cross-thread execution through the cross-thread signal (SIGUSR1).
//
// The caller publishes one call at a time, signals the target and waits for the
// target's handler to raise two flags in the call's record: started when it has
// accepted the call, finished when the function has returned.
//
// The handler takes no lock at all: it claims the published call with one
// compare-and-swap on gTarget, so neither a caller nor fork() can leave it
// waiting, and callers never mask the signal. A claim also fixes who owns the
// record: a caller whose call was never claimed (withdrawn before any handler
// took it) owns its record outright; one whose call was claimed owns it again
// only once finished is raised, the handler's last touch of the record.
//
// What the handler may do: it runs on a thread interrupted at any point, inside
// malloc or holding its own locks. So it makes system calls (gettid, futex
// wake), touches atomics and calls the published function. It never allocates,
// never frees and never destroys a user object: every record, and with it the
// caller's copy of the function, is destroyed by a caller after it has released
// gSignalMutex. A record whose caller stopped waiting before the function
// returned is parked on a list and destroyed by a later caller once its handler
// has finished with it.
//
// Cancellation of the target is deferred while the function runs: a cancel
// request that arrives meanwhile (also while the function sits in a
// cancellation point) takes effect at the target's next cancellation point
// after the handler has returned. Unwinding through the handler instead would
// cross the interrupted code, which may have no unwind information.
//
// Process-wide state is never destroyed, not even at exit (NoDestructor.h):
// threads the client never joins may still be inside a call while static
// destructors run. No caller can tell the difference. The state is reset in a
// fork child, whose other threads (a caller holding gSignalMutex among them)
// do not exist there; the handler's side has no lock to inherit taken.
#include "Strand/ExecuteOnThread.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "Support/NoDestructor.h"
#include "Strand/Platform.h"

namespace Strand {

namespace {

constexpr std::chrono::milliseconds kAcceptTimeout{100};
constexpr std::chrono::seconds kFinishTimeout{4};
// How long a caller spins on finished before it sleeps: long enough for a short
// function on a thread that is running, so that the common call costs no sleep.
constexpr std::chrono::microseconds kSpinTime{50};

using Clock = std::chrono::steady_clock;

// Bits of SignalContext::state.
constexpr std::uint32_t kStarted = 1;
constexpr std::uint32_t kFinished = 2;
// Set by a caller before it sleeps on state; only then does the handler wake it.
constexpr std::uint32_t kSleeping = 4;

// One cross-thread call: owned by its caller, borrowed by the handler that
// claims it, and parked on gRetired if the caller stops waiting first.
struct SignalContext {
    SignalContext(int target, std::function<void()> fn)
        : threadId(target), function(std::move(fn)) {}
    int threadId;
    std::function<void()> function;
    std::atomic<std::uint32_t> state{0};
    // When the handler accepted the call, raised before kStarted.
    std::atomic<Clock::rep> startedAt{0};
    SignalContext* nextRetired = nullptr;
};

// Lets one cross-thread call through at a time; also guards gRetired.
constinit quill::NoDestructor<std::mutex> gSignalMutex;  // NOLINT(cert-err58-cpp): constexpr, noexcept
// The published call: the generation of the publication in the upper 32 bits
// and the target's numeric id in the lower ones; 0 once claimed or withdrawn.
// The generation keeps a handler that read an older publication from claiming a
// newer one for the same thread.
constinit std::atomic<std::uint64_t> gTarget{0};
// The record of the published call; read only by the handler that claims it.
constinit std::atomic<SignalContext*> gSignalContext{nullptr};
// Counts publications; under gSignalMutex.
constinit std::uint32_t gGeneration = 0;
// Records whose caller stopped waiting; under gSignalMutex.
constinit SignalContext* gRetired = nullptr;
constinit std::atomic<bool> gInstalled{false};

std::uint64_t targetWord(std::uint32_t generation, int threadId) {
    return (std::uint64_t{generation} << 32) | static_cast<std::uint32_t>(threadId);
}

// The published call if it is meant for thread self, now claimed; else null.
SignalContext* claimCall(int self) {
    std::uint64_t word = gTarget.load();
    if (word == 0 || static_cast<std::uint32_t>(word) != static_cast<std::uint32_t>(self)) {
        return nullptr;
    }
    // Read between the two looks at the word: if the claim succeeds the word did
    // not change meanwhile, so no withdrawal or newer publication came between
    // and the record is the claimed call's (callers store it before the word).
    // Read after the claim, it could be cleared already by a caller that gave up.
    SignalContext* const context = gSignalContext.load();
    return gTarget.compare_exchange_strong(word, 0) ? context : nullptr;
}

// Kept out of line: the handler itself then has no exception table, so a
// cancellation that arrives as it starts (while the interrupted cancellation
// point had asynchronous cancellation on) unwinds through it instead of
// ending the process.
__attribute__((noinline)) void runCall(SignalContext& context) {
    context.startedAt.store(Clock::now().time_since_epoch().count(), std::memory_order_relaxed);
    context.state.fetch_or(kStarted);
    try {
        if (context.function) {
            context.function();
        }
    } catch (...) {
        // Nothing thrown on the target reaches the caller.
    }
    // The last touch of the record: from here on the caller may destroy it. The
    // wake-up only passes the word's address to the kernel.
    const std::atomic<std::uint32_t>& word = context.state;
    if ((context.state.fetch_or(kFinished) & kSleeping) != 0) {
        platform::wakeWaiters(word);
    }
}

// Waits until finished is raised or deadline passes: spins briefly, then
// sleeps. True if finished was raised.
bool waitForFinished(std::atomic<std::uint32_t>& state, Clock::time_point deadline) {
    const Clock::time_point spinUntil = std::min(deadline, Clock::now() + kSpinTime);
    do {
        for (int i = 0; i < 64; ++i) {
            if ((state.load() & kFinished) != 0) {
                return true;
            }
        }
    } while (Clock::now() < spinUntil);
    std::uint32_t seen = state.fetch_or(kSleeping) | kSleeping;
    while ((seen & kFinished) == 0) {
        if (Clock::now() >= deadline) {
            return false;
        }
        platform::waitWhileEquals(state, seen, deadline);
        seen = state.load();
    }
    return true;
}

// Publishes context, signals thread and waits. True if the caller owns the
// record again (the call finished, or was never claimed); false if a handler
// may still be running it. Under gSignalMutex.
bool serve(const ThreadId& thread, SignalContext& context) {
    const std::uint64_t word = targetWord(++gGeneration, context.threadId);
    gSignalContext.store(&context);
    gTarget.store(word);
    const bool sent = platform::sendCrossThreadSignal(thread) == 0;
    // Finished is awaited first: the common call then costs one wake-up at most.
    // Acceptance is looked at only once the 100 ms to accept have run out.
    bool finished = sent && waitForFinished(context.state, Clock::now() + kAcceptTimeout);
    if (!finished) {
        std::uint64_t expected = word;
        if (gTarget.compare_exchange_strong(expected, 0)) {
            finished = true;  // withdrawn unclaimed: no handler will ever touch it
        } else {
            // Claimed; the 4 s count from the acceptance, or from now if the
            // handler has not yet said when that was.
            const Clock::time_point acceptedAt =
                (context.state.load() & kStarted) != 0
                    ? Clock::time_point(Clock::duration(context.startedAt.load()))
                    : Clock::now();
            finished = waitForFinished(context.state, acceptedAt + kFinishTimeout);
        }
    }
    gSignalContext.store(nullptr);
    return finished;
}

// Destroys a chain of records linked through nextRetired.
struct RetiredChain {
    SignalContext* head = nullptr;
    RetiredChain() = default;
    RetiredChain(const RetiredChain&) = delete;
    RetiredChain& operator=(const RetiredChain&) = delete;
    ~RetiredChain() {
        while (SignalContext* const context = head) {
            head = context->nextRetired;
            delete context;
        }
    }
};

// Unlinks the parked records whose handlers have finished into released, to be
// destroyed once gSignalMutex is free; not inside the library's handler (where
// the signal is blocked), which a function that itself calls may be running in.
// Under gSignalMutex.
void collectRetired(RetiredChain& released) {
    if (gRetired == nullptr || platform::crossThreadSignalBlocked()) {
        return;
    }
    for (SignalContext** link = &gRetired; *link != nullptr;) {
        SignalContext* const context = *link;
        if ((context->state.load() & kFinished) != 0) {
            *link = context->nextRetired;
            context->nextRetired = released.head;
            released.head = context;
        } else {
            link = &context->nextRetired;
        }
    }
}

// Runs in the child of fork() on its only thread: whoever held gSignalMutex or
// had a call published is gone. Parked records are forgotten, not destroyed:
// their handlers belonged to threads that do not exist here.
void resetInForkChild() {
    new (gSignalMutex.get()) std::mutex;
    gTarget.store(0);
    gSignalContext.store(nullptr);
    gRetired = nullptr;
}

[[maybe_unused]] const bool gForkHandlerInstalled =
    pthread_atfork(nullptr, nullptr, &resetInForkChild) == 0;

}  // namespace

void signalActionHandler(int /*signalNumber*/, siginfo_t* /*info*/, void* /*context*/) {
    const int savedErrno = errno;
    if (SignalContext* const context = claimCall(gettid())) {
        int cancelState = PTHREAD_CANCEL_ENABLE;
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelState);
        runCall(*context);
        // A pending request is acted on at the next cancellation point, or here
        // for a thread that chose asynchronous cancellation; the record is no
        // longer touched either way.
        pthread_setcancelstate(cancelState, nullptr);
    }
    errno = savedErrno;
}

void initializeExecuteOnThread() {
    // Whatever the library itself runs inside the handler is loaded first.
    platform::prepareBacktrace();
    platform::installCrossThreadHandler(&signalActionHandler);
}

// Installing twice is harmless, so racing first calls need no lock (which a
// fork child could inherit taken).
void initializeExecuteOnThreadOnce() {
    if (!gInstalled.load(std::memory_order_acquire)) {
        initializeExecuteOnThread();
        gInstalled.store(true, std::memory_order_release);
    }
}

void executeOnThread(const ThreadId& thread, const std::function<void()>& function) {
    initializeExecuteOnThreadOnce();
    // The numeric id alone decides: the library never signals the calling thread.
    if (std::get<1>(thread) == std::get<1>(getThreadId())) {
        function();
        return;
    }

    // Declared before the lock, so destroyed after it is released: user objects
    // are never destroyed under a library lock.
    RetiredChain released;
    auto context = std::make_unique<SignalContext>(std::get<1>(thread), function);
    const std::lock_guard<std::mutex> oneCallAtATime(*gSignalMutex);
    collectRetired(released);
    if (!serve(thread, *context)) {
        context->nextRetired = gRetired;
        gRetired = context.release();
    }
}

}  // namespace Strand

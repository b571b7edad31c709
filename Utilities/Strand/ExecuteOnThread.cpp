// Cross-thread execution through the cross-thread signal (SIGUSR1).
//
// The caller publishes one call at a time in a process-wide slot, signals the
// target and waits on two flags that the target's handler raises: started when
// it has accepted the call, finished when the function has returned.
//
// What the handler may do: it runs on a thread interrupted at any point, inside
// malloc, holding its own locks, or half-way through std::call_once (whose
// per-thread state a std::promise fulfilled here would overwrite). So it only
// makes system calls (gettid, futex wake), locks gDataMutex, copies and moves
// shared pointers, stores atomics and calls the published function. It never
// allocates and never frees: the last reference to a call it served is handed
// to the next caller instead of being dropped in the handler.
//
// No self-deadlock: the handler locks gDataMutex, so no thread may take the
// signal while it holds that mutex. Callers block the signal around each short
// hold; the handler runs with the signal blocked by the kernel.
#include "Strand/ExecuteOnThread.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>

#include "Strand/Platform.h"

namespace Strand {

namespace {

constexpr std::chrono::milliseconds kAcceptTimeout{100};
constexpr std::chrono::seconds kFinishTimeout{4};

using Clock = std::chrono::steady_clock;

// One cross-thread call, shared by the caller, the published slot and the
// handler that serves it.
struct SignalContext {
    int threadId = 0;
    std::function<void()> function;
    // 0, then 1 once raised by the handler.
    std::atomic<std::uint32_t> started{0};
    std::atomic<std::uint32_t> finished{0};
    // Links calls whose handler outlived the caller, waiting to be released
    // by the next caller rather than inside the handler.
    std::shared_ptr<SignalContext> nextRetired;
};

// Lets one cross-thread call through at a time.
std::mutex gSignalMutex;
// Guards the three globals below; held for a few instructions only.
std::mutex gDataMutex;
// The published call; empty when none is in flight.
std::shared_ptr<SignalContext> gSignalContext;
// Numeric id of the thread that is to run the published call; 0 when none, or
// once a handler has accepted it (so a second signal cannot run it again).
int gTarget = 0;
// Calls served by handlers that ran on after their caller had gone.
std::shared_ptr<SignalContext> gRetired;

// Blocks the cross-thread signal on the calling thread for a scope, unless it
// was blocked already (as it is inside the handler).
class SignalBlock {
public:
    SignalBlock() : blocked_(platform::blockCrossThreadSignal()) {}
    ~SignalBlock() {
        if (blocked_) {
            platform::unblockCrossThreadSignal();
        }
    }
    SignalBlock(const SignalBlock&) = delete;
    SignalBlock& operator=(const SignalBlock&) = delete;

private:
    bool blocked_;
};

// Publishes a call for its lifetime; withdrawing it also collects the calls
// retired by late handlers, which are then released here, outside the lock.
class Publication {
public:
    explicit Publication(const std::shared_ptr<SignalContext>& context) {
        const SignalBlock block;
        const std::lock_guard<std::mutex> lock(gDataMutex);
        gTarget = context->threadId;
        gSignalContext = context;
    }
    ~Publication() {
        const SignalBlock block;
        const std::lock_guard<std::mutex> lock(gDataMutex);
        withdrawn_ = std::move(gSignalContext);
        retired_ = std::move(gRetired);
        gTarget = 0;
    }
    Publication(const Publication&) = delete;
    Publication& operator=(const Publication&) = delete;

private:
    // Released after the destructor's body, once the lock is free again and
    // the signal unblocked.
    std::shared_ptr<SignalContext> retired_;
    std::shared_ptr<SignalContext> withdrawn_;
};

// The published call if it is meant for thread self; marks it accepted.
std::shared_ptr<SignalContext> acceptCall(int self) {
    const std::lock_guard<std::mutex> lock(gDataMutex);
    if (gTarget != self || gSignalContext == nullptr || gSignalContext->threadId != gTarget) {
        return nullptr;
    }
    gTarget = 0;
    return gSignalContext;
}

void raiseFlag(std::atomic<std::uint32_t>& flag) {
    flag.store(1, std::memory_order_release);
    platform::wakeWaiters(flag);
}

// Waits until flag is raised or deadline passes; true if it was raised.
bool waitUntilRaised(const std::atomic<std::uint32_t>& flag, Clock::time_point deadline) {
    while (flag.load(std::memory_order_acquire) == 0) {
        if (Clock::now() >= deadline) {
            return false;
        }
        platform::waitWhileEquals(flag, 0, deadline);
    }
    return true;
}

void runCall(SignalContext& context) {
    raiseFlag(context.started);
    try {
        if (context.function) {
            context.function();
        }
    } catch (...) {
        // Nothing thrown on the target reaches the caller.
    }
    raiseFlag(context.finished);
}

// Drops the handler's reference without ever freeing the call here: while it
// is still published the slot holds another reference; once withdrawn, the
// reference goes to gRetired for the next caller to release.
void releaseFromHandler(std::shared_ptr<SignalContext> context) {
    const std::lock_guard<std::mutex> lock(gDataMutex);
    if (gSignalContext == context) {
        context.reset();
        return;
    }
    context->nextRetired = std::move(gRetired);
    gRetired = std::move(context);
}

}  // namespace

void signalActionHandler(int /*signalNumber*/, siginfo_t* /*info*/, void* /*context*/) {
    const int savedErrno = errno;
    try {
        if (std::shared_ptr<SignalContext> context = acceptCall(gettid())) {
            runCall(*context);
            releaseFromHandler(std::move(context));
        }
    } catch (...) {
        // A mutex that cannot be locked ends the handler quietly.
    }
    errno = savedErrno;
}

void initializeExecuteOnThread() {
    // Whatever the library itself runs inside the handler is loaded first.
    platform::prepareBacktrace();
    platform::installCrossThreadHandler(&signalActionHandler);
}

void initializeExecuteOnThreadOnce() {
    static std::once_flag flag;
    std::call_once(flag, &initializeExecuteOnThread);
}

void executeOnThread(const ThreadId& thread, const std::function<void()>& function) {
    initializeExecuteOnThreadOnce();
    if (thread == getThreadId()) {
        function();
        return;
    }

    const std::lock_guard<std::mutex> oneCallAtATime(gSignalMutex);
    auto context = std::make_shared<SignalContext>();
    context->threadId = std::get<1>(thread);
    context->function = function;

    const Publication publication(context);
    if (platform::sendCrossThreadSignal(thread) != 0) {
        return;
    }
    if (waitUntilRaised(context->started, Clock::now() + kAcceptTimeout)) {
        waitUntilRaised(context->finished, Clock::now() + kFinishTimeout);
    }
}

}  // namespace Strand

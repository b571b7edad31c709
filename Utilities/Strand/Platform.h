// The platform layer of the thread library: the few operations that differ
// between operating systems. Internal to the library; never installed.
//
// Contract, per operation:
//   * Results never report errors by exception: a refused query yields 0, an
//     empty string or an empty vector, as stated.
//   * "Signal-safe" means async-signal-safe: callable from a signal handler.
//
// One implementation per OS: linux/*.cpp (kernel TIDs, /proc, prctl, futex)
// and apple/*.cpp (Mach ports, task_threads, pthread_*_np, Mach semaphores),
// plus unix/*.cpp for what both define alike (signal masks, <execinfo.h>).
#pragma once

#include <pthread.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Strand/ThreadId.h"

namespace Strand {

// The calling thread's numeric id, low 32 bits. Never fails. Signal-safe.
int gettid();

namespace platform {

// Each layer defines Strand::getThreadId (ThreadId.h) itself, beside whatever
// it reads, so that the call a client makes is the only call: the calling
// thread's triple; never fails. Cheap (cached per thread where asking the
// platform is costly) and right in a fork child. Signal-safe whatever the load
// order (dlopen included): the first call on a thread takes no lock a user can
// hold and allocates nothing, so a function run inside a signal handler may ask
// who it is.

// Every thread of this process in the kernel's order; empty on refusal. Not
// signal-safe (macOS: libpthread's thread-list lock).
std::vector<ThreadId> listThreads();

// What threadIncarnation answers for a thread that has ended, and when the
// platform cannot tell.
constexpr std::uint64_t kThreadEnded = 0;
constexpr std::uint64_t kThreadUnknown = ~std::uint64_t{0};

// A key for the thread that id names as it runs now, different from the key of
// any other thread that held or will hold the same ids in this process:
// kThreadEnded if no thread holds them now, kThreadUnknown if the platform
// cannot tell (Linux: the TID's start in /proc, which may be unreadable; macOS:
// the Mach thread id behind the port). Not signal-safe.
std::uint64_t threadIncarnation(const ThreadId& id);

// Names the calling thread. name is NUL-terminated and at most 63 bytes.
// Returns 0, or the platform's error number when it refuses (macOS's
// pthread_setname_np returns -1 and sets errno; the layer returns errno). Where the
// kernel's name of the main thread is the process's name (Linux), the main
// thread's name is kept by the library alone. Not signal-safe.
int setCurrentThreadName(const char* name);

// The name of thread id; empty if it has none, has ended or cannot be asked.
// A name is only ever read back for the thread that was given it. Not
// signal-safe.
std::string threadName(const ThreadId& id);

// Test seam: replaces the call that hands a name to the platform (so tests can
// make it refuse) and returns the previous one; nullptr restores the default.
using NameSetter = int (*)(const char* name);
NameSetter exchangeNameSetterForTesting(NameSetter setter);

// --- The cross-thread signal (SIGUSR1), which the library owns once installed.

// The signal the library owns for cross-thread calls.
constexpr int kCrossThreadSignal = SIGUSR1;

using SignalHandler = void (*)(int signalNumber, siginfo_t* info, void* context);

// Installs handler for the cross-thread signal for the rest of the process's
// life: three-argument form, empty mask (so the signal itself is blocked while
// the handler runs), and no automatic restart of interrupted calls. The previous
// disposition is dropped. The image that holds handler (libStrand, or a plugin
// that links the library in) stays loaded from then on, whatever dlclose is
// called, so the disposition never points at unmapped code. Returns false if
// the platform refuses. Not signal-safe.
bool installCrossThreadHandler(SignalHandler handler);

// Sends the cross-thread signal to thread. Returns 0, or the platform's error
// number when the signal cannot be sent (a thread that has ended, an id that
// names no thread of this process, on macOS a null or the caller's own POSIX
// handle, or a dispatch worker thread: ENOTSUP). Signal-safe on Linux (tgkill).
// Not on macOS: pthread_kill takes libpthread's thread-list lock, which aborts
// the process if the interrupted thread holds it; there a call made while the
// cross-thread signal is blocked on the calling thread (inside the library's
// handler) is refused with EDEADLK.
int sendCrossThreadSignal(const ThreadId& thread);

// Blocks the cross-thread signal on the calling thread. Returns true if this
// call blocked it, false if it was blocked already. Signal-safe.
bool blockCrossThreadSignal();

// Unblocks the cross-thread signal on the calling thread; one that is pending
// is handled before this returns. Signal-safe.
void unblockCrossThreadSignal();

// True if the cross-thread signal is blocked on the calling thread, as it is
// inside the library's handler. Signal-safe.
bool crossThreadSignalBlocked();

// --- Handshakes with signal handlers, which may not use mutexes, condition
// variables or promises to wake a waiting thread.

// Blocks while word holds expected, until woken by wakeWaiters, until deadline
// passes, or spuriously: the caller checks the word again. Not signal-safe.
void waitWhileEquals(const std::atomic<std::uint32_t>& word, std::uint32_t expected,
                     std::chrono::steady_clock::time_point deadline);

// Wakes every thread blocked in waitWhileEquals on word. Signal-safe. Only
// word's address is used: a woken thread may already have destroyed word, and a
// wake-up that reaches an unrelated waiter is one of its spurious wake-ups.
void wakeWaiters(const std::atomic<std::uint32_t>& word);

// --- Backtraces of the calling thread.

// Loads whatever captureBacktrace needs, so that its first use inside a signal
// handler loads nothing. Call outside signal handlers; repeated calls are cheap.
void prepareBacktrace();

// Writes up to capacity return addresses of the calling thread's stack into
// frames, innermost first, and returns how many; 0 if none (or capacity <= 0).
// Signal-safe once prepareBacktrace has run.
int captureBacktrace(void** frames, int capacity);

// One NUL-terminated description (image, address, symbol and offset) per frame
// of frames[0, count), in one block that the result owns and frees exactly once.
// Null on refusal or count <= 0. Allocates; not signal-safe.
std::shared_ptr<char*> describeFrames(void* const* frames, int count);

}  // namespace platform
}  // namespace Strand

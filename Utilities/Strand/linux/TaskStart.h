// When a thread of this process started, as the kernel reports it: the key
// that tells apart the threads that have held one TID over time.
//
// A TID is reused only after the thread that held it has ended; a new holder
// started later. The kernel gives a thread's start in clock ticks since boot
// (field 22 of /proc/self/task/<tid>/stat), so two holders of one TID could
// share a start only if the kernel handed out every other free TID (pid_max, at
// least 32768) within one tick (10 ms at most): thread creation takes some
// microseconds, so that cannot happen. (TID, start) therefore names one thread
// for the life of the process. (Only a privileged checkpoint/restore tool that
// writes /proc/sys/kernel/ns_last_pid can hand a TID out again within the
// tick; that is outside what the library guards against.)
#pragma once

#include <cstdint>

namespace Strand::linux_layer {

struct TaskStart {
    enum class State {
        kRunning,  // the thread lives; ticks is its start
        kEnded,    // no thread of this process has that TID now
        kUnknown,  // /proc could not be read (no procfs, out of descriptors)
    };
    State state = State::kUnknown;
    std::uint64_t ticks = 0;
};

// The start of the thread tid of this process. Never fails: an unreadable
// answer is kUnknown, never kEnded. Async-signal-safe (raw system calls, no
// allocation), and never a cancellation point.
TaskStart taskStart(int tid) noexcept;

}  // namespace Strand::linux_layer

// The cross-thread signal on macOS, sent to the target's POSIX handle with
// pthread_kill. A listed thread without a POSIX handle cannot be reached, and
// the calling thread is never signalled (its handler would serve a call that
// its own caller is waiting for). A dispatch (GCD) worker thread cannot be
// signalled at all: pthread_kill answers ENOTSUP for workqueue threads.
#include <pthread.h>

#include <cerrno>
#include <csignal>

#include "Strand/Platform.h"

namespace Strand::platform {

// pthread_kill on the handle of a thread that has ended is undefined by POSIX.
// macOS looks the handle up among the live threads and answers ESRCH for one it
// does not find; a handle that a newer thread reuses signals that thread, whose
// handler runs nothing because its numeric id is not the target's. Passing only
// live threads is the caller's part (Strand/ThreadId.h).
int sendCrossThreadSignal(const ThreadId& thread) {
    const pthread_t handle = std::get<0>(thread);
    if (handle == pthread_t{} || pthread_equal(handle, pthread_self()) != 0) {
        return ESRCH;
    }
    // pthread_kill looks the handle up under libpthread's thread-list lock, an
    // os_unfair_lock that aborts the process when its holder takes it again. A
    // handler may have interrupted its thread inside that lock (creating,
    // joining or listing threads), so a send from inside the library's handler,
    // where the cross-thread signal is blocked, is refused.
    if (crossThreadSignalBlocked()) {
        return EDEADLK;
    }
    return pthread_kill(handle, kCrossThreadSignal);
}

}  // namespace Strand::platform

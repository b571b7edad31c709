// The cross-thread signal on macOS, sent to the target's POSIX handle with
// pthread_kill. A listed thread without a POSIX handle cannot be reached, and
// the calling thread is never signalled (its handler would serve a call that
// its own caller is waiting for).
#include <pthread.h>

#include <cerrno>
#include <csignal>

#include "Strand/Platform.h"

namespace Strand::platform {

int sendCrossThreadSignal(const ThreadId& thread) {
    const pthread_t handle = std::get<0>(thread);
    if (handle == pthread_t{} || pthread_equal(handle, pthread_self()) != 0) {
        return ESRCH;
    }
    return pthread_kill(handle, kCrossThreadSignal);
}

}  // namespace Strand::platform

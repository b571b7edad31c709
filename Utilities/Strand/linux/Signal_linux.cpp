// The cross-thread signal on Linux. The target is found by its kernel TID with
// tgkill, so a listed thread whose POSIX handle the library never learnt can
// still be reached, and a thread that has ended is reported (ESRCH) instead of
// the undefined behaviour of pthread_kill on a dead handle.
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "Strand/Platform.h"

namespace Strand::platform {

int sendCrossThreadSignal(const ThreadId& thread) {
    const int tid = std::get<1>(thread);
    if (tid <= 0) {
        return EINVAL;
    }
    return syscall(SYS_tgkill, getpid(), tid, kCrossThreadSignal) == 0 ? 0 : errno;
}

}  // namespace Strand::platform

// The cross-thread signal on Linux. The target is found by its kernel TID with
// tgkill, so a listed thread whose POSIX handle the library never learnt can
// still be reached, and a thread that has ended is reported (ESRCH) instead of
// the undefined behaviour of pthread_kill on a dead handle.
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "Strand/Platform.h"

namespace Strand::platform {

namespace {

constexpr int kCrossThreadSignal = SIGUSR1;

sigset_t crossThreadSignalSet() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, kCrossThreadSignal);
    return set;
}

}  // namespace

bool installCrossThreadHandler(SignalHandler handler) {
    struct sigaction action = {};
    action.sa_sigaction = handler;
    action.sa_flags = SA_SIGINFO;
    sigemptyset(&action.sa_mask);
    return sigaction(kCrossThreadSignal, &action, nullptr) == 0;
}

int sendCrossThreadSignal(const ThreadId& thread) {
    const int tid = std::get<1>(thread);
    if (tid <= 0) {
        return EINVAL;
    }
    return syscall(SYS_tgkill, getpid(), tid, kCrossThreadSignal) == 0 ? 0 : errno;
}

bool blockCrossThreadSignal() {
    const sigset_t set = crossThreadSignalSet();
    sigset_t previous;
    sigemptyset(&previous);
    pthread_sigmask(SIG_BLOCK, &set, &previous);
    return sigismember(&previous, kCrossThreadSignal) == 0;
}

void unblockCrossThreadSignal() {
    const sigset_t set = crossThreadSignalSet();
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

}  // namespace Strand::platform

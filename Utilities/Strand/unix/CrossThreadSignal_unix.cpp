// The parts of the cross-thread signal that POSIX defines alike on every
// platform the library runs on: installing the handler and masking the signal.
// Sending it differs (by kernel TID on Linux, by POSIX handle on macOS) and
// lives in each platform's layer.
#include <csignal>

#include "Strand/Platform.h"

namespace Strand::platform {

namespace {

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

bool crossThreadSignalBlocked() {
    sigset_t current;
    sigemptyset(&current);
    pthread_sigmask(SIG_BLOCK, nullptr, &current);
    return sigismember(&current, kCrossThreadSignal) == 1;
}

}  // namespace Strand::platform

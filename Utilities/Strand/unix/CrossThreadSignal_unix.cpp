// The parts of the cross-thread signal that POSIX defines alike on every
// platform the library runs on: installing the handler and masking the signal.
// Sending it differs (by kernel TID on Linux, by POSIX handle on macOS) and
// lives in each platform's layer.
#include <dlfcn.h>

#include <csignal>
#include <cstring>

#include "Strand/Platform.h"

namespace Strand::platform {

namespace {

sigset_t crossThreadSignalSet() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, kCrossThreadSignal);
    return set;
}

// Marks the loaded image that holds address as never to be unloaded. Images
// the dynamic loader did not load (the executable) are never unloaded anyway.
void keepImageLoaded(SignalHandler handler) {
    void* address = nullptr;
    static_assert(sizeof address == sizeof handler);
    std::memcpy(&address, &handler, sizeof address);
    Dl_info image = {};
    if (dladdr(address, &image) != 0 && image.dli_fname != nullptr) {
        // The reference this takes is never given back.
        dlopen(image.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
    }
}

}  // namespace

bool installCrossThreadHandler(SignalHandler handler) {
    keepImageLoaded(handler);
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

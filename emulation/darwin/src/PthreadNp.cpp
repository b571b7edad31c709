// Darwin's pthread_*_np additions and pthread_kill, over the records that
// Threads.cpp keeps: the calling thread is answered without the list lock, any
// other by a walk of libpthread's list under it, as libpthread does.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "Kernel.h"

using namespace darwin_emulation::detail;
using darwin_emulation::Fault;

namespace {
std::atomic<void (*)(void*)> gBeforeSignalSent{nullptr};
std::atomic<void*> gBeforeSignalSentArgument{nullptr};
}  // namespace

int pthread_threadid_np(pthread_t thread, std::uint64_t* id) noexcept {
    const ThreadRecord& me = self();
    if (id == nullptr) return EINVAL;
    if (thread == pthread_t{} || pthread_equal(thread, pthread_self()) != 0) {
        *id = me.threadId;
        return 0;
    }
    const ListSection list;
    const ThreadRecord* const found = findByHandle(thread, false);
    if (found == nullptr) return ESRCH;
    *id = found->threadId;
    return 0;
}

mach_port_t pthread_mach_thread_np(pthread_t thread) noexcept {
    const ThreadRecord& me = self();
    if (pthread_equal(thread, pthread_self()) != 0) return me.port;
    const ListSection list;
    const ThreadRecord* const found = findByHandle(thread, false);
    return found != nullptr ? found->port : MACH_PORT_NULL;
}

pthread_t pthread_from_mach_thread_np(mach_port_t port) noexcept {
    ensureInitialized();
    if (faultFires(Fault::FromMachThreadNull)) return pthread_t{};
    const ListSection list;
    for (const ThreadRecord* at = listHead(); at != nullptr; at = at->next) {
        if (at->port == port) return at->handle;
    }
    return pthread_t{};
}

int darwin_emulation_pthread_setname_np(const char* name) noexcept {
    ThreadRecord& me = self();
    const std::size_t length = name != nullptr ? std::strlen(name) : 0;
    if (length > sizeof me.name - 1) {
        errno = ENAMETOOLONG;
        return -1;
    }
    const ListSection list;
    std::memset(me.name, 0, sizeof me.name);
    if (length > 0) std::memcpy(me.name, name, length);
    return 0;
}

namespace {
void copyName(const ThreadRecord& thread, char* buffer, std::size_t length) {
    if (length == 0) return;
    const std::size_t copied = std::min(std::strlen(thread.name), length - 1);
    std::memcpy(buffer, thread.name, copied);
    buffer[copied] = '\0';
}
}  // namespace

int darwin_emulation_pthread_getname_np(pthread_t thread, char* buffer, std::size_t length) noexcept {
    const ThreadRecord& me = self();
    if (pthread_equal(thread, pthread_self()) != 0) {
        copyName(me, buffer, length);
        return 0;
    }
    const ListSection list;
    const ThreadRecord* const found = findByHandle(thread, false);
    if (found == nullptr) return ESRCH;
    copyName(*found, buffer, length);
    return 0;
}

int darwin_emulation_pthread_kill(pthread_t thread, int signalNumber) noexcept {
    const ThreadRecord& me = self();
    if (signalNumber < 0 || signalNumber >= NSIG) return EINVAL;
    if (faultFires(Fault::KillNoSuchThread)) return ESRCH;
    if (faultFires(Fault::KillNotSupported)) return ENOTSUP;
    mach_port_t port = MACH_PORT_NULL;
    if (pthread_equal(thread, pthread_self()) != 0) {
        port = me.port;
    } else {
        const ListSection list;
        const ThreadRecord* const found = findByHandle(thread, false);
        if (found == nullptr) return ESRCH;
        port = found->port;
    }
    if (void (*const hook)(void*) = gBeforeSignalSent.exchange(nullptr)) {
        hook(gBeforeSignalSentArgument.load());
    }
    // The kernel signals whichever thread the name denotes now; held, the lock
    // keeps that thread from ending meanwhile.
    const KernelSection kernel;
    const PortEntry* const entry = lookupName(port);
    if (entry == nullptr || entry->kind != Kind::Thread) return ESRCH;
    if (entry->thread->dispatchWorker) return ENOTSUP;
    return signalNumber == 0 ? 0 : pthread_kill(entry->thread->handle, signalNumber);
}

namespace darwin_emulation {

void markCallingThreadAsDispatchWorker() {
    ThreadRecord& me = self();
    const KernelSection kernel;
    me.dispatchWorker = true;
}

void runBeforeNextSignalSent(void (*hook)(void*), void* argument) {
    gBeforeSignalSentArgument.store(argument);
    gBeforeSignalSent.store(hook);
}

void withThreadListLockHeld(void (*body)(void*), void* argument) {
    self();
    const ListSection list;
    body(argument);
}

}  // namespace darwin_emulation

// Waiting for a signal handler on macOS, which has no public futex for older
// systems. A Mach semaphore serves: semaphore_signal is a plain Mach trap, safe
// in a signal handler.
//
// One process-wide semaphore stands for every word. A wake raises its count, so
// a waiter that checked its word just before the handler changed it still finds
// the count raised and returns at once; a count left over from a wake that
// nobody waited for shows up later as a spurious wake-up, which every waiter
// tolerates (it checks its word again).
//
// Port rights: the semaphore's port is made once and kept for the life of the
// process. A fork()ed child inherits no Mach port rights, so the name would be
// dead there and every wait would return at once (the caller spinning until its
// deadline); the child therefore makes its own semaphore before fork() returns
// in it, while it has only the one thread.
#include <mach/mach.h>
#include <pthread.h>

#include "Strand/Platform.h"

namespace Strand::platform {

namespace {

semaphore_t createSemaphore() {
    semaphore_t created = MACH_PORT_NULL;
    semaphore_create(mach_task_self(), &created, SYNC_POLICY_FIFO, 0);
    return created;
}

void renewInForkChild();

std::atomic<semaphore_t>& wakeSemaphore() {
    static std::atomic<semaphore_t> semaphore{[] {
        pthread_atfork(nullptr, nullptr, &renewInForkChild);
        return createSemaphore();
    }()};
    return semaphore;
}

void renewInForkChild() { wakeSemaphore().store(createSemaphore(), std::memory_order_release); }

// Created while the library loads, so a handler never creates it.
[[maybe_unused]] const semaphore_t gWakeSemaphoreAtLoad = wakeSemaphore().load();

}  // namespace

void waitWhileEquals(const std::atomic<std::uint32_t>& word, std::uint32_t expected,
                     std::chrono::steady_clock::time_point deadline) {
    if (word.load(std::memory_order_acquire) != expected) {
        return;
    }
    const auto left = deadline - std::chrono::steady_clock::now();
    if (left <= std::chrono::steady_clock::duration::zero()) {
        return;
    }
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    mach_timespec_t timeout{};
    timeout.tv_sec = static_cast<unsigned int>(seconds.count());
    timeout.tv_nsec = static_cast<clock_res_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(left - seconds).count());
    semaphore_timedwait(wakeSemaphore().load(std::memory_order_acquire), timeout);
}

void wakeWaiters(const std::atomic<std::uint32_t>& /*word*/) {
    const semaphore_t semaphore = wakeSemaphore().load(std::memory_order_acquire);
    semaphore_signal_all(semaphore);
    semaphore_signal(semaphore);
}

}  // namespace Strand::platform

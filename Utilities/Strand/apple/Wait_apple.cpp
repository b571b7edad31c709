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
// process. A fork()ed child inherits no Mach port rights, so the child makes
// its own semaphore before fork() returns in it, while it has only the one
// thread.
//
// Without a semaphore (semaphore_create refused, at load or in a fork child) a
// wait makes it on its next call; while the system still refuses, waiters sleep
// in short slices instead, and wakes are seen at the next slice. They never spin.
#include <mach/mach.h>
#include <pthread.h>

#include <algorithm>
#include <thread>

#include "Strand/Platform.h"

namespace Strand::platform {

namespace {

// How long a waiter sleeps at most while there is no semaphore.
constexpr std::chrono::milliseconds kSleepSlice{1};

// MACH_PORT_NULL if the system refuses.
semaphore_t createSemaphore() {
    semaphore_t created = MACH_PORT_NULL;
    if (semaphore_create(mach_task_self(), &created, SYNC_POLICY_FIFO, 0) != KERN_SUCCESS) {
        return MACH_PORT_NULL;
    }
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
    semaphore_t semaphore = wakeSemaphore().load(std::memory_order_acquire);
    if (semaphore == MACH_PORT_NULL) {
        semaphore_t created = createSemaphore();
        if (created != MACH_PORT_NULL &&
            !wakeSemaphore().compare_exchange_strong(semaphore, created)) {
            semaphore_destroy(mach_task_self(), created);  // another waiter made one first
        } else if (created != MACH_PORT_NULL) {
            semaphore = created;
        }
    }
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    mach_timespec_t timeout{};
    timeout.tv_sec = static_cast<unsigned int>(seconds.count());
    timeout.tv_nsec = static_cast<clock_res_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(left - seconds).count());
    const kern_return_t waited = semaphore != MACH_PORT_NULL
                                     ? semaphore_timedwait(semaphore, timeout)
                                     : KERN_INVALID_NAME;
    if (waited != KERN_SUCCESS && waited != KERN_OPERATION_TIMED_OUT && waited != KERN_ABORTED) {
        // No semaphore to sleep on: sleep a slice rather than return at once.
        std::this_thread::sleep_for(std::min<std::chrono::steady_clock::duration>(left, kSleepSlice));
    }
}

void wakeWaiters(const std::atomic<std::uint32_t>& /*word*/) {
    const semaphore_t semaphore = wakeSemaphore().load(std::memory_order_acquire);
    if (semaphore == MACH_PORT_NULL) {
        return;  // waiters sleep in slices and look at their words again
    }
    semaphore_signal_all(semaphore);
    semaphore_signal(semaphore);
}

}  // namespace Strand::platform

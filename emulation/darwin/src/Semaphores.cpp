// Mach semaphores with Darwin's counting: a wait takes a count or blocks (the
// count then reads -1 whatever the number of waiters, "we don't keep an actual
// count"); a signal wakes one waiter, or, with none, raises the count; a
// signal_all wakes every waiter and raises nothing. A timed-out or aborted
// waiter leaves the count as it was. A signal handler that runs on a waiting
// thread ends its wait with KERN_ABORTED; every call is atomic to handlers.
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <ctime>

#include "Kernel.h"

namespace darwin_emulation::detail {

namespace {

constexpr int kSemaphores = 256;
constexpr long kNanosecondsPerSecond = 1000000000;

enum : std::uint32_t { kWaiting = 0, kAwakened = 1, kTerminated = 2 };

struct Waiter {
    std::atomic<std::uint32_t> word{kWaiting};
    Waiter* next = nullptr;
};

struct Semaphore {
    bool active = false;
    int count = 0;
    Waiter* waiters = nullptr;  // in arrival order
};

Semaphore gSemaphores[kSemaphores];
std::atomic<unsigned long> gInvalidCalls{0};

// Under KernelSection.
Semaphore* find(semaphore_t name) {
    const PortEntry* const entry = lookupName(name);
    if (entry == nullptr || entry->kind != Kind::Semaphore) {
        gInvalidCalls.fetch_add(1);
        return nullptr;
    }
    return &gSemaphores[entry->semaphore];
}

bool isTask(task_t task) {
    const PortEntry* const entry = lookupName(task);
    return entry != nullptr && entry->kind == Kind::Task;
}

void wake(Waiter& waiter, std::uint32_t how) {
    waiter.word.store(how);
    syscall(SYS_futex, &waiter.word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

void wakeAll(Semaphore& semaphore, std::uint32_t how) {
    while (Waiter* const waiter = semaphore.waiters) {
        semaphore.waiters = waiter->next;
        wake(*waiter, how);
    }
}

void unlinkWaiter(Semaphore& semaphore, const Waiter& waiter) {
    for (Waiter** link = &semaphore.waiters; *link != nullptr; link = &(*link)->next) {
        if (*link == &waiter) {
            *link = waiter.next;
            return;
        }
    }
}

kern_return_t resultOf(std::uint32_t word) {
    return word == kAwakened ? KERN_SUCCESS : KERN_TERMINATED;
}

timespec monotonicNow() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now;
}

// timeout null: no limit. {0, 0}: do not block.
kern_return_t waitOn(semaphore_t name, const mach_timespec_t* timeout) {
    ensureInitialized();
    if (timeout != nullptr && (timeout->tv_nsec < 0 || timeout->tv_nsec >= kNanosecondsPerSecond)) {
        return KERN_INVALID_VALUE;
    }
    Waiter waiter;
    Semaphore* semaphore = nullptr;
    {
        const KernelSection kernel;
        semaphore = find(name);
        if (semaphore == nullptr) return KERN_INVALID_NAME;
        if (faultFires(Fault::SemaphoreWaitAborted)) return KERN_ABORTED;
        if (semaphore->count > 0) {
            --semaphore->count;
            return KERN_SUCCESS;
        }
        if (timeout != nullptr && timeout->tv_sec == 0 && timeout->tv_nsec == 0) {
            return KERN_OPERATION_TIMED_OUT;
        }
        semaphore->count = -1;
        Waiter** link = &semaphore->waiters;
        while (*link != nullptr) link = &(*link)->next;
        *link = &waiter;
    }
    timespec deadline = monotonicNow();
    if (timeout != nullptr) {
        deadline.tv_sec += timeout->tv_sec;
        deadline.tv_nsec += timeout->tv_nsec;
        if (deadline.tv_nsec >= kNanosecondsPerSecond) {
            deadline.tv_nsec -= kNanosecondsPerSecond;
            ++deadline.tv_sec;
        }
    }
    kern_return_t ended = KERN_SUCCESS;
    for (;;) {
        timespec left{};
        if (timeout != nullptr) {
            const timespec now = monotonicNow();
            long long nanoseconds = (deadline.tv_sec - now.tv_sec) * 1000000000LL +
                                    (deadline.tv_nsec - now.tv_nsec);
            if (nanoseconds <= 0) {
                ended = KERN_OPERATION_TIMED_OUT;
                break;
            }
            left.tv_sec = static_cast<time_t>(nanoseconds / kNanosecondsPerSecond);
            left.tv_nsec = static_cast<long>(nanoseconds % kNanosecondsPerSecond);
        }
        const long rc = syscall(SYS_futex, &waiter.word, FUTEX_WAIT_PRIVATE, kWaiting,
                                timeout != nullptr ? &left : nullptr, nullptr, 0);
        if (waiter.word.load() != kWaiting) return resultOf(waiter.word.load());
        if (rc == -1 && errno == EINTR) {
            ended = KERN_ABORTED;
            break;
        }
    }
    const KernelSection kernel;
    if (waiter.word.load() != kWaiting) return resultOf(waiter.word.load());
    unlinkWaiter(*semaphore, waiter);
    return ended;
}

}  // namespace

void resetSemaphores() {
    for (Semaphore& semaphore : gSemaphores) semaphore = Semaphore{};
}

}  // namespace darwin_emulation::detail

using namespace darwin_emulation::detail;
using darwin_emulation::Fault;

kern_return_t semaphore_create(task_t task, semaphore_t* created, int /*policy*/, int value) noexcept {
    ensureInitialized();
    const KernelSection kernel;
    if (created == nullptr || !isTask(task) || value < 0) return KERN_INVALID_ARGUMENT;
    if (faultFires(Fault::SemaphoreCreateFails)) return KERN_RESOURCE_SHORTAGE;
    for (int index = 0; index < kSemaphores; ++index) {
        Semaphore& semaphore = gSemaphores[index];
        if (semaphore.active) continue;
        const mach_port_name_t name = allocateName(Kind::Semaphore, 1);
        if (name == MACH_PORT_NULL) break;
        lookupName(name)->semaphore = index;
        semaphore = Semaphore{true, value, nullptr};
        *created = name;
        return KERN_SUCCESS;
    }
    return KERN_RESOURCE_SHORTAGE;
}

kern_return_t semaphore_destroy(task_t task, semaphore_t name) noexcept {
    ensureInitialized();
    const KernelSection kernel;
    if (!isTask(task)) return KERN_INVALID_ARGUMENT;
    Semaphore* const semaphore = find(name);
    if (semaphore == nullptr) return KERN_INVALID_ARGUMENT;
    wakeAll(*semaphore, kTerminated);
    *semaphore = Semaphore{};
    freeName(name);
    return KERN_SUCCESS;
}

kern_return_t semaphore_signal(semaphore_t name) noexcept {
    ensureInitialized();
    const KernelSection kernel;
    Semaphore* const semaphore = find(name);
    if (semaphore == nullptr) return KERN_INVALID_NAME;
    if (semaphore->count < 0) {
        if (Waiter* const waiter = semaphore->waiters) {
            semaphore->waiters = waiter->next;
            wake(*waiter, kAwakened);
            return KERN_SUCCESS;
        }
        semaphore->count = 0;  // all waiters gone
    }
    ++semaphore->count;
    return KERN_SUCCESS;
}

kern_return_t semaphore_signal_all(semaphore_t name) noexcept {
    ensureInitialized();
    const KernelSection kernel;
    Semaphore* const semaphore = find(name);
    if (semaphore == nullptr) return KERN_INVALID_NAME;
    if (semaphore->count < 0) {
        semaphore->count = 0;
        wakeAll(*semaphore, kAwakened);
    }
    return KERN_SUCCESS;
}

kern_return_t semaphore_wait(semaphore_t name) noexcept { return waitOn(name, nullptr); }

kern_return_t semaphore_timedwait(semaphore_t name, mach_timespec_t timeout) noexcept {
    return waitOn(name, &timeout);
}

namespace darwin_emulation {
unsigned long callsOnInvalidSemaphores() { return detail::gInvalidCalls.load(); }
}  // namespace darwin_emulation

// Waiting on a 32-bit word with the kernel's futex. The deadline is absolute on
// CLOCK_MONOTONIC, the clock behind std::chrono::steady_clock.
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <climits>
#include <ctime>

#include "Strand/Platform.h"

namespace Strand::platform {

static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t) &&
                  std::atomic<std::uint32_t>::is_always_lock_free,
              "the futex word must be a plain 32-bit word");

void waitWhileEquals(const std::atomic<std::uint32_t>& word, std::uint32_t expected,
                     std::chrono::steady_clock::time_point deadline) {
    const auto sinceEpoch = deadline.time_since_epoch();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(sinceEpoch);
    timespec until{};
    until.tv_sec = static_cast<time_t>(seconds.count());
    until.tv_nsec = static_cast<long>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch - seconds).count());
    // Returns at once if the word no longer holds expected (EAGAIN), on a wake,
    // at the deadline (ETIMEDOUT) or when a signal interrupts (EINTR).
    syscall(SYS_futex, &word, FUTEX_WAIT_BITSET | FUTEX_PRIVATE_FLAG, expected, &until, nullptr,
            FUTEX_BITSET_MATCH_ANY);
}

void wakeWaiters(const std::atomic<std::uint32_t>& word) {
    syscall(SYS_futex, &word, FUTEX_WAKE | FUTEX_PRIVATE_FLAG, INT_MAX, nullptr, nullptr, 0);
}

}  // namespace Strand::platform

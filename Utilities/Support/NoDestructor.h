// Process-wide state that threads may touch until the very end of the process.
// Internal to the libraries of this tree; never installed.
//
// Threads the client never joins can still be opening scopes, converting text or
// serving a cross-thread call while static destructors run, so such state is
// built in place and never destroyed: nothing leaks (the object stays reachable for leak
// checkers), and nothing is freed under a live thread.
#pragma once

#include <utility>

namespace quill {

// Holds one T, constructed by the constructor and never destroyed. With a
// constexpr constructor of T and a constinit holder the object exists before any
// dynamic initialisation runs, so it is ready for a client's static initialiser
// in any link order. Never fails beyond what T's constructor throws.
template <class T>
class NoDestructor {
public:
    template <class... Args>
    constexpr explicit NoDestructor(Args&&... args) : value_(std::forward<Args>(args)...) {}
    NoDestructor(const NoDestructor&) = delete;
    NoDestructor& operator=(const NoDestructor&) = delete;
    // Deliberately leaves value_ alive.
    ~NoDestructor() {}  // NOLINT(modernize-use-equals-default): must not destroy value_

    constexpr T& operator*() noexcept { return value_; }
    constexpr T* operator->() noexcept { return &value_; }
    constexpr T* get() noexcept { return &value_; }

private:
    union {
        T value_;
    };
};

}  // namespace quill

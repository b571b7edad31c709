// Catch-alls that drop exceptions but never a thread's own unwinding.
// Internal to the libraries of this tree; never installed.
//
// glibc ends a cancelled thread, or one that calls pthread_exit, by unwinding
// its stack. libstdc++ shows that unwinding to catch (...) as an exception of
// type abi::__forced_unwind, and a handler that does not rethrow it aborts the
// process ("FATAL: exception not rethrown"). libc++abi does not enter
// catch (...) for it, and macOS does not unwind ending threads at all, so only
// libstdc++ needs the extra clause.
#pragma once

#include <exception>
#if defined(__GLIBCXX__)
#include <cxxabi.h>
#endif

namespace quill {

// Calls body() and drops whatever it throws, except the unwinding of an
// ending thread: then onThreadEnding() runs and the unwinding goes on. Throws
// nothing else. (The forced unwind carries no object, so the handler binds its
// reference to null by design; UndefinedBehaviorSanitizer is told so.)
template <typename Body, typename OnThreadEnding>
__attribute__((no_sanitize("undefined"))) void callDroppingExceptions(
    Body&& body, [[maybe_unused]] OnThreadEnding&& onThreadEnding) {
    try {
        body();
#if defined(__GLIBCXX__)
    } catch (abi::__forced_unwind&) {
        onThreadEnding();
        throw;
#endif
    } catch (...) {  // NOLINT(bugprone-empty-catch): dropping is the contract
    }
}

}  // namespace quill

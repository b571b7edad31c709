// Runs a function on another thread of this process, inside that thread's
// handler for SIGUSR1, and waits a bounded time for it.
//
// From the first call on, the library owns SIGUSR1 for the whole process: it
// installs its own handler (replacing any other) and keeps it until exit. Code
// that needs SIGUSR1 for itself cannot use this function.
#pragma once

#include <functional>

#include "Strand/Export.h"
#include "Strand/ThreadId.h"

namespace Strand {

// Runs function on thread and returns when it has finished, or when a wait has
// run out, or at once if the signal cannot be sent. Reports nothing: a caller
// that needs to know must look at what function produced.
//
// * thread is the calling thread, which its numeric id (element 2) alone
//   decides, whatever the other two elements hold (a triple rebuilt from a
//   logged id, a listed entry without a handle): function runs here and now;
//   what it throws reaches the caller, and an empty function throws
//   std::bad_function_call. The library never signals the calling thread.
// * Another thread: function runs inside that thread's signal handler, at
//   whatever point the thread was interrupted, so it must only do what is safe
//   there. The caller waits at most 100 ms for the thread to accept the call
//   (it may have SIGUSR1 blocked; the call is then withdrawn and never runs) and
//   then at most 4 s for function to return; a slower function runs on to its
//   end, after this call has returned, on its own copy of function. Whatever
//   function throws there is dropped; an empty function does nothing.
//   Cancellation of that thread is held off while function runs: a
//   pthread_cancel arriving meanwhile, even while function waits in a
//   cancellation point, takes effect at the thread's next cancellation point
//   after the handler has returned (at once if the thread was interrupted in a
//   blocking call). function may end its thread (pthread_exit); the call then
//   counts as finished. Otherwise function must return normally: one that
//   leaves by longjmp leaves that thread with cancellation disabled (and, with
//   siglongjmp's savemask 0, SIGUSR1 blocked, so it takes no further calls),
//   and its copy of function is destroyed only once that thread has ended.
// * The copy of function is destroyed by a thread that called this function,
//   after the library's lock is released (the copy of a call its caller stopped
//   waiting for, by a later caller, outside the handler, once the function has
//   returned); never by the handler. So what it captures may call back into the
//   library from its destructor.
// * Threads that cannot be signalled never run function: on macOS, dispatch
//   (GCD) worker threads (pthread_kill answers ENOTSUP for workqueue threads)
//   and listed threads without a POSIX handle. The call returns at once.
// * On macOS, a call made from inside function, while it runs on another
//   thread, is refused (returns at once, function not run): sending takes
//   libpthread's thread-list lock, which the interrupted thread may hold. The
//   same holds for any thread that has SIGUSR1 blocked.
// * Calls for other threads are served one at a time in the process; a caller
//   may wait behind others for up to about 4.1 s each.
// * Works in the child of a fork() whatever the parent's other threads were
//   doing, and on threads that run on while the process exits.
STRAND_EXPORT void executeOnThread(const ThreadId& thread, const std::function<void()>& function);

}  // namespace Strand

// Darwin's additions to <pthread.h> that the thread library's Apple layer
// calls, over the system's own header. Where Darwin's call has the name of a
// glibc call (pthread_setname_np, pthread_getname_np, pthread_kill), code that
// includes this header calls the emulation's under that name.
#pragma GCC system_header
#include_next <pthread.h>

#ifndef DARWIN_EMULATION_PTHREAD_H
#define DARWIN_EMULATION_PTHREAD_H

#include <stddef.h>
#include <stdint.h>

#include <mach/mach.h>

// 0, ESRCH for a handle the threading library does not list, EINVAL for a null
// thread_id. A null thread means the caller.
DARWIN_EMULATION_API int pthread_threadid_np(pthread_t thread, uint64_t* thread_id)
    DARWIN_EMULATION_NOTHROW;
// The thread's port name, without a reference; MACH_PORT_NULL if not listed.
DARWIN_EMULATION_API mach_port_t pthread_mach_thread_np(pthread_t thread) DARWIN_EMULATION_NOTHROW;
// The first listed thread (ended, unjoined ones included) with that port name.
DARWIN_EMULATION_API pthread_t pthread_from_mach_thread_np(mach_port_t port)
    DARWIN_EMULATION_NOTHROW;

DARWIN_EMULATION_API int darwin_emulation_pthread_setname_np(const char* name)
    DARWIN_EMULATION_NOTHROW;
DARWIN_EMULATION_API int darwin_emulation_pthread_getname_np(pthread_t thread, char* name,
                                                             size_t length)
    DARWIN_EMULATION_NOTHROW;
DARWIN_EMULATION_API int darwin_emulation_pthread_kill(pthread_t thread, int signal_number)
    DARWIN_EMULATION_NOTHROW;

#ifndef DARWIN_EMULATION_IMPLEMENTATION
// Names the calling thread: 0, or -1 with errno set (ENAMETOOLONG past 63 bytes).
#define pthread_setname_np darwin_emulation_pthread_setname_np
#define pthread_getname_np darwin_emulation_pthread_getname_np
// ESRCH for a thread that has ended, ENOTSUP for a dispatch worker thread.
#define pthread_kill darwin_emulation_pthread_kill
#endif

#endif

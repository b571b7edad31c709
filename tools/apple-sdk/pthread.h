// The host's <pthread.h> plus the Apple extensions the Apple platform layer
// uses, declared as the macOS SDK declares them. For syntax checks only.
#pragma once

// glibc declares these two with other signatures; keep its declarations out of
// the way under other names.
#define pthread_setname_np host_pthread_setname_np
#define pthread_getname_np host_pthread_getname_np
#include_next <pthread.h>
#undef pthread_setname_np
#undef pthread_getname_np

#include <stddef.h>
#include <stdint.h>

#include <mach/mach.h>

#ifdef __cplusplus
extern "C" {
#endif

int pthread_threadid_np(pthread_t thread, uint64_t* thread_id);
pthread_t pthread_from_mach_thread_np(mach_port_t port);
mach_port_t pthread_mach_thread_np(pthread_t thread);
int pthread_setname_np(const char* name);
int pthread_getname_np(pthread_t thread, char* name, size_t len);

#ifdef __cplusplus
}
#endif

// The platform layer of the thread library: the few operations that differ
// between operating systems. Internal to the library; never installed.
//
// Contract, per operation:
//   * Results never report errors by exception: a refused query yields 0, an
//     empty string or an empty vector, as stated.
//   * "Signal-safe" means async-signal-safe: callable from a signal handler.
//
// One implementation per OS: linux/*.cpp (kernel TIDs, /proc, prctl) and
// apple/*.cpp (Mach ports, task_threads, pthread_*_np).
#pragma once

#include <pthread.h>

#include <string>
#include <vector>

#include "Strand/ThreadId.h"

namespace Strand {

// The calling thread's numeric id, low 32 bits. Never fails. Signal-safe.
int gettid();

// The numeric id of thread, low 32 bits; 0 if the platform cannot tell.
int getUnixThreadId(pthread_t thread);

namespace platform {

// The calling thread's triple, asked of the platform (Strand::getThreadId caches
// it per thread); never fails. Signal-safe: registering the thread with the
// library takes no lock and allocates nothing, so a function run inside a
// signal handler may ask who it is.
ThreadId queryCurrentThreadId();

// Every thread of this process in the kernel's order; empty on refusal.
std::vector<ThreadId> listThreads();

// Names the calling thread. name is NUL-terminated and at most 63 bytes.
// Returns 0, or the platform's error number when it refuses.
int setCurrentThreadName(const char* name);

// The name of thread id; empty if it has none, has ended or cannot be asked.
std::string threadName(const ThreadId& id);

// Test seam: replaces the call that hands a name to the platform (so tests can
// make it refuse) and returns the previous one; nullptr restores the default.
using NameSetter = int (*)(const char* name);
NameSetter exchangeNameSetterForTesting(NameSetter setter);

}  // namespace platform
}  // namespace Strand

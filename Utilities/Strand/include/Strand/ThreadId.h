// Thread identity: the triple by which the platform knows a thread, and the
// list of the process's threads.
//
// ThreadId is (POSIX handle, system-wide numeric id cut to its low 32 bits,
// kernel thread handle). The third element is the primary id: the Mach thread
// port on Apple platforms, the kernel TID on Linux. None of these functions
// reports an error: a query the platform refuses yields 0 or an empty list.
//
// A ThreadId is a snapshot and holds no reference: once its thread has ended,
// its POSIX handle names nothing, or a newer thread that got the same handle.
// On macOS, executeOnThread, getStackTrace and getThreadName(id) hand that
// handle to pthread_kill / pthread_getname_np, which POSIX leaves undefined for
// a thread that has ended. macOS looks a handle up among the process's live
// threads before it uses it, so such a call finds nothing (no signal, empty
// name); a handle reused by a newer thread reaches that thread, whose signal
// handler runs nothing, since its numeric id is not the target's (the call is
// withdrawn after 100 ms). The caller's part: pass only ids of threads that have
// not ended, for instance by joining a thread only after the last such call.
#pragma once

#include <pthread.h>

#include <string>
#include <tuple>
#include <vector>

#include "Strand/Export.h"

namespace Strand {

// A thread's triple: (POSIX handle, numeric thread id, kernel handle).
using ThreadId = std::tuple<pthread_t, int, unsigned int>;

// The calling thread's triple; never fails, and async-signal-safe. Cheap
// enough for logging: on Linux it is cached per thread after the first call
// (and recomputed in a child after fork()); on macOS it is read from the
// calling thread's own structure every time.
STRAND_EXPORT ThreadId getThreadId();

// Every thread of this process, in the kernel's order; empty on refusal.
STRAND_EXPORT std::vector<ThreadId> getThreadIds();

// Every thread of process pid if pid is this process; otherwise, or on any
// refusal of the platform, an empty vector. A thread whose POSIX handle the
// library does not know gets a null element 1.
STRAND_EXPORT std::vector<ThreadId> getThreadIds(int pid);

// Elements 1, 2 and 3 of a triple.
STRAND_EXPORT pthread_t getPosixThreadId(const ThreadId& id);
STRAND_EXPORT int getUnixThreadId(const ThreadId& id);
STRAND_EXPORT unsigned int getMachThreadId(const ThreadId& id);

// Element 3 of the calling thread's triple (the kernel handle, not the numeric id).
STRAND_EXPORT unsigned int getPrimaryThreadId();
// Element 3 of id.
STRAND_EXPORT unsigned int getPrimaryThreadId(const ThreadId& id);

// Element 2 in decimal ("-1" for a negative id).
STRAND_EXPORT std::string getThreadIdString();
STRAND_EXPORT std::string getThreadIdString(const ThreadId& id);

// Element 2 as "0x" and lower-case hexadecimal digits ("0xffffffff" for -1).
STRAND_EXPORT std::string getThreadIdHexString();
STRAND_EXPORT std::string getThreadIdHexString(const ThreadId& id);

}  // namespace Strand

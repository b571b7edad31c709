// What the Linux layer remembers about the threads it has seen: each thread's
// POSIX handle (the kernel cannot map a TID back to one) and the full name the
// library gave it (the kernel keeps only 15 bytes).
//
// Every thread the library sees owns one record while it lives. A record is
// never freed, only reused: records come from blocks that are mapped without
// malloc and never unmapped, so a thread can claim one without locks or
// allocation (even inside a signal handler), and a reader never touches freed
// memory. A record names its owner by TID and start (TaskStart.h), so it is
// trusted only while that very thread runs: no name or handle is ever read back
// for a later thread with the same TID, however the owner ended and whatever
// it did to its robust-mutex list. The records of ended threads are reclaimed
// in sweeps that pay for themselves: memory follows the peak number of threads
// alive at once, and registering costs amortised O(1).
#pragma once

#include <pthread.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Strand/ThreadId.h"

namespace Strand::linux_layer {

struct ThreadRecord;

// The registry also defines getThreadId (Platform.h): the calling thread's
// triple from a per-thread cache in static TLS, registering the thread on its
// first call (and retrying on later calls if it could not be registered yet).
// Async-signal-safe whatever the load order: no lock a user can hold, no
// allocation. A signal handler that asks during the thread's registration gets
// the triple and leaves the registering to the interrupted call.

// Registers the calling thread unless it is registered already (a signal
// handler may have done it since the caller looked) and returns its triple;
// the triple without a record if the registry has no memory for one.
// Async-signal-safe like getThreadId.
ThreadId registerCurrentThread();

// The calling thread's record; null while it cannot be registered (no memory
// for a new block, or asked from a signal handler that interrupted the
// registration). Async-signal-safe like getThreadId. Not noexcept: a
// pending asynchronous cancel acts once a registration is complete.
ThreadRecord* currentRecord();

// Whether the calling thread is the process's main thread (its TID is the
// process id). Async-signal-safe, as currentRecord.
bool currentIsMainThread();

// Records the full name given to the calling thread (record is its own) and
// the kernel's name of the thread at that moment. Owner only. Never fails.
void rememberName(ThreadRecord& record, std::string_view fullName, std::string_view kernelName);

// The full name last given to the thread that owns record, if it was named and
// the kernel still holds kernelName for it (otherwise other code renamed it).
// Owner only.
std::optional<std::string> ownFullName(ThreadRecord& record, std::string_view kernelName);

// The same for the running thread tid; nullopt if the registry holds no record
// of the thread that has that TID now.
std::optional<std::string> fullNameIfCurrent(int tid, std::string_view kernelName);

// The handle of each tid in tids, 0 for a thread the library has not seen.
std::vector<pthread_t> knownHandles(const std::vector<int>& tids);

// How many records exist, owned or free; for tests of the memory bound.
std::size_t recordCountForTesting() noexcept;

}  // namespace Strand::linux_layer

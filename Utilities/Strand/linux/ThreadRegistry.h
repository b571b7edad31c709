// What the Linux layer remembers about the threads it has seen: each thread's
// POSIX handle (the kernel cannot map a TID back to one) and the full name the
// library gave it (the kernel keeps only 15 bytes).
//
// Every thread the library sees owns one record for the rest of its life. A
// record is never freed, only reused: records come from blocks that are mapped
// without malloc and never unmapped, so a thread can claim one without locks or
// allocation (even inside a signal handler), and a reader never touches freed
// memory. The owner holds the record's robust mutex from the claim on; when the
// thread ends, however it ends and whatever runs after the library's own
// clean-up, the kernel marks that mutex "owner died". A record is trusted only
// while the kernel says its owner lives, so no name or handle is ever read back
// for another thread that later gets the same TID, and the records of ended
// threads are reclaimed by the next threads that need one: memory follows the
// peak number of threads alive at once, not the number of threads ever made.
#pragma once

#include <pthread.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Strand/ThreadId.h"

namespace Strand::linux_layer {

struct ThreadRecord;

// The registry also defines platform::queryCurrentThreadId (Platform.h): the
// calling thread's triple from a per-thread cache in static TLS, registering
// the thread on its first call (and retrying on later calls if it could not be
// registered yet). Async-signal-safe whatever the load order: no lock a user
// can hold, no allocation.

// The calling thread's record; null only if it could not be registered (no
// memory for a new block). Async-signal-safe like queryCurrentThreadId.
ThreadRecord* currentRecord() noexcept;

// Records the full name given to the calling thread (record is its own) and
// the kernel's name of the thread at that moment. Owner only. Never fails.
void rememberName(ThreadRecord& record, std::string_view fullName, std::string_view kernelName);

// The full name last given to the thread that owns record, if it was named and
// the kernel still holds kernelName for it (otherwise other code renamed it).
std::optional<std::string> ownFullName(ThreadRecord& record, std::string_view kernelName);

// The same for the live thread tid; nullopt if no live thread has that TID in
// the registry.
std::optional<std::string> fullNameIfCurrent(int tid, std::string_view kernelName);

// The handle of each tid in tids, 0 for a thread the library has not seen.
std::vector<pthread_t> knownHandles(const std::vector<int>& tids);

}  // namespace Strand::linux_layer

// What the Linux layer remembers about the threads it has seen, keyed by kernel
// TID: the POSIX handle (the kernel cannot map a TID back to one) and the full
// name the library gave the thread (the kernel keeps only 15 bytes of it).
//
// Handles live in a fixed table of slots that a thread claims without locks or
// allocation, so a thread can register itself even from inside a signal
// handler. Names live in a map under a mutex. A thread's slot and name go when
// the thread ends.
#pragma once

#include <pthread.h>

#include <optional>
#include <string>
#include <vector>

namespace Strand::linux_layer {

// Records the calling thread (tid, handle). Returns false, leaving the thread
// unknown, when every slot is taken. Async-signal-safe: no lock, no allocation.
bool rememberCurrentThread(int tid, pthread_t handle) noexcept;

// Records the full name given to the calling thread and the part of it the
// kernel keeps. Not async-signal-safe.
void rememberCurrentThreadName(int tid, const std::string& fullName, const std::string& kernelName);

// The handle of each tid in tids, 0 for a thread the library has not seen.
std::vector<pthread_t> knownHandles(const std::vector<int>& tids);

// The TID of a live thread the library has seen, by its handle; 0 if unknown.
int knownTid(pthread_t handle) noexcept;

// The full name the library gave thread tid, if the kernel still holds the
// part of it that the library handed over (otherwise someone renamed it since).
std::optional<std::string> fullNameIfCurrent(int tid, const std::string& kernelName);

// fork() support. The name lock is held across fork() so that the child never
// inherits it held by a thread that does not exist there. In the child the
// forking thread's slot and name move to its new TID and every other entry goes.
void lockForFork();
void unlockAfterForkInParent();
void unlockAfterForkInChild(int newTid);

}  // namespace Strand::linux_layer

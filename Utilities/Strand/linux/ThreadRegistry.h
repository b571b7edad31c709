// What the Linux layer remembers about the threads it has seen, keyed by kernel
// TID: the POSIX handle (the kernel cannot map a TID back to one) and the full
// name the library gave the thread (the kernel keeps only 15 bytes of it).
//
// An entry is made when a thread first asks for its identity or sets a name,
// and goes when the thread ends. Never used from a signal handler.
#pragma once

#include <pthread.h>

#include <optional>
#include <string>
#include <vector>

namespace Strand::linux_layer {

// Records the calling thread (tid, handle) and arranges for its entry to be
// dropped when it ends. May allocate; never fails short of memory exhaustion.
void rememberCurrentThread(int tid, pthread_t handle);

// Records the full name given to the calling thread and the part of it the
// kernel keeps.
void rememberCurrentThreadName(int tid, pthread_t handle, const std::string& fullName,
                               const std::string& kernelName);

// The handle of each tid in tids, 0 for a thread the library has not seen.
std::vector<pthread_t> knownHandles(const std::vector<int>& tids);

// The TID of a thread the library has seen by its handle; 0 if unknown.
int knownTid(pthread_t handle);

// The full name the library gave thread tid, if the kernel still holds the
// part of it that the library handed over (otherwise someone renamed it since).
std::optional<std::string> fullNameIfCurrent(int tid, const std::string& kernelName);

// fork() support. The lock is held across fork() so that the child never
// inherits it held by a thread that does not exist there. In the child the
// forking thread's entry moves to its new TID and every other entry goes.
void lockForFork();
void unlockAfterForkInParent();
void unlockAfterForkInChild(int oldTid, int newTid);

}  // namespace Strand::linux_layer

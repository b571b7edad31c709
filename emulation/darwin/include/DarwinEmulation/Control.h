// Test controls of the Darwin emulation: fault injection, the port-name
// generation count, dispatch-worker marks and the port accounting. Not part of
// any Darwin interface; only tests include it.
#pragma once

#include <pthread.h>

#include <string>

namespace darwin_emulation {

// What a test can make the emulated system do.
enum class Fault {
    SemaphoreWaitAborted,     // semaphore_wait/timedwait return KERN_ABORTED
    SemaphoreCreateFails,     // semaphore_create returns KERN_RESOURCE_SHORTAGE
    TaskForPidRefused,        // task_for_pid returns KERN_FAILURE
    TaskThreadsRefused,       // task_threads returns KERN_FAILURE
    KillNoSuchThread,         // pthread_kill returns ESRCH
    KillNotSupported,         // pthread_kill returns ENOTSUP
    FromMachThreadNull,       // pthread_from_mach_thread_np returns null
};

// The next times calls of the kind fail (times < 0: every call until cleared).
void injectFault(Fault fault, int times = 1);
void clearFaults();
// How many calls of the kind have failed by injection so far.
unsigned long faultsFired(Fault fault);

// How many generations a port-name slot goes through before its names repeat
// (1 to 64; the kernel's 64 by default). With 1, a name is reused as soon as it
// is freed.
void setPortGenerations(unsigned generations);

// Marks the calling thread as a dispatch (workqueue) thread: pthread_kill to it
// returns ENOTSUP.
void markCallingThreadAsDispatchWorker();

// Runs hook once, on the next pthread_kill, after the target was looked up and
// before the signal is sent (the window in which its thread may take locks).
void runBeforeNextSignalSent(void (*hook)(void*), void* argument);

// Runs body while the calling thread holds the threading library's list lock.
void withThreadListLockHeld(void (*body)(void*), void* argument);

// Semaphore calls made with a name that is no semaphore.
unsigned long callsOnInvalidSemaphores();

// Every imbalance of the port accounting, one line each; empty when every
// thread port holds exactly its thread's reference, the task port its starting
// count and every task_threads array has been freed. The same check runs at
// exit and fails the process.
std::string accountingReport();

}  // namespace darwin_emulation

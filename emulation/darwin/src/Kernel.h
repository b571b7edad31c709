// The emulated kernel's state, shared by the emulation's sources: the task's
// port-name space, the records of threads, the two locks and the bookkeeping
// that the accounting checks. Internal to the emulation.
#pragma once

#include <mach/mach.h>
#include <pthread.h>
#include <signal.h>

#include <cstdint>

#include "DarwinEmulation/Control.h"

namespace darwin_emulation::detail {

// One thread as libpthread and the kernel know it.
struct ThreadRecord {
    // libpthread's side, under the list lock (handle and port are written once
    // before the record is listed, or by the thread itself as it starts).
    pthread_t handle{};
    std::uint64_t threadId = 0;
    mach_port_t port = MACH_PORT_NULL;  // kept after the thread ends, as libpthread keeps it
    bool ended = false;
    bool detached = false;
    char name[64] = {};
    ThreadRecord* next = nullptr;  // libpthread's list, in creation order
    // The kernel's side, under the kernel lock.
    bool alive = false;
    bool dispatchWorker = false;
    bool portReleased = false;  // its own reference was released by someone else
    ThreadRecord* kernelNext = nullptr;
};

// The kernel's lock: a Mach call is atomic to signal handlers, so it is held
// with every signal blocked. Never held while the list lock is taken.
class KernelSection {
public:
    KernelSection();
    ~KernelSection();
    KernelSection(const KernelSection&) = delete;
    KernelSection& operator=(const KernelSection&) = delete;

private:
    sigset_t savedMask_;
};

// libpthread's list lock, an os_unfair_lock: signals stay deliverable while it
// is held, and taking it again on the thread that holds it aborts the process.
class ListSection {
public:
    ListSection();
    ~ListSection();
    ListSection(const ListSection&) = delete;
    ListSection& operator=(const ListSection&) = delete;
};

enum class Kind : std::uint8_t { Free, Thread, Task, Semaphore, DeadName };

struct PortEntry {
    Kind kind = Kind::Free;
    std::uint8_t generation = 0;
    std::uint32_t refs = 0;
    ThreadRecord* thread = nullptr;
    int semaphore = -1;
};

// Brings the emulation up on first use, and anew in a fork child, which holds
// no port right of its parent. Every entry point calls it first.
void ensureInitialized();

// Under KernelSection: the entry a name denotes, or null.
PortEntry* lookupName(mach_port_name_t name);
// Under KernelSection: a fresh name of the kind with refs references; 0 if full.
mach_port_name_t allocateName(Kind kind, std::uint32_t refs);
// Under KernelSection: removes the name from the space.
void freeName(mach_port_name_t name);
// Under KernelSection: drops one reference, freeing the name at zero.
void dropReference(mach_port_name_t name, PortEntry& entry);
// Under KernelSection: notes a misuse for the accounting (printf format).
void recordViolation(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Under KernelSection: fresh zeroed pages of at least bytes, owed back through
// vm_deallocate (checked by the accounting); 0 if none.
vm_address_t allocatePages(vm_size_t bytes);
// The task's own port name.
mach_port_t taskPort();
// True if an injected fault of this kind fires now (consumes one).
bool faultFires(Fault fault);

// The calling thread's record; a thread not started through pthread_create
// (there is none but the first) is taken on when it first asks, and a thread
// whose end is known gets a stand-in that is ended and has no port.
ThreadRecord& self();
// Under ListSection: libpthread's list, and its validation of a handle (a walk
// of the list); an ended record is preferred when asked for, as join and
// detach name the ended thread.
ThreadRecord* listHead();
ThreadRecord* findByHandle(pthread_t handle, bool endedFirst);

// Thread side, called by the kernel side.
void resetThreads(bool forkChild);  // under KernelSection, single-threaded
void resetSemaphores();             // under KernelSection, single-threaded

}  // namespace darwin_emulation::detail

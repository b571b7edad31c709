// Threads as Darwin's libpthread and kernel know them, kept beside glibc's own:
// every thread gets a 64-bit id and a port name when it is created, libpthread's
// list keeps a joinable thread that has ended (with its old port name) until it
// is joined, and the kernel frees the name when the thread ends, for a new
// thread to take. pthread_create, pthread_join and pthread_detach are wrapped
// for the whole process, so std::thread's threads are known too.
#include <dlfcn.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "Kernel.h"

namespace darwin_emulation::detail {

namespace {

// Real ids grow past 2^31 in their low 32 bits; these do so from the second
// thread on, and no two of the first 2^32 share their low 32 bits.
constexpr std::uint64_t kFirstThreadId = 0x0000000500001000ull;
constexpr std::uint64_t kThreadIdStride = 0x000000009e3779b9ull;

ThreadRecord* gListHead = nullptr;  // list lock
ThreadRecord* gListTail = nullptr;
ThreadRecord* gKernelHead = nullptr;  // kernel lock: live threads, creation order
std::atomic<pid_t> gListOwner{0};
std::atomic<std::uint64_t> gSerial{0};
pthread_key_t gEndKey;

__thread ThreadRecord* tSelf __attribute__((tls_model("initial-exec"))) = nullptr;
// What an ended thread is to the calls it makes as it goes on exiting (a later
// key destructor, a signal handler): its id and handle, ended, with no port
// and never listed. Darwin keeps the port until the kernel thread is gone, a
// moment the emulation cannot see; taking the thread on again instead would
// leave a listed record with a live port behind a handle that glibc frees.
[[gnu::tls_model("initial-exec")]] thread_local ThreadRecord tAfterEnd;
__thread pid_t tKernelTid __attribute__((tls_model("initial-exec"))) = 0;

pid_t kernelTid() {
    if (tKernelTid == 0) tKernelTid = static_cast<pid_t>(syscall(SYS_gettid));
    return tKernelTid;
}

std::uint64_t nextThreadId() {
    for (;;) {
        const std::uint64_t id = kFirstThreadId + gSerial.fetch_add(1) * kThreadIdStride;
        if (static_cast<std::uint32_t>(id) != 0) return id;
    }
}

// Under KernelSection: the thread's port, holding the thread's own reference.
void attachPort(ThreadRecord& thread) {
    thread.port = allocateName(Kind::Thread, 1);
    if (thread.port == MACH_PORT_NULL) return;
    lookupName(thread.port)->thread = &thread;
    thread.alive = true;
    ThreadRecord** link = &gKernelHead;
    while (*link != nullptr) link = &(*link)->kernelNext;
    *link = &thread;
}

// Under KernelSection: the thread has ended; the kernel drops its reference.
// References others still hold leave a dead name behind.
void detachPort(ThreadRecord& thread) {
    for (ThreadRecord** link = &gKernelHead; *link != nullptr; link = &(*link)->kernelNext) {
        if (*link == &thread) {
            *link = thread.kernelNext;
            break;
        }
    }
    thread.alive = false;
    PortEntry* const entry = lookupName(thread.port);
    if (thread.portReleased || entry == nullptr || entry->thread != &thread) return;
    if (entry->refs == 1) {
        freeName(thread.port);
    } else {
        entry->kind = Kind::DeadName;
        entry->thread = nullptr;
        --entry->refs;
    }
}

// Under ListSection.
void append(ThreadRecord& thread) {
    thread.next = nullptr;
    (gListTail != nullptr ? gListTail->next : gListHead) = &thread;
    gListTail = &thread;
}

void unlink(ThreadRecord& thread) {
    ThreadRecord* previous = nullptr;
    for (ThreadRecord* at = gListHead; at != nullptr; previous = at, at = at->next) {
        if (at != &thread) continue;
        (previous != nullptr ? previous->next : gListHead) = at->next;
        if (gListTail == at) gListTail = previous;
        return;
    }
}

}  // namespace

ThreadRecord* findByHandle(pthread_t handle, bool endedFirst) {
    ThreadRecord* found = nullptr;
    for (ThreadRecord* at = gListHead; at != nullptr; at = at->next) {
        if (pthread_equal(at->handle, handle) == 0) continue;
        if (!endedFirst || at->ended) return at;
        if (found == nullptr) found = at;
    }
    return found;
}

namespace {

// The key's destructor runs after the thread's C++ thread_local destructors.
void threadEnded(void* record) {
    auto* const thread = static_cast<ThreadRecord*>(record);
    {
        const KernelSection kernel;
        detachPort(*thread);
    }
    bool reclaim = false;
    {
        const ListSection list;
        thread->ended = true;
        reclaim = thread->detached;
        if (reclaim) unlink(*thread);
    }
    tAfterEnd.handle = thread->handle;
    tAfterEnd.threadId = thread->threadId;
    tAfterEnd.ended = true;
    tSelf = nullptr;
    if (reclaim) delete thread;
}

}  // namespace

ThreadRecord& self() {
    ensureInitialized();
    if (tSelf != nullptr) return *tSelf;
    if (tAfterEnd.ended) return tAfterEnd;
    auto* const thread = new ThreadRecord;
    thread->handle = pthread_self();
    thread->threadId = nextThreadId();
    {
        const KernelSection kernel;
        attachPort(*thread);
    }
    {
        const ListSection list;
        append(*thread);
    }
    tSelf = thread;
    pthread_setspecific(gEndKey, thread);
    return *thread;
}

ThreadRecord* listHead() { return gListHead; }

namespace {

struct Start {
    void* (*function)(void*);
    void* argument;
    ThreadRecord* record;
    sigset_t mask;  // the creator's, which the thread takes once it is known
    std::atomic<bool> published{false};
};

// The thread starts with every signal blocked (glibc hands it the creator's
// mask, blocked around the creation), so no handler runs on it before it is
// known, listed and has its port, as a Darwin thread is from its first
// instruction; a handler that asked earlier would take it on a second time.
void* startThread(void* start) {
    auto* const launch = static_cast<Start*>(start);
    tSelf = launch->record;
    pthread_setspecific(gEndKey, launch->record);
    while (!launch->published.load(std::memory_order_acquire)) sched_yield();
    pthread_sigmask(SIG_SETMASK, &launch->mask, nullptr);
    void* (*const function)(void*) = launch->function;
    void* const argument = launch->argument;
    delete launch;
    return function(argument);
}

template <typename Fn>
Fn realFunction(const char* name) {
    return reinterpret_cast<Fn>(dlsym(RTLD_NEXT, name));
}

}  // namespace

ListSection::ListSection() {
    const pid_t me = kernelTid();
    if (gListOwner.load(std::memory_order_relaxed) == me) {
        static const char kMessage[] =
            "BUG IN CLIENT OF LIBPLATFORM: Trying to recursively lock an os_unfair_lock\n";
        (void)!write(STDERR_FILENO, kMessage, sizeof kMessage - 1);
        abort();
    }
    pid_t expected = 0;
    while (!gListOwner.compare_exchange_weak(expected, me, std::memory_order_acquire)) {
        expected = 0;
        sched_yield();
    }
}

ListSection::~ListSection() { gListOwner.store(0, std::memory_order_release); }

void resetThreads(bool forkChild) {
    gListOwner.store(0);
    tKernelTid = 0;
    if (!forkChild) pthread_key_create(&gEndKey, &threadEnded);
    // A fork child keeps only the forking thread, as a new kernel thread; the
    // records of the others are forgotten (their threads do not exist here).
    gListHead = gListTail = nullptr;
    gKernelHead = nullptr;
    ThreadRecord* const thread = tSelf != nullptr ? tSelf : new ThreadRecord;
    thread->handle = pthread_self();
    thread->threadId = nextThreadId();
    thread->ended = false;
    thread->detached = false;
    thread->portReleased = false;
    thread->dispatchWorker = false;
    thread->kernelNext = nullptr;
    attachPort(*thread);
    append(*thread);
    tSelf = thread;
    pthread_setspecific(gEndKey, thread);
}

}  // namespace darwin_emulation::detail

using namespace darwin_emulation::detail;
using darwin_emulation::Fault;

extern "C" int pthread_create(pthread_t* handle, const pthread_attr_t* attributes,
                              void* (*function)(void*), void* argument) noexcept {
    ensureInitialized();
    static const auto realCreate = realFunction<decltype(&pthread_create)>("pthread_create");
    auto* const record = new ThreadRecord;
    record->threadId = nextThreadId();
    int detachState = PTHREAD_CREATE_JOINABLE;
    if (attributes != nullptr) pthread_attr_getdetachstate(attributes, &detachState);
    record->detached = detachState == PTHREAD_CREATE_DETACHED;
    auto* const start = new Start{function, argument, record, {}};
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &start->mask);
    const int result = realCreate(handle, attributes, &startThread, start);
    pthread_sigmask(SIG_SETMASK, &start->mask, nullptr);
    if (result != 0) {
        delete start;
        delete record;
        return result;
    }
    // The new thread waits until it is listed with its handle and port.
    record->handle = *handle;
    {
        const KernelSection kernel;
        attachPort(*record);
    }
    {
        const ListSection list;
        append(*record);
    }
    start->published.store(true, std::memory_order_release);
    return 0;
}

extern "C" int pthread_join(pthread_t handle, void** result) {
    ensureInitialized();
    static const auto realJoin = realFunction<decltype(&pthread_join)>("pthread_join");
    const int joined = realJoin(handle, result);
    if (joined == 0) {
        ThreadRecord* thread = nullptr;
        {
            const ListSection list;
            thread = findByHandle(handle, true);
            if (thread != nullptr && thread->ended) {
                unlink(*thread);
            } else {
                thread = nullptr;
            }
        }
        delete thread;
    }
    return joined;
}

extern "C" int pthread_detach(pthread_t handle) noexcept {
    ensureInitialized();
    static const auto realDetach = realFunction<decltype(&pthread_detach)>("pthread_detach");
    const int detached = realDetach(handle);
    if (detached == 0) {
        ThreadRecord* ended = nullptr;
        {
            const ListSection list;
            if (ThreadRecord* const thread = findByHandle(handle, true)) {
                thread->detached = true;
                if (thread->ended) {
                    unlink(*thread);
                    ended = thread;
                }
            }
        }
        delete ended;
    }
    return detached;
}

mach_port_t mach_thread_self() noexcept {
    ThreadRecord& me = self();
    const KernelSection kernel;
    PortEntry* const entry = lookupName(me.port);
    if (entry != nullptr && entry->thread == &me) ++entry->refs;
    return me.port;
}

kern_return_t thread_info(thread_inspect_t target, thread_flavor_t flavor, thread_info_t out,
                          mach_msg_type_number_t* count) noexcept {
    ensureInitialized();
    if (flavor != THREAD_IDENTIFIER_INFO || out == nullptr || count == nullptr ||
        *count < THREAD_IDENTIFIER_INFO_COUNT) {
        return KERN_INVALID_ARGUMENT;
    }
    const KernelSection kernel;
    const PortEntry* const entry = lookupName(target);
    if (entry == nullptr || entry->kind != Kind::Thread) return MACH_SEND_INVALID_DEST;
    thread_identifier_info_data_t info{};
    info.thread_id = entry->thread->threadId;
    info.thread_handle = reinterpret_cast<std::uint64_t>(entry->thread->handle);
    std::memcpy(out, &info, sizeof info);
    *count = THREAD_IDENTIFIER_INFO_COUNT;
    return KERN_SUCCESS;
}

kern_return_t task_threads(task_inspect_t task, thread_act_array_t* threads,
                           mach_msg_type_number_t* count) noexcept {
    ensureInitialized();
    if (threads == nullptr || count == nullptr) return KERN_INVALID_ARGUMENT;
    const KernelSection kernel;
    const PortEntry* const space = lookupName(task);
    if (space == nullptr || space->kind != Kind::Task) return KERN_INVALID_ARGUMENT;
    if (faultFires(Fault::TaskThreadsRefused)) return KERN_FAILURE;
    mach_msg_type_number_t live = 0;
    for (const ThreadRecord* at = gKernelHead; at != nullptr; at = at->kernelNext) ++live;
    const vm_address_t pages = allocatePages(sizeof(thread_act_t) * (live > 0 ? live : 1));
    if (pages == 0) return KERN_RESOURCE_SHORTAGE;
    auto* const ports = reinterpret_cast<thread_act_t*>(pages);
    mach_msg_type_number_t index = 0;
    for (const ThreadRecord* at = gKernelHead; at != nullptr; at = at->kernelNext) {
        PortEntry* const entry = lookupName(at->port);
        if (entry != nullptr && entry->thread == at) ++entry->refs;
        ports[index++] = at->port;
    }
    *threads = ports;
    *count = live;
    return KERN_SUCCESS;
}

// Thread identity on macOS: (pthread_self(), pthread_threadid_np cut to its low
// 32 bits, Mach thread port). The port is the primary id.
//
// A thread that has ended but is not yet joined stays on libpthread's list with
// its old port name, which the kernel may already have given to a new thread;
// a listed handle is checked against the port's thread (see handleOfPort), and
// a live thread whose name an ended one still holds is listed without handle.
//
// The calling thread's triple is read from its own thread structure on every
// call (pthread_mach_thread_np adds no port reference, pthread_threadid_np of
// the caller reads a cached id), so nothing is cached in TLS: a dylib's TLS
// allocates on a thread's first touch, which a signal handler must not do.
// The threading library holds the port's reference for the thread's whole
// life, and a ThreadId only ever uses it as an identifier. The task port that
// task_for_pid() returns for the own process, and every thread port that
// task_threads() lists, are released before the listing returns, so no call
// leaves the reference counts higher than it found them.
#include <mach/mach.h>
#include <pthread.h>
#include <unistd.h>

#include <cstdint>

#include "Strand/Platform.h"
#include "Strand/apple/KernelThreadId_apple.h"

namespace Strand {

namespace {

int lowBits(std::uint64_t id) { return static_cast<int>(static_cast<std::uint32_t>(id)); }

// The numeric id of a live thread by its POSIX handle; 0 if the query fails.
int unixThreadIdOf(pthread_t thread) {
    std::uint64_t id = 0;
    pthread_threadid_np(thread, &id);
    return lowBits(id);
}

}  // namespace

namespace platform {

bool kernelThreadId(mach_port_t port, std::uint64_t& id) {
    thread_identifier_info_data_t info{};
    mach_msg_type_number_t count = THREAD_IDENTIFIER_INFO_COUNT;
    if (thread_info(port, THREAD_IDENTIFIER_INFO, reinterpret_cast<thread_info_t>(&info), &count) !=
        KERN_SUCCESS) {
        return false;
    }
    id = info.thread_id;
    return true;
}

}  // namespace platform

namespace {

// The POSIX handle of the live thread whose port is port, or null.
// libpthread keeps a joinable thread that has ended on its list, under its old
// port name, until it is joined, and pthread_from_mach_thread_np answers with
// the first thread on the list that has the name: once the kernel has given
// the name to a new thread, that is the ended one. A handle counts only if it
// names the port and has the id the kernel gives the port's thread.
pthread_t handleOfPort(mach_port_t port, std::uint64_t kernelId) {
    const pthread_t handle = pthread_from_mach_thread_np(port);
    std::uint64_t handleId = 0;
    if (handle == pthread_t{} || pthread_mach_thread_np(handle) != port ||
        pthread_threadid_np(handle, &handleId) != 0 || handleId != kernelId) {
        return pthread_t{};
    }
    return handle;
}

// The array task_threads() returned: its port references are dropped and the
// array freed on every path, exceptions included.
struct ThreadPortList {
    thread_act_array_t ports = nullptr;
    mach_msg_type_number_t count = 0;

    ThreadPortList() = default;
    ThreadPortList(const ThreadPortList&) = delete;
    ThreadPortList& operator=(const ThreadPortList&) = delete;
    ~ThreadPortList() {
        for (mach_msg_type_number_t i = 0; i < count; ++i) {
            mach_port_deallocate(mach_task_self(), ports[i]);
        }
        vm_deallocate(mach_task_self(), reinterpret_cast<vm_address_t>(ports),
                      sizeof(thread_act_t) * count);
    }
};

}  // namespace

int gettid() {
    std::uint64_t id = 0;
    pthread_threadid_np(pthread_t{}, &id);  // a null handle means the caller
    return lowBits(id);
}

ThreadId getThreadId() {
    const pthread_t self = pthread_self();
    return ThreadId{self, gettid(), pthread_mach_thread_np(self)};
}

namespace platform {

std::vector<ThreadId> listThreads() {
    mach_port_name_t task = 0;
    if (task_for_pid(mach_task_self(), getpid(), &task) != KERN_SUCCESS) {
        return {};
    }
    ThreadPortList list;
    const kern_return_t listed = task_threads(task, &list.ports, &list.count);
    mach_port_deallocate(mach_task_self(), task);
    if (listed != KERN_SUCCESS) {
        list.count = 0;
        list.ports = nullptr;
        return {};
    }

    std::vector<ThreadId> threads;
    threads.reserve(list.count);
    for (mach_msg_type_number_t i = 0; i < list.count; ++i) {
        const mach_port_t port = list.ports[i];
        std::uint64_t kernelId = 0;
        if (!platform::kernelThreadId(port, kernelId)) {
            // Ended since the listing: the name no longer denotes it.
            const pthread_t handle = pthread_from_mach_thread_np(port);
            threads.emplace_back(pthread_t{}, handle != pthread_t{} ? unixThreadIdOf(handle) : 0,
                                 port);
            continue;
        }
        threads.emplace_back(handleOfPort(port, kernelId), lowBits(kernelId), port);
    }
    return threads;
}

}  // namespace platform
}  // namespace Strand

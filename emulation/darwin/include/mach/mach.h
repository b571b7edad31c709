// The Mach interface of Darwin that the thread library's Apple and Unix layers
// call, declared as Darwin's <mach/mach.h> declares it and implemented on Linux
// by the Darwin emulation (see the emulation's README.md). Nothing else of Mach
// is here.
#ifndef DARWIN_EMULATION_MACH_H
#define DARWIN_EMULATION_MACH_H
#pragma GCC system_header

#include <stdint.h>

#ifdef __cplusplus
#define DARWIN_EMULATION_API extern "C"
#define DARWIN_EMULATION_NOTHROW noexcept
#else
#define DARWIN_EMULATION_API extern
#define DARWIN_EMULATION_NOTHROW
#endif

typedef int kern_return_t;
typedef unsigned int natural_t;
typedef int integer_t;
typedef natural_t mach_port_name_t;
typedef mach_port_name_t mach_port_t;
typedef mach_port_t ipc_space_t;
typedef mach_port_t task_t;
typedef mach_port_t task_inspect_t;
typedef mach_port_t vm_map_t;
typedef mach_port_t thread_t;
typedef mach_port_t thread_act_t;
typedef mach_port_t thread_inspect_t;
typedef mach_port_t semaphore_t;
typedef thread_act_t* thread_act_array_t;
typedef natural_t mach_msg_type_number_t;
typedef uintptr_t vm_address_t;
typedef uintptr_t vm_size_t;
typedef natural_t thread_flavor_t;
typedef integer_t* thread_info_t;
typedef int clock_res_t;

struct mach_timespec {
    unsigned int tv_sec;
    clock_res_t tv_nsec;
};
typedef struct mach_timespec mach_timespec_t;

#define MACH_PORT_NULL 0

#define KERN_SUCCESS 0
#define KERN_INVALID_ADDRESS 1
#define KERN_INVALID_ARGUMENT 4
#define KERN_FAILURE 5
#define KERN_RESOURCE_SHORTAGE 6
#define KERN_ABORTED 14
#define KERN_INVALID_NAME 15
#define KERN_INVALID_RIGHT 17
#define KERN_INVALID_VALUE 18
#define KERN_TERMINATED 37
#define KERN_OPERATION_TIMED_OUT 49
#define MACH_SEND_INVALID_DEST 0x10000003

#define SYNC_POLICY_FIFO 0

#define THREAD_IDENTIFIER_INFO 4
struct thread_identifier_info {
    uint64_t thread_id;
    uint64_t thread_handle;
    uint64_t dispatch_qaddr;
};
typedef struct thread_identifier_info thread_identifier_info_data_t;
typedef struct thread_identifier_info* thread_identifier_info_t;
#define THREAD_IDENTIFIER_INFO_COUNT \
    ((mach_msg_type_number_t)(sizeof(thread_identifier_info_data_t) / sizeof(natural_t)))

// This task's own port; the task holds it for its whole life.
DARWIN_EMULATION_API mach_port_t mach_task_self(void) DARWIN_EMULATION_NOTHROW;
// The calling thread's port, with one more user reference that the caller owns.
DARWIN_EMULATION_API mach_port_t mach_thread_self(void) DARWIN_EMULATION_NOTHROW;
DARWIN_EMULATION_API kern_return_t mach_port_deallocate(ipc_space_t task, mach_port_name_t name)
    DARWIN_EMULATION_NOTHROW;
DARWIN_EMULATION_API kern_return_t task_for_pid(mach_port_name_t target_tport, int pid,
                                                mach_port_name_t* t) DARWIN_EMULATION_NOTHROW;
DARWIN_EMULATION_API kern_return_t task_threads(task_inspect_t target_task,
                                                thread_act_array_t* act_list,
                                                mach_msg_type_number_t* act_listCnt)
    DARWIN_EMULATION_NOTHROW;
DARWIN_EMULATION_API kern_return_t thread_info(thread_inspect_t target_act, thread_flavor_t flavor,
                                               thread_info_t thread_info_out,
                                               mach_msg_type_number_t* thread_info_outCnt)
    DARWIN_EMULATION_NOTHROW;
DARWIN_EMULATION_API kern_return_t vm_deallocate(vm_map_t target_task, vm_address_t address,
                                                 vm_size_t size) DARWIN_EMULATION_NOTHROW;

DARWIN_EMULATION_API kern_return_t semaphore_create(task_t task, semaphore_t* semaphore,
                                                    int policy, int value)
    DARWIN_EMULATION_NOTHROW;
DARWIN_EMULATION_API kern_return_t semaphore_destroy(task_t task, semaphore_t semaphore)
    DARWIN_EMULATION_NOTHROW;
DARWIN_EMULATION_API kern_return_t semaphore_signal(semaphore_t semaphore) DARWIN_EMULATION_NOTHROW;
DARWIN_EMULATION_API kern_return_t semaphore_signal_all(semaphore_t semaphore)
    DARWIN_EMULATION_NOTHROW;
DARWIN_EMULATION_API kern_return_t semaphore_wait(semaphore_t semaphore) DARWIN_EMULATION_NOTHROW;
DARWIN_EMULATION_API kern_return_t semaphore_timedwait(semaphore_t semaphore,
                                                       mach_timespec_t wait_time)
    DARWIN_EMULATION_NOTHROW;

#endif

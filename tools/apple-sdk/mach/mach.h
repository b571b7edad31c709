// Declarations of the Mach types and calls the Apple platform layer uses, as
// the macOS SDK declares them. For syntax checks on other hosts only.
#pragma once

#include <stdint.h>

typedef unsigned int natural_t;
typedef int integer_t;
typedef int kern_return_t;
typedef natural_t mach_port_t;
typedef mach_port_t mach_port_name_t;
typedef mach_port_t task_t;
typedef mach_port_t thread_t;
typedef mach_port_t thread_act_t;
typedef mach_port_t thread_inspect_t;
typedef mach_port_t vm_map_t;
typedef mach_port_t ipc_space_t;
typedef thread_act_t* thread_act_array_t;
typedef natural_t mach_msg_type_number_t;
typedef uintptr_t vm_address_t;
typedef uintptr_t vm_size_t;
typedef natural_t thread_flavor_t;
typedef integer_t* thread_info_t;

#define KERN_SUCCESS 0
#define MACH_PORT_NULL ((mach_port_t)0)

#define THREAD_IDENTIFIER_INFO 4
struct thread_identifier_info {
    uint64_t thread_id;
    uint64_t thread_handle;
    uint64_t dispatch_qaddr;
};
typedef struct thread_identifier_info thread_identifier_info_data_t;
#define THREAD_IDENTIFIER_INFO_COUNT \
    ((mach_msg_type_number_t)(sizeof(thread_identifier_info_data_t) / sizeof(natural_t)))

#ifdef __cplusplus
extern "C" {
#endif

extern mach_port_t mach_task_self_;
#define mach_task_self() mach_task_self_

mach_port_t mach_thread_self(void);
kern_return_t task_for_pid(mach_port_name_t target_tport, int pid, mach_port_name_t* t);
kern_return_t task_threads(task_t target_task, thread_act_array_t* act_list,
                           mach_msg_type_number_t* act_listCnt);
kern_return_t thread_info(thread_inspect_t target_act, thread_flavor_t flavor,
                          thread_info_t thread_info_out,
                          mach_msg_type_number_t* thread_info_outCnt);
kern_return_t mach_port_deallocate(ipc_space_t task, mach_port_name_t name);
kern_return_t vm_deallocate(vm_map_t target_task, vm_address_t address, vm_size_t size);

#ifdef __cplusplus
}
#endif

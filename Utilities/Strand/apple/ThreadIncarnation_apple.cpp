// A thread's incarnation on macOS: the kernel's 64-bit thread id behind the
// Mach port of a ThreadId (element 3). The kernel never hands out a thread id
// twice while the system runs, and a port name that is reused names another
// thread, with another id.
#include <mach/mach.h>

#include <cstdint>

#include "Strand/Platform.h"

namespace Strand::platform {

std::uint64_t threadIncarnation(const ThreadId& id) {
    thread_identifier_info_data_t info{};
    mach_msg_type_number_t count = THREAD_IDENTIFIER_INFO_COUNT;
    const kern_return_t result = thread_info(
        std::get<2>(id), THREAD_IDENTIFIER_INFO, reinterpret_cast<thread_info_t>(&info), &count);
    if (result == KERN_SUCCESS && info.thread_id != kThreadEnded &&
        info.thread_id != kThreadUnknown) {
        return info.thread_id;
    }
    // A port that no longer names a thread of this task.
    return result == KERN_INVALID_ARGUMENT || result == MACH_SEND_INVALID_DEST ? kThreadEnded
                                                                                 : kThreadUnknown;
}

}  // namespace Strand::platform

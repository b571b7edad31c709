// The kernel's view of a thread port on macOS, shared by the Apple layer's
// sources. Internal to the library.
#pragma once

#include <mach/mach.h>

#include <cstdint>

namespace Strand::platform {

// The 64-bit id of the thread whose port is port, from the kernel
// (THREAD_IDENTIFIER_INFO); false if the name denotes no live thread. One Mach
// call; not signal-safe.
bool kernelThreadId(mach_port_t port, std::uint64_t& id);

}  // namespace Strand::platform

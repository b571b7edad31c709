// Backtraces with <execinfo.h>, which glibc and macOS both provide. On Linux the
// first backtrace() in a process loads the unwinder (libgcc_s) with dlopen,
// which allocates and takes the loader's lock: prepareBacktrace does that
// outside any signal handler.
#include <execinfo.h>

#include <cstdlib>

#include "Strand/Platform.h"

namespace Strand::platform {

void prepareBacktrace() {
    void* frame = nullptr;
    backtrace(&frame, 1);
}

int captureBacktrace(void** frames, int capacity) {
    if (frames == nullptr || capacity <= 0) {
        return 0;
    }
    return backtrace(frames, capacity);
}

std::shared_ptr<char*> describeFrames(void* const* frames, int count) {
    if (frames == nullptr || count <= 0) {
        return nullptr;
    }
    char** const block = backtrace_symbols(frames, count);
    if (block == nullptr) {
        return nullptr;
    }
    // If the owner cannot be allocated, shared_ptr calls the deleter before
    // passing the exception on, so the block is freed on that path too.
    return {block, [](char** symbols) { std::free(symbols); }};
}

}  // namespace Strand::platform

#include "Strand/ThreadId.h"

#include <unistd.h>

#include "Strand/Platform.h"
#include "StringUtils/HexAndFileName.h"

namespace Strand {

// getThreadId is defined by the platform layer (Platform.h).

std::vector<ThreadId> getThreadIds() { return getThreadIds(getpid()); }

std::vector<ThreadId> getThreadIds(int pid) {
    // Only the own process can be listed; a foreign pid is not even looked up.
    if (pid != getpid()) {
        return {};
    }
    return platform::listThreads();
}

pthread_t getPosixThreadId(const ThreadId& id) { return std::get<0>(id); }

int getUnixThreadId(const ThreadId& id) { return std::get<1>(id); }

unsigned int getMachThreadId(const ThreadId& id) { return std::get<2>(id); }

unsigned int getPrimaryThreadId() { return getPrimaryThreadId(getThreadId()); }

unsigned int getPrimaryThreadId(const ThreadId& id) { return std::get<2>(id); }

std::string getThreadIdString() { return getThreadIdString(getThreadId()); }

std::string getThreadIdString(const ThreadId& id) { return std::to_string(std::get<1>(id)); }

std::string getThreadIdHexString() { return getThreadIdHexString(getThreadId()); }

std::string getThreadIdHexString(const ThreadId& id) {
    return StringUtils::toHexString(std::get<1>(id));
}

}  // namespace Strand

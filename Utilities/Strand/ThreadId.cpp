#include "Strand/ThreadId.h"

#include <unistd.h>

#include "Strand/Platform.h"
#include "StringUtils/HexAndFileName.h"

namespace Strand {

namespace {

// The calling thread's triple, asked of the platform once per thread. Trivially
// destructible, so reading it needs no guard; forgotten in a fork child, whose
// only thread has an identity of its own.
struct CachedIdentity {
    ThreadId id{};
    bool valid = false;
};
constinit thread_local CachedIdentity tCached;

void forgetInForkChild() { tCached.valid = false; }

[[maybe_unused]] const bool gForkHandlerInstalled =
    pthread_atfork(nullptr, nullptr, &forgetInForkChild) == 0;

}  // namespace

ThreadId getThreadId() {
    if (!tCached.valid) [[unlikely]] {
        tCached.id = platform::queryCurrentThreadId();
        tCached.valid = true;
    }
    return tCached.id;
}

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

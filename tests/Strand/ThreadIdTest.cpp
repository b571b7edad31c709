#include "Strand/ThreadId.h"

#include <dirent.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "Strand/Platform.h"
#include "Strand/ThreadName.h"

namespace {

int kernelTid() { return static_cast<int>(syscall(SYS_gettid)); }

std::set<int> procTasks() {
    std::set<int> tids;
    DIR* directory = opendir("/proc/self/task");
    while (const dirent* entry = readdir(directory)) {
        if (entry->d_name[0] != '.') {
            tids.insert(std::atoi(entry->d_name));
        }
    }
    closedir(directory);
    return tids;
}

// Threads that park until released, so the process has a known set of threads.
class ParkedThreads {
public:
    ParkedThreads(int count, bool askIdentity) {
        for (int i = 0; i < count; ++i) {
            threads_.emplace_back([this, askIdentity] {
                std::unique_lock<std::mutex> lock(mutex_);
                ids_.push_back(askIdentity ? Strand::getThreadId()
                                           : Strand::ThreadId{pthread_t{}, kernelTid(), 0});
                ready_.notify_all();
                released_.wait(lock, [this] { return release_; });
            });
        }
        std::unique_lock<std::mutex> lock(mutex_);
        ready_.wait(lock, [this, count] { return ids_.size() == static_cast<std::size_t>(count); });
    }
    ~ParkedThreads() {
        {
            const std::lock_guard<std::mutex> guard(mutex_);
            release_ = true;
        }
        released_.notify_all();
        for (auto& thread : threads_) {
            thread.join();
        }
    }
    const std::vector<Strand::ThreadId>& ids() const { return ids_; }

private:
    std::mutex mutex_;
    std::condition_variable ready_;
    std::condition_variable released_;
    bool release_ = false;
    std::vector<Strand::ThreadId> ids_;
    std::vector<std::thread> threads_;
};

TEST(ThreadId, CallingThreadTriple) {
    const Strand::ThreadId id = Strand::getThreadId();
    EXPECT_TRUE(pthread_equal(Strand::getPosixThreadId(id), pthread_self()));
    EXPECT_EQ(Strand::getUnixThreadId(id), kernelTid());
    EXPECT_EQ(Strand::getMachThreadId(id), static_cast<unsigned int>(kernelTid()));
    EXPECT_EQ(Strand::getPrimaryThreadId(), Strand::getMachThreadId(id));
    EXPECT_EQ(Strand::getPrimaryThreadId(id), std::get<2>(id));
    EXPECT_EQ(Strand::getThreadId(), id);
    EXPECT_EQ(Strand::gettid(), kernelTid());
    EXPECT_EQ(Strand::getUnixThreadId(pthread_self()), kernelTid());
    EXPECT_EQ(Strand::getThreadIdString(), std::to_string(kernelTid()));
}

TEST(ThreadId, OtherThreadsHaveTheirOwnTriple) {
    ParkedThreads parked(4, true);
    std::set<int> tids{Strand::getUnixThreadId(Strand::getThreadId())};
    for (const auto& id : parked.ids()) {
        EXPECT_FALSE(pthread_equal(Strand::getPosixThreadId(id), pthread_self()));
        EXPECT_EQ(Strand::getUnixThreadId(Strand::getPosixThreadId(id)), std::get<1>(id));
        tids.insert(std::get<1>(id));
    }
    EXPECT_EQ(tids.size(), 5u);
}

TEST(ThreadId, ListingMatchesTheKernel) {
    ParkedThreads seen(3, true);
    ParkedThreads unseen(2, false);
    const std::vector<Strand::ThreadId> listed = Strand::getThreadIds();

    std::set<int> listedTids;
    for (const auto& id : listed) {
        listedTids.insert(std::get<1>(id));
        EXPECT_EQ(std::get<2>(id), static_cast<unsigned int>(std::get<1>(id)));
    }
    EXPECT_EQ(listedTids, procTasks());
    EXPECT_EQ(listedTids.size(), listed.size()) << "one entry per thread";

    const auto entryOf = [&](int tid) {
        return *std::find_if(listed.begin(), listed.end(),
                             [tid](const auto& id) { return std::get<1>(id) == tid; });
    };
    EXPECT_EQ(entryOf(kernelTid()), Strand::getThreadId());
    for (const auto& id : seen.ids()) {
        EXPECT_EQ(entryOf(std::get<1>(id)), id) << "a thread the library has seen keeps its handle";
    }
    for (const auto& id : unseen.ids()) {
        EXPECT_EQ(Strand::getPosixThreadId(entryOf(std::get<1>(id))), pthread_t{});
    }
}

TEST(ThreadId, ForeignProcessesAreNotListed) {
    EXPECT_FALSE(Strand::getThreadIds(getpid()).empty());
    for (const int pid : {getppid(), 1, 0, -1, INT_MAX}) {
        SCOPED_TRACE(pid);
        EXPECT_TRUE(Strand::getThreadIds(pid).empty());
    }
}

TEST(ThreadId, IdStrings) {
    struct Case {
        int id;
        const char* decimal;
        const char* hex;
    };
    // 2^32 + 5 and 2^32 - 1 arrive here already cut to their low 32 bits.
    const Case cases[] = {
        {1234, "1234", "0x4d2"},
        {5, "5", "0x5"},
        {-1, "-1", "0xffffffff"},
        {0, "0", "0x0"},
        {INT_MIN, "-2147483648", "0x80000000"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        const Strand::ThreadId id{pthread_self(), c.id, 77u};
        EXPECT_EQ(Strand::getThreadIdString(id), c.decimal);
        EXPECT_EQ(Strand::getThreadIdHexString(id), c.hex);
        EXPECT_EQ(Strand::getPrimaryThreadId(id), 77u);
    }
}

// Runs body in a forked child; the child's exit status is body's result.
int inForkedChild(int (*body)()) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(body());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 100;
}

TEST(ThreadId, ForkedChildSeesItsOwnTriple) {
    Strand::setThreadName("forking thread with a long name");
    const Strand::ThreadId parent = Strand::getThreadId();
    ParkedThreads others(2, true);  // must not appear in the child
    static Strand::ThreadId parentCopy;
    parentCopy = parent;
    const int result = inForkedChild([] {
        const Strand::ThreadId child = Strand::getThreadId();
        if (std::get<1>(child) != static_cast<int>(syscall(SYS_gettid))) return 1;
        if (std::get<1>(child) == std::get<1>(parentCopy)) return 2;
        if (Strand::getThreadIds() != std::vector<Strand::ThreadId>{child}) return 3;
        if (Strand::getThreadName() != "forking thread with a long name") return 4;
        return 0;
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(Strand::getThreadId(), parent);
}

}  // namespace

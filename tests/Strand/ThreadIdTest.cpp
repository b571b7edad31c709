#include "Strand/ThreadId.h"

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <set>
#include <vector>

#include "Strand/Platform.h"
#include "Strand/ThreadName.h"
#include "ThreadTestSupport.h"

namespace {

using StrandTest::ParkedThreads;

TEST(ThreadId, CallingThreadTriple) {
    const Strand::ThreadId id = Strand::getThreadId();
    EXPECT_TRUE(pthread_equal(Strand::getPosixThreadId(id), pthread_self()));
    EXPECT_EQ(Strand::getUnixThreadId(id), Strand::gettid());
    EXPECT_EQ(Strand::getUnixThreadId(pthread_self()), Strand::gettid());
    EXPECT_EQ(Strand::getPrimaryThreadId(), Strand::getMachThreadId(id));
    EXPECT_EQ(Strand::getPrimaryThreadId(id), std::get<2>(id));
    EXPECT_NE(std::get<2>(id), 0u);
    EXPECT_EQ(Strand::getThreadId(), id);
    EXPECT_EQ(Strand::getThreadIdString(), std::to_string(Strand::gettid()));
}

TEST(ThreadId, OtherThreadsHaveTheirOwnTriple) {
    ParkedThreads parked(4, true);
    std::set<int> tids{Strand::getUnixThreadId(Strand::getThreadId())};
    std::set<unsigned int> ports{Strand::getPrimaryThreadId()};
    for (const auto& id : parked.ids()) {
        EXPECT_FALSE(pthread_equal(Strand::getPosixThreadId(id), pthread_self()));
        EXPECT_EQ(Strand::getUnixThreadId(Strand::getPosixThreadId(id)), std::get<1>(id));
        tids.insert(std::get<1>(id));
        ports.insert(std::get<2>(id));
    }
    EXPECT_EQ(tids.size(), 5u);
    EXPECT_EQ(ports.size(), 5u);
}

TEST(ThreadId, ListingHoldsEveryThreadOnce) {
    ParkedThreads parked(3, true);
    const std::vector<Strand::ThreadId> listed = Strand::getThreadIds();
    std::set<int> listedTids;
    for (const auto& id : listed) {
        listedTids.insert(std::get<1>(id));
    }
    EXPECT_EQ(listedTids.size(), listed.size()) << "one entry per thread";
    EXPECT_NE(std::find(listed.begin(), listed.end(), Strand::getThreadId()), listed.end());
    for (const auto& id : parked.ids()) {
        EXPECT_NE(std::find(listed.begin(), listed.end(), id), listed.end());
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
        if (std::get<1>(child) != Strand::gettid()) return 1;
        if (std::get<1>(child) == std::get<1>(parentCopy)) return 2;
        if (Strand::getThreadIds() != std::vector<Strand::ThreadId>{child}) return 3;
        if (Strand::getThreadName() != "forking thread with a long name") return 4;
        return 0;
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(Strand::getThreadId(), parent);
}

}  // namespace

// Thread identity checked against what the Linux kernel reports.
#include <dirent.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <vector>

#include "Strand/ThreadId.h"
#include "ThreadTestSupport.h"

namespace {

int kernelTid() { return static_cast<int>(syscall(SYS_gettid)); }

std::set<int> procTasks() {
    std::set<int> tids;
    DIR* directory = opendir("/proc/self/task");
    while (const dirent* entry = readdir(directory)) {  // NOLINT(concurrency-mt-unsafe)
        if (entry->d_name[0] != '.') {
            tids.insert(std::atoi(entry->d_name));
        }
    }
    closedir(directory);
    return tids;
}

TEST(ThreadIdLinux, TripleIsHandleAndKernelTid) {
    const Strand::ThreadId id = Strand::getThreadId();
    EXPECT_EQ(Strand::getUnixThreadId(id), kernelTid());
    EXPECT_EQ(Strand::getMachThreadId(id), static_cast<unsigned int>(kernelTid()));
}

TEST(ThreadIdLinux, ListingMatchesProcTask) {
    StrandTest::ParkedThreads seen(3, true);
    StrandTest::ParkedThreads unseen(2, false);
    const std::vector<Strand::ThreadId> listed = Strand::getThreadIds();

    std::set<int> listedTids;
    for (const auto& id : listed) {
        listedTids.insert(std::get<1>(id));
        EXPECT_EQ(std::get<2>(id), static_cast<unsigned int>(std::get<1>(id)));
    }
    EXPECT_EQ(listedTids, procTasks());

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

}  // namespace

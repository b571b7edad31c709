// Thread identity and names checked against what the Linux kernel reports.
#include <dirent.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <cstdlib>

#include "TestSupport.h"

namespace {

std::set<int> procTasks() {
    std::set<int> tids;
    DIR* directory = opendir("/proc/self/task");
    while (const dirent* entry = readdir(directory)) {  // NOLINT(concurrency-mt-unsafe)
        if (entry->d_name[0] != '.') tids.insert(std::atoi(entry->d_name));
    }
    closedir(directory);
    return tids;
}

TEST(ThreadLinux, ListingMatchesProcTask) {
    const int tid = static_cast<int>(syscall(SYS_gettid));
    EXPECT_EQ(Strand::getThreadId(), Strand::ThreadId(pthread_self(), tid, tid));
    EXPECT_EQ(Strand::getThreadIdString(), std::to_string(tid));
    const ParkedThread seen[3], unseen[2] = {ParkedThread(false), ParkedThread(false)};
    const std::vector<Strand::ThreadId> listed = Strand::getThreadIds();
    std::map<int, Strand::ThreadId> byTid;
    for (const auto& id : listed) byTid[std::get<1>(id)] = id;
    std::set<int> listedTids;
    for (const auto& [key, id] : byTid) listedTids.insert(key);
    EXPECT_EQ(byTid.size(), listed.size()) << "one entry per thread";
    EXPECT_EQ(listedTids, procTasks());
    for (const auto& [key, id] : byTid) EXPECT_EQ(std::get<2>(id), static_cast<unsigned>(key));
    for (const auto& id : {Strand::getThreadId(), seen[0].id(), seen[1].id(), seen[2].id()}) {
        EXPECT_EQ(byTid[std::get<1>(id)], id) << "a thread the library has seen keeps its handle";
    }
    for (const auto& thread : unseen) EXPECT_EQ(std::get<0>(byTid[std::get<1>(thread.id())]), 0u);
}

TEST(ThreadLinux, KernelKeeps15BytesAndNamesSetByOtherCodeWin) {
    const auto names = onNewThread([] {
        Strand::setThreadName("a name longer than the kernel keeps");
        char kernelName[16] = {};
        prctl(PR_GET_NAME, kernelName, 0, 0, 0);
        prctl(PR_SET_NAME, "renamed", 0, 0, 0);
        std::vector<std::string> seen = {kernelName, Strand::getThreadName()};
        Strand::setThreadName("again a rather long name");
        return (seen.push_back(Strand::getThreadName()), seen);
    });
    EXPECT_EQ(names,
              (std::vector<std::string>{"a name longer t", "renamed", "again a rather long name"}));
}

}  // namespace

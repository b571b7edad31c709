// Thread identity and names checked against what the Linux kernel reports.
#include <dirent.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <cstdio>
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

// The kernel's name of the main thread is the process's name (ps, pgrep): the
// library keeps the main thread's name to itself.
TEST(ThreadLinux, NamingTheMainThreadLeavesTheProcessName) {
    EXPECT_EQ(inChildProcess(10, [] {  // the child's only thread is its main thread
        char before[16] = {}, after[16] = {};
        prctl(PR_GET_NAME, before, 0, 0, 0);
        Strand::setThreadName("main: event loop");
        prctl(PR_GET_NAME, after, 0, 0, 0);
        const Strand::ThreadId main = Strand::getThreadId();
        return std::string(after) == before && Strand::getThreadName() == "main: event loop" &&
               onNewThread([main] { return Strand::getThreadName(main); }) == "main: event loop";
    }), "ok");
}

// Asks the kernel to hand out tid next (best effort: needs privileges, and
// other processes may take it first).
void preferNextTid(int tid) {
    if (FILE* file = std::fopen("/proc/sys/kernel/ns_last_pid", "w")) {
        std::fprintf(file, "%d", tid - 1);
        std::fclose(file);
    }
}

pthread_key_t gLateKey;

// A thread that names itself in a key destructor (after the library's own
// clean-up), ends, and then a new thread that inherits the same 15-byte kernel
// name gets the same TID: it must not read back the ended thread's full name.
TEST(ThreadLinux, AnEndedThreadsNameIsNeverReadBackForItsTid) {
    EXPECT_EQ(inChildProcess(120, [] {
        prctl(PR_SET_NAME, "worker-pool-abc", 0, 0, 0);  // what new threads inherit
        pthread_key_create(&gLateKey, [](void*) {
            Strand::setThreadName("worker-pool-abc: job 7 of the nightly batch");
        });
        const int endedTid = onNewThread([] {
            pthread_setspecific(gLateKey, &gLateKey);
            return std::get<1>(Strand::getThreadId());
        });
        for (int attempt = 0; attempt < 200000; ++attempt) {
            preferNextTid(endedTid);
            const auto [tid, name] = onNewThread([] {
                return std::make_pair(Strand::gettid(), Strand::getThreadName());
            });
            if (tid == endedTid) {
                return name == "worker-pool-abc";
            }
        }
        return false;
    }), "ok");
}

}  // namespace

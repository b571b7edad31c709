// Thread identity and names checked against what the Linux kernel reports.
#include <linux/futex.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <cstdio>
#include <filesystem>
#include <map>

#include "Strand/linux/ThreadRegistry.h"
#include "TestSupport.h"

namespace {

std::set<int> procTasks() {
    std::set<int> tids;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        tids.insert(std::stoi(task.path().filename()));
    }
    return tids;
}

TEST(ThreadLinux, ListingMatchesProcTask) {
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

// The main thread's kernel name is the process's (ps, pgrep): the library keeps it.
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

// Asks the kernel to hand out tid next (best effort: needs privileges).
void preferNextTid(int tid) {
    if (FILE* file = std::fopen("/proc/sys/kernel/ns_last_pid", "w")) {
        std::fprintf(file, "%d", tid - 1);
        std::fclose(file);
    }
}

pthread_key_t gLateKey;

// An empty robust-mutex list of its own, as other runtimes have: the kernel marks none of libc's.
void replaceRobustList() {
    thread_local robust_list_head head{};
    head.list.next = &head.list;
    syscall(SYS_set_robust_list, &head, sizeof head);
}

// A TID's new holder with its ended holder's 15-byte kernel name gets neither name nor handle.
TEST(ThreadLinux, AnEndedThreadsNameIsNeverReadBackForItsTid) {
    const struct {
        const char* name;
        void (*beforeEnd)();  // what the first holder of the TID does before it ends
    } cases[] = {
        {"renames itself in a key destructor, after the library's clean-up",
         [] { pthread_setspecific(gLateKey, &gLateKey); }},
        {"replaced its robust-mutex list", &replaceRobustList},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(inChildProcess(120, [&c] {
            prctl(PR_SET_NAME, "worker-pool-abc", 0, 0, 0);  // what new threads inherit
            pthread_key_create(&gLateKey, [](void*) {
                Strand::setThreadName("worker-pool-abc: job 7 of the nightly batch");
            });
            const auto started = std::chrono::steady_clock::now();
            const int endedTid = onNewThread([&c] {
                Strand::setThreadName("worker-pool-abc: job 7 of the nightly batch");
                c.beforeEnd();
                return std::get<1>(Strand::getThreadId());
            });
            // Reused naturally, a TID comes back long after its holder's start tick; forced
            // back at once, it first lets that tick pass.
            while (std::chrono::steady_clock::now() - started < std::chrono::milliseconds(25)) {
                std::this_thread::yield();
            }
            for (int attempt = 0; attempt < 200000; ++attempt) {
                preferNextTid(endedTid);
                const ParkedThread next(false);  // never asks the library anything itself
                if (std::get<1>(next.id()) != endedTid) continue;
                const Strand::ThreadId byTid{0, endedTid, static_cast<unsigned>(endedTid)};
                pthread_t listedHandle = 1;
                for (const auto& id : Strand::getThreadIds()) {
                    if (std::get<1>(id) == endedTid) listedHandle = std::get<0>(id);
                }
                return Strand::getThreadName(byTid) == "worker-pool-abc" && listedHandle == 0;
            }
            return false;
        }), "ok");
    }
}

// A handler asking for the identity during registration must not leave a second record.
TEST(ThreadLinux, IdentityAskedFromAHandlerDuringRegistrationKeepsOneRecord) {
    EXPECT_EQ(inChildProcess(120, [] {
        handleSigusr2([](int) { Strand::getThreadId(); });
        int misread = 0;
        for (int round = 0; round < 500; ++round) {
            std::atomic<int> tid{0};
            std::atomic<bool> named{false}, checked{false};
            std::thread fresh([&] {
                tid.store(Strand::gettid());
                Strand::setThreadName("a fresh thread with a long name");
                named.store(true);
                while (!checked.load()) std::this_thread::yield();
            });
            while (tid.load() == 0) std::this_thread::yield();
            while (!named.load()) syscall(SYS_tgkill, getpid(), tid.load(), SIGUSR2);
            const Strand::ThreadId id{0, tid.load(), static_cast<unsigned>(tid.load())};
            misread += Strand::getThreadName(id) != "a fresh thread with a long name";
            checked.store(true);
            fresh.join();
        }
        return misread == 0;
    }), "ok");
}

// The test above's window made certain: a handler registers the thread inside its first call.
TEST(ThreadLinux, RegisteringAThreadAHandlerRegisteredKeepsItsRecord) {
    EXPECT_TRUE(onNewThread([] {
        const auto previous = handleSigusr2([](int) { Strand::getThreadId(); });
        raise(SIGUSR2);
        sigaction(SIGUSR2, &previous, nullptr);
        Strand::linux_layer::ThreadRecord* const handlers = Strand::linux_layer::currentRecord();
        Strand::linux_layer::registerCurrentThread();  // the interrupted first call goes on
        return handlers != nullptr && Strand::linux_layer::currentRecord() == handlers;
    }));
}

// Records are reclaimed also when the kernel never marks the robust mutexes.
TEST(ThreadLinux, RecordsOfEndedThreadsAreReclaimedWithoutRobustLists) {
    EXPECT_EQ(inChildProcess(120, [] {
        for (int i = 0; i < 3000; ++i) {
            std::thread([] {
                replaceRobustList();
                Strand::setThreadName("short-lived");
            }).join();
        }
        return Strand::linux_layer::recordCountForTesting() <= 256;
    }), "ok");
}

}  // namespace

// Thread waves, churn, listeners and forks; memory must end where it was after the first wave.
#include <fstream>

#include "TestSupport.h"

namespace {

long residentKilobytes() {
    std::ifstream statm("/proc/self/statm");
    long pages = 0, resident = 0;
    statm >> pages >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

std::string waveName(int round, int index) {
    return "soak wave " + std::to_string(round) + ", thread " + std::to_string(index);
}

// 2300 live threads, each named inside a scope; returns how many are listed wrongly.
int runWave(int round) {
    const LiveThreads wave(2300, [round](int index) {
        return std::make_shared<Strand::ScopedThreadName>(waveName(round, index), true);
    });
    const auto listed = Strand::getThreadIds();
    const std::set<Strand::ThreadId> all(listed.begin(), listed.end());
    int faults = 0;
    for (std::size_t i = 0; i < wave.ids.size(); i += 7) {
        faults += all.count(wave.ids[i]) == 0;
        faults += Strand::getThreadName(wave.ids[i]) != waveName(round, static_cast<int>(i));
    }
    return faults;
}

#ifdef STRAND_TEST_UNDER_ASAN
constexpr bool kForksAreSafe = false;  // a fork child can inherit the busy allocator's lock
#else
constexpr bool kForksAreSafe = true;
#endif

TEST(Soak, ThreadChurnForksAndListeners) {
    const char* const configured = std::getenv("STRAND_SOAK_SECONDS");
    const auto deadline = std::chrono::steady_clock::now() +
                          std::chrono::seconds(configured ? std::atoi(configured) : 60);
    std::atomic<bool> stop{false};
    std::atomic<long> failedForks{0}, forks{0}, churned{0};
    std::vector<std::thread> helpers;
    helpers.emplace_back([&] {  // listeners come and go
        while (!stop.load()) {
            const auto listener = std::make_shared<Listener>([] {});
            Strand::ScopedThreadName::registerCallback(listener);
            Strand::ScopedThreadName::unRegisterCallback(listener);
        }
    });
    helpers.emplace_back([&] {  // forks while the others name, register and list
        while (kForksAreSafe && !stop.load()) {
            const std::string result = inChildProcess(20, [] {
                Strand::ScopedThreadName::registerCallback(std::make_shared<Listener>([] {}));
                const Strand::ScopedThreadName scope("forked child of the soak test", true);
                const auto listed = Strand::getThreadIds();
                return Strand::getThreadName() == "forked child of the soak test" &&
                       std::count(listed.begin(), listed.end(), Strand::getThreadId()) == 1;
            });
            failedForks += result != "ok";
            ++forks;
        }
    });
    helpers.emplace_back([&] {  // short-lived threads, some never joined
        for (long i = 0; !stop.load(); ++i) {
            std::thread worker([i] {
                Strand::setThreadName("short-lived worker " + std::to_string(i));
                const Strand::ScopedThreadName scope("short-lived scope, named at length", true);
            });
            i % 4 == 0 ? worker.detach() : worker.join();
            ++churned;
        }
    });

    int faults = runWave(0);
    const long baseline = residentKilobytes();
    int rounds = 1;
    for (; std::chrono::steady_clock::now() < deadline; ++rounds) faults += runWave(rounds);
    stop.store(true);
    for (auto& helper : helpers) helper.join();
    const long end = residentKilobytes();

    EXPECT_EQ(faults, 0) << "threads listed without handles or with names not their own";
    EXPECT_EQ(failedForks.load(), 0) << "of " << forks.load() << " forks";
#if defined(STRAND_TEST_UNDER_ASAN) || defined(STRAND_TEST_UNDER_TSAN)
    std::cout << "resident memory not checked: a sanitizer's own allocations dominate it\n";
    return;
#endif
    EXPECT_LE(end, baseline + std::max(baseline / 4, 32L * 1024))
        << "resident kB after the first wave " << baseline << ", at the end " << end << " ("
        << rounds << " waves, " << churned.load() << " short-lived threads)";
}

}  // namespace

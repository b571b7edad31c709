// Thread identity and names through libStrand, as a client calls them, each
// beside the C library's nearest call. The program runs its benchmarks on a
// thread of its own: the main thread's name is kept by the library alone, so
// naming it would skip the system call that the baseline makes.
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include <random>
#include <thread>

#include "RandomUtils/RandomUtils.h"
#include "Strand/ThreadId.h"
#include "Strand/ThreadName.h"
#include "StringUtils/BaselineRatio.h"

namespace {

void BM_RawGettidSyscall(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(syscall(SYS_gettid));
    }
}
BENCHMARK(BM_RawGettidSyscall);

void BM_GetThreadId_ours(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(Strand::getThreadId());
    }
}
BENCHMARK(BM_GetThreadId_ours)->Name("GetThreadId/ours");

// pthread_self is a const function, which a compiler would call once for the
// whole loop; through a pointer it is called every time, like ours through
// the library's PLT.
void BM_GetThreadId_baseline(benchmark::State& state) {
    pthread_t (*self)() = &pthread_self;
    for (auto _ : state) {
        benchmark::DoNotOptimize(self);
        benchmark::DoNotOptimize(self());
    }
}
BENCHMARK(BM_GetThreadId_baseline)->Name("GetThreadId/baseline");

// A name of the 15 bytes the kernel keeps, so both sides do the same work.
constexpr char kShortName[] = "worker: io 1234";

void BM_SetAndGetOwnName_ours(benchmark::State& state) {
    const std::string name = kShortName;
    for (auto _ : state) {
        Strand::setThreadName(name);
        benchmark::DoNotOptimize(Strand::getThreadName());
    }
}
BENCHMARK(BM_SetAndGetOwnName_ours)->Name("SetAndGetOwnName/ours");

void BM_SetAndGetOwnName_baseline(benchmark::State& state) {
    char buffer[16];
    for (auto _ : state) {
        pthread_setname_np(pthread_self(), kShortName);
        pthread_getname_np(pthread_self(), buffer, sizeof buffer);
        benchmark::DoNotOptimize(std::string(buffer));
    }
}
BENCHMARK(BM_SetAndGetOwnName_baseline)->Name("SetAndGetOwnName/baseline");

void BM_GetThreadIdString(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(Strand::getThreadIdString());
    }
}
BENCHMARK(BM_GetThreadIdString);

// The full 63 bytes the library keeps beyond the kernel's 15.
void BM_SetAndGetLongName(benchmark::State& state) {
    const std::string name = "benchmark thread with a long name";
    for (auto _ : state) {
        Strand::setThreadName(name);
        benchmark::DoNotOptimize(Strand::getThreadName());
    }
}
BENCHMARK(BM_SetAndGetLongName);

void BM_GetThreadIds(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(Strand::getThreadIds());
    }
}
BENCHMARK(BM_GetThreadIds);

// Baseline for quill::rand: a bare engine and distribution, no lock or hook.
void BM_BareMt19937Draw(benchmark::State& state) {
    std::mt19937 engine(42);
    for (auto _ : state) {
        std::uniform_int_distribution<int> distribution(0, 999);
        benchmark::DoNotOptimize(distribution(engine));
    }
}
BENCHMARK(BM_BareMt19937Draw);

void BM_QuillRand(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(quill::rand(0, 999, false));
    }
}
BENCHMARK(BM_QuillRand);

}  // namespace

int main(int argc, char** argv) {
    int result = 0;
    std::thread([&] { result = runWithBaselineRatios(argc, argv); }).join();
    return result;
}

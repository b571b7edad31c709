// Thread identity and names, with the raw system call as the baseline that the
// per-thread cache is measured against.
#include <sys/syscall.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include <random>

#include "RandomUtils/RandomUtils.h"
#include "Strand/ThreadId.h"
#include "Strand/ThreadName.h"

namespace {

void BM_RawGettidSyscall(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(syscall(SYS_gettid));
    }
}
BENCHMARK(BM_RawGettidSyscall);

void BM_GetThreadId(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(Strand::getThreadId());
    }
}
BENCHMARK(BM_GetThreadId);

void BM_GetThreadIdString(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(Strand::getThreadIdString());
    }
}
BENCHMARK(BM_GetThreadIdString);

void BM_SetAndGetThreadName(benchmark::State& state) {
    for (auto _ : state) {
        Strand::setThreadName("benchmark thread with a long name");
        benchmark::DoNotOptimize(Strand::getThreadName());
    }
}
BENCHMARK(BM_SetAndGetThreadName);

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

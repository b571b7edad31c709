// Latency of executeOnThread and getStackTrace against a thread idle in a
// condition-variable wait, each call timed on its own (median and p99), beside
// same-run baselines measured in the same loop, call for call:
//   bare      pthread_kill with SIGUSR2 (the library owns SIGUSR1), a handler
//             that raises an atomic flag, the caller spinning on it;
//   condvar   a request and an answer through a mutex and condition variable;
//   bare+bt   the bare round trip with one backtrace() in the handler and one
//             backtrace_symbols() in the caller.
// Reported as counters in microseconds, with the ratios of the medians.
#include <execinfo.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <vector>

#include "Strand/Strand.h"

namespace {

using Clock = std::chrono::steady_clock;

// A thread blocked in a wait that also answers condvar requests.
class IdleThread {
public:
    IdleThread() : thread_([this] { loop(); }) {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [this] { return std::get<1>(id_) != 0; });
    }
    ~IdleThread() {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            stop_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }
    Strand::ThreadId id() const { return id_; }

    void condvarRoundTrip() {
        std::unique_lock<std::mutex> lock(mutex_);
        requested_ = true;
        changed_.notify_all();
        answered_.wait(lock, [this] { return !requested_; });
    }

private:
    void loop() {
        std::unique_lock<std::mutex> lock(mutex_);
        id_ = Strand::getThreadId();
        changed_.notify_all();
        for (;;) {
            changed_.wait(lock, [this] { return stop_ || requested_; });
            if (stop_) {
                return;
            }
            requested_ = false;
            answered_.notify_all();
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::condition_variable answered_;
    bool requested_ = false;
    bool stop_ = false;
    Strand::ThreadId id_{};
    std::thread thread_;
};

std::atomic<bool> gBareRaised{false};
std::atomic<bool> gBareRecords{false};
void* gBareFrames[100];
std::atomic<int> gBareCount{0};

void bareHandler(int) {
    if (gBareRecords.load(std::memory_order_relaxed)) {
        gBareCount.store(backtrace(gBareFrames, 100), std::memory_order_relaxed);
    }
    gBareRaised.store(true, std::memory_order_release);
}

void installBareHandler() {
    struct sigaction action = {};
    action.sa_handler = &bareHandler;
    sigemptyset(&action.sa_mask);
    sigaction(SIGUSR2, &action, nullptr);
    void* frame = nullptr;
    backtrace(&frame, 1);
}

void bareRoundTrip(const Strand::ThreadId& target, bool withBacktrace) {
    gBareRecords.store(withBacktrace, std::memory_order_relaxed);
    gBareRaised.store(false, std::memory_order_relaxed);
    pthread_kill(Strand::getPosixThreadId(target), SIGUSR2);
    while (!gBareRaised.load(std::memory_order_acquire)) {
    }
    if (withBacktrace) {
        char** symbols = backtrace_symbols(gBareFrames, gBareCount.load());
        benchmark::DoNotOptimize(symbols);
        std::free(symbols);
    }
}

// Times fn once, in microseconds.
template <typename Fn>
double timed(Fn&& fn) {
    const auto start = Clock::now();
    fn();
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

struct Latencies {
    std::vector<double> samples;
    double at(double quantile) {
        std::sort(samples.begin(), samples.end());
        return samples[static_cast<std::size_t>(quantile *
                                                static_cast<double>(samples.size() - 1))];
    }
};

void report(benchmark::State& state, const char* name, Latencies& latencies) {
    state.counters[std::string(name) + "_med_us"] = latencies.at(0.5);
    state.counters[std::string(name) + "_p99_us"] = latencies.at(0.99);
}

void BM_ExecuteOnThread(benchmark::State& state) {
    installBareHandler();
    IdleThread idle;
    const Strand::ThreadId target = idle.id();
    Strand::executeOnThread(target, [] {});  // installs the library's handler
    Latencies subject, bare, condvar;
    for (auto _ : state) {
        bare.samples.push_back(timed([&] { bareRoundTrip(target, false); }));
        condvar.samples.push_back(timed([&] { idle.condvarRoundTrip(); }));
        const double us = timed([&] { Strand::executeOnThread(target, [] {}); });
        subject.samples.push_back(us);
        state.SetIterationTime(us / 1e6);
    }
    report(state, "exec", subject);
    report(state, "bare", bare);
    report(state, "condvar", condvar);
    state.counters["exec/bare"] = subject.at(0.5) / bare.at(0.5);
    state.counters["exec/condvar"] = subject.at(0.5) / condvar.at(0.5);
}
BENCHMARK(BM_ExecuteOnThread)->UseManualTime()->Iterations(20000)->Unit(benchmark::kMicrosecond);

void BM_GetStackTrace(benchmark::State& state) {
    installBareHandler();
    IdleThread idle;
    const Strand::ThreadId target = idle.id();
    benchmark::DoNotOptimize(Strand::getStackTrace({}, target));
    Latencies subject, bareTrace;
    for (auto _ : state) {
        bareTrace.samples.push_back(timed([&] { bareRoundTrip(target, true); }));
        const double us =
            timed([&] { benchmark::DoNotOptimize(Strand::getStackTrace({}, target)); });
        subject.samples.push_back(us);
        state.SetIterationTime(us / 1e6);
    }
    report(state, "trace", subject);
    report(state, "bare+bt", bareTrace);
    state.counters["trace/bare+bt"] = subject.at(0.5) / bareTrace.at(0.5);
}
BENCHMARK(BM_GetStackTrace)->UseManualTime()->Iterations(5000)->Unit(benchmark::kMicrosecond);

}  // namespace

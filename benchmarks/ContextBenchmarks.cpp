// Costs of the thread context and scoped thread names. Every measurement has a
// baseline in the same run (BM_Baseline_*), so results read as ratios:
//   location::current          vs one small make_shared
//   location::to_string        vs the stream operator into an ostringstream
//   context_store::addEntry    vs a mutex-guarded vector, 1 and 2 threads
//   ScopedThreadName(location) vs naming the thread and naming it back
//   createExternalInputHint    vs one draw of quill::rand
#include <benchmark/benchmark.h>

#include <Strand/Strand.h>

#include <mutex>
#include <sstream>
#include <vector>

#include "RandomUtils/RandomUtils.h"

#define HERE quill::source::location::current(__FILE__, __LINE__, __func__)

namespace {

using quill::external_input::context_store;
using quill::external_input::hint;
using quill::external_input::scoped_hint;
using quill::source::location;

const location kClientConnect{"/home/build/src/net/Client.cpp",
                              "connect",
                              std::make_shared<hint>("hint042017", "click"),
                              {},
                              120};

void BM_Baseline_MakeSharedString(benchmark::State& state) {
    for (auto _ : state) {
        auto value = std::make_shared<std::string>("click");
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(BM_Baseline_MakeSharedString);

void BM_LocationCurrent_NoContext(benchmark::State& state) {
    hint::clearExternalInputHint();
    for (auto _ : state) {
        auto loc = HERE;
        benchmark::DoNotOptimize(loc);
    }
}
BENCHMARK(BM_LocationCurrent_NoContext);

void BM_LocationCurrent_WithHint(benchmark::State& state) {
    const scoped_hint click("hint042017", "click");
    for (auto _ : state) {
        auto loc = HERE;
        benchmark::DoNotOptimize(loc);
    }
}
BENCHMARK(BM_LocationCurrent_WithHint);

void BM_Baseline_OstringstreamLocation(benchmark::State& state) {
    for (auto _ : state) {
        std::ostringstream os;
        os << kClientConnect;
        auto text = os.str();
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_Baseline_OstringstreamLocation);

void BM_LocationToString(benchmark::State& state) {
    for (auto _ : state) {
        auto text = kClientConnect.to_string();
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_LocationToString);

// Adds go to fresh stores, 100 to each, split evenly among the threads, so every
// add takes the filling path; the stores are made before the timed loop.
constexpr int kAddsPerThread = 100000;
const std::string kEntryText = "request sent";

struct LockedVector {
    LockedVector() { entries.reserve(100); }
    std::mutex mutex;
    std::vector<context_store::entry> entries;
};

template <typename Store>
std::vector<std::shared_ptr<Store>> gStores;

template <typename Store, typename Add>
void addToFreshStores(benchmark::State& state, Add add) {
    const int perStore = 100 / state.threads();
    if (state.thread_index() == 0) {
        gStores<Store>.clear();
        for (int i = 0; i < kAddsPerThread / perStore; ++i) {
            gStores<Store>.push_back(std::make_shared<Store>());
        }
    }
    int added = 0;
    for (auto _ : state) {
        add(*gStores<Store>[static_cast<std::size_t>(added / perStore)]);
        ++added;
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_Baseline_LockedVectorAdd(benchmark::State& state) {
    addToFreshStores<LockedVector>(state, [](LockedVector& store) {
        using std::chrono::duration_cast;
        const long now = duration_cast<std::chrono::milliseconds>(
                             std::chrono::system_clock::now().time_since_epoch())
                             .count();
        const std::lock_guard<std::mutex> lock(store.mutex);
        store.entries.emplace_back(false, now, kEntryText);
    });
}
BENCHMARK(BM_Baseline_LockedVectorAdd)
    ->Iterations(kAddsPerThread)
    ->Threads(1)
    ->Threads(2)
    ->UseRealTime();

void BM_ContextStoreAddEntry(benchmark::State& state) {
    addToFreshStores<context_store>(state,
                                    [](context_store& store) { store.addEntry(kEntryText); });
}
BENCHMARK(BM_ContextStoreAddEntry)
    ->Iterations(kAddsPerThread)
    ->Threads(1)
    ->Threads(2)
    ->UseRealTime();

void BM_Baseline_SetThreadNameTwice(benchmark::State& state) {
    for (auto _ : state) {
        Strand::setThreadName("worker:Client.cpp:120:connect");
        Strand::setThreadName("bench");
    }
}
BENCHMARK(BM_Baseline_SetThreadNameTwice);

void BM_ScopedThreadNameLocation(benchmark::State& state) {
    const auto store = std::make_shared<context_store>();
    location handedOver = kClientConnect;
    handedOver.contextStore = store;
    Strand::setThreadName("bench");
    for (auto _ : state) {
        const Strand::ScopedThreadName scope(handedOver);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_ScopedThreadNameLocation);

void BM_Baseline_RandDraw(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(quill::rand(0, 999, false));
    }
}
BENCHMARK(BM_Baseline_RandDraw);

void BM_CreateExternalInputHint(benchmark::State& state) {
    for (auto _ : state) {
        const auto click = hint::createExternalInputHint("click");
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_CreateExternalInputHint);

}  // namespace

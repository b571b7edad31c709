// Takes stack traces for a while of threads that are busy allocating, locking,
// waiting, sleeping, ending and being replaced. Run as its own ctest test; its
// length in seconds comes from STRAND_TORTURE_SECONDS (default 12).
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <future>
#include <iostream>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "ParkedThread.h"
#include "Strand/StackTrace.h"

// Named, not anonymous: the traced functions below take these types and must
// keep external linkage to be exported.
namespace torture {

constexpr int kWorkers = 16;

// One thread at a time waits here, in a known function, until the sampler has
// traced it and sent it on.
struct Gate {
    std::mutex mutex;
    std::condition_variable changed;
    std::optional<Strand::ThreadId> occupant;
    bool closed = false;
};

struct Shared {
    std::atomic<bool> stop{false};
    std::mutex locks[4];
    std::mutex waitMutex;
    std::condition_variable waitCondition;
    Gate gate;
};

STRAND_TEST_TRACEABLE void tortureHeldAtGate(Gate& gate) {
    std::unique_lock<std::mutex> lock(gate.mutex);
    if (gate.occupant || gate.closed) {
        return;
    }
    const Strand::ThreadId self = Strand::getThreadId();
    gate.occupant = self;
    gate.changed.wait(lock, [&] { return gate.occupant != self || gate.closed; });
}

void workerBody(Shared& shared, unsigned seed) {
    std::mt19937 random(seed);
    const int iterations = 20 + static_cast<int>(random() % 200);
    for (int i = 0; i < iterations && !shared.stop; ++i) {
        switch (random() % 5) {
            case 0: {
                std::vector<std::string> garbage(1 + random() % 32,
                                                 std::string(random() % 512, 'x'));
                break;
            }
            case 1: {
                const std::lock_guard<std::mutex> lock(shared.locks[random() % 4]);
                std::this_thread::yield();
                break;
            }
            case 2: {
                std::unique_lock<std::mutex> lock(shared.waitMutex);
                shared.waitCondition.wait_for(lock, std::chrono::microseconds(500));
                shared.waitCondition.notify_one();
                break;
            }
            case 3:
                std::this_thread::sleep_for(std::chrono::microseconds(200));
                break;
            default:
                tortureHeldAtGate(shared.gate);
        }
    }
}

struct SamplerReport {
    int gateTraces = 0;
    int traces = 0;
    std::vector<std::string> failures;
};

// The threads the sampler may pick from besides the gate's occupant.
struct Population {
    std::mutex mutex;
    std::vector<Strand::ThreadId> live;
    std::deque<Strand::ThreadId> ended;
};

STRAND_TEST_TRACEABLE void tortureSamplerLoop(Shared& shared, Population& population,
                                              SamplerReport& report) {
    std::mt19937 random(std::random_device{}());
    const Strand::ThreadId self = Strand::getThreadId();
    const auto check = [&](const Strand::ThreadId& thread, const std::string& trace) {
        if (thread != self && trace.find("tortureSamplerLoop") != std::string::npos) {
            report.failures.push_back("the sampler's frames in another thread's trace:\n" + trace);
        }
        report.traces += trace.empty() ? 0 : 1;
    };
    while (!shared.stop) {
        Gate& gate = shared.gate;
        std::optional<Strand::ThreadId> held;
        {
            const std::lock_guard<std::mutex> lock(gate.mutex);
            held = gate.occupant;
        }
        if (held) {
            const std::string trace = Strand::getStackTrace({}, *held);
            check(*held, trace);
            if (!trace.empty() && trace.find("tortureHeldAtGate") == std::string::npos) {
                report.failures.push_back("a thread held at the gate not named:\n" + trace);
            }
            report.gateTraces += trace.empty() ? 0 : 1;
            const std::lock_guard<std::mutex> lock(gate.mutex);
            gate.occupant.reset();
            gate.changed.notify_all();
        }
        std::vector<Strand::ThreadId> candidates = Strand::getThreadIds();
        {
            const std::lock_guard<std::mutex> lock(population.mutex);
            candidates.insert(candidates.end(), population.live.begin(), population.live.end());
            candidates.insert(candidates.end(), population.ended.begin(), population.ended.end());
        }
        const Strand::ThreadId& picked = candidates[random() % candidates.size()];
        check(picked, Strand::getStackTrace({}, picked));
    }
}

int tortureSeconds() {
    const char* text = std::getenv("STRAND_TORTURE_SECONDS");
    const int seconds = text != nullptr ? std::atoi(text) : 0;
    return seconds > 0 ? seconds : 12;
}

// Keeps kWorkers workers running, replacing each one that ends.
class Workers {
public:
    Workers(Shared& shared, Population& population) : shared_(shared), population_(population) {
        for (int slot = 0; slot < kWorkers; ++slot) {
            launch(slot);
        }
    }
    ~Workers() {
        for (std::thread& thread : threads_) {
            thread.join();
        }
    }

    void replaceEndedUntil(std::chrono::steady_clock::time_point deadline) {
        while (std::chrono::steady_clock::now() < deadline) {
            std::vector<int> ended;
            {
                std::unique_lock<std::mutex> lock(mutex_);
                exited_.wait_until(lock, deadline, [this] { return !endedSlots_.empty(); });
                ended.swap(endedSlots_);
            }
            for (const int slot : ended) {
                threads_[slot].join();
                launch(slot);
            }
        }
    }

private:
    void launch(int slot) {
        std::promise<Strand::ThreadId> started;
        std::future<Strand::ThreadId> id = started.get_future();
        const auto body = [this, slot](unsigned seed, std::promise<Strand::ThreadId> running) {
            running.set_value(Strand::getThreadId());
            workerBody(shared_, seed);
            const std::lock_guard<std::mutex> lock(mutex_);
            endedSlots_.push_back(slot);
            exited_.notify_all();
        };
        threads_[slot] = std::thread(body, nextSeed_++, std::move(started));
        const std::lock_guard<std::mutex> lock(population_.mutex);
        if (std::get<1>(ids_[slot]) != 0) {
            population_.ended.push_back(ids_[slot]);
            if (population_.ended.size() > kWorkers) {
                population_.ended.pop_front();
            }
        }
        ids_[slot] = id.get();
        population_.live.assign(ids_.begin(), ids_.end());
    }

    Shared& shared_;
    Population& population_;
    std::mutex mutex_;
    std::condition_variable exited_;
    std::vector<int> endedSlots_;
    std::vector<std::thread> threads_ = std::vector<std::thread>(kWorkers);
    std::vector<Strand::ThreadId> ids_ = std::vector<Strand::ThreadId>(kWorkers);
    unsigned nextSeed_ = 1;
};

TEST(Torture, TracesOfBusyThreadsThatComeAndGo) {
    Shared shared;
    Population population;
    SamplerReport report;
    {
        Workers workers(shared, population);
        std::thread sampler(tortureSamplerLoop, std::ref(shared), std::ref(population),
                            std::ref(report));
        workers.replaceEndedUntil(std::chrono::steady_clock::now() +
                                  std::chrono::seconds(tortureSeconds()));
        shared.stop = true;
        sampler.join();
        {
            const std::lock_guard<std::mutex> lock(shared.gate.mutex);
            shared.gate.closed = true;
        }
        shared.gate.changed.notify_all();
    }
    for (const std::string& failure : report.failures) {
        ADD_FAILURE() << failure;
    }
    EXPECT_GT(report.gateTraces, 0);
    std::cout << report.traces << " traces, " << report.gateTraces << " of a thread at the gate\n";
}

}  // namespace torture

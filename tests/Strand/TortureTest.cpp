// Takes stack traces for a while of threads that are busy allocating, locking,
// waiting, sleeping, ending and being replaced, amid stray signals. Run as its own ctest test; its
// length in seconds comes from STRAND_TORTURE_SECONDS (default 12).
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <future>
#include <iostream>
#include <latch>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "ParkedThread.h"
#include "Strand/ExecuteOnThread.h"
#include "Strand/Platform.h"
#include "Strand/StackTrace.h"

// Named, not anonymous: the traced functions below take these types and must
// keep external linkage to be exported.
namespace torture {

constexpr int kWorkers = 16;

// One thread at a time waits here, in a known function, until a sampler has
// claimed it, traced it and sent it on.
struct Gate {
    std::mutex mutex;
    std::condition_variable changed;
    std::optional<Strand::ThreadId> occupant;
    bool claimed = false;
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

// The threads the samplers pick from besides the gate's occupant (and the
// threads of the process's listing).
struct Population {
    std::mutex mutex;
    std::vector<Strand::ThreadId> live;
    std::deque<Strand::ThreadId> ended;
    std::vector<Strand::ThreadId> samplers;
};

// Takes the gate's occupant for one sampler, if there is one.
std::optional<Strand::ThreadId> claimOccupant(Gate& gate) {
    const std::lock_guard<std::mutex> lock(gate.mutex);
    if (!gate.occupant || gate.claimed) {
        return std::nullopt;
    }
    gate.claimed = true;
    return gate.occupant;
}

void sendOn(Gate& gate) {
    const std::lock_guard<std::mutex> lock(gate.mutex);
    gate.occupant.reset();
    gate.claimed = false;
    gate.changed.notify_all();
}

// Two samplers run this, tracing each other too, so that a thread is signalled
// also while it is itself a caller.
STRAND_TEST_TRACEABLE void tortureSamplerLoop(Shared& shared, Population& population,
                                              std::latch& bothRegistered, SamplerReport& report) {
    std::mt19937 random(std::random_device{}());
    {
        const std::lock_guard<std::mutex> lock(population.mutex);
        population.samplers.push_back(Strand::getThreadId());
    }
    bothRegistered.arrive_and_wait();
    const std::vector<Strand::ThreadId> samplers = population.samplers;
    const auto check = [&](const Strand::ThreadId& thread, const std::string& trace) {
        const bool sampler = std::find(samplers.begin(), samplers.end(), thread) != samplers.end();
        if (!sampler && trace.find("tortureSamplerLoop") != std::string::npos) {
            report.failures.push_back("a sampler's frames in a worker's trace:\n" + trace);
        }
        report.traces += trace.empty() ? 0 : 1;
    };
    while (!shared.stop) {
        if (const std::optional<Strand::ThreadId> held = claimOccupant(shared.gate)) {
            const std::string trace = Strand::getStackTrace({}, *held);
            check(*held, trace);
            if (!trace.empty() && trace.find("tortureHeldAtGate") == std::string::npos) {
                report.failures.push_back("a thread held at the gate not named:\n" + trace);
            }
            report.gateTraces += trace.empty() ? 0 : 1;
            sendOn(shared.gate);
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

// Stray signals, also to the samplers while they publish and withdraw calls.
void sendStraySignals(Shared& shared, Population& population) {
    std::mt19937 random(std::random_device{}());
    while (!shared.stop) {
        std::vector<Strand::ThreadId> targets;
        {
            const std::lock_guard<std::mutex> lock(population.mutex);
            targets = population.samplers;
            targets.insert(targets.end(), population.live.begin(), population.live.end());
        }
        Strand::platform::sendCrossThreadSignal(targets[random() % targets.size()]);
        std::this_thread::yield();
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
    std::latch bothRegistered(2);
    SamplerReport reports[2];
    {
        Workers workers(shared, population);
        std::thread samplers[2];
        for (int i = 0; i < 2; ++i) {
            samplers[i] = std::thread(tortureSamplerLoop, std::ref(shared), std::ref(population),
                                      std::ref(bothRegistered), std::ref(reports[i]));
        }
        bothRegistered.wait();
        // Until the library has installed its handler, SIGUSR1 would end the process.
        Strand::executeOnThread(Strand::getThreadId(), [] {});
        std::thread strays(sendStraySignals, std::ref(shared), std::ref(population));
        workers.replaceEndedUntil(std::chrono::steady_clock::now() +
                                  std::chrono::seconds(tortureSeconds()));
        shared.stop = true;
        strays.join();
        for (std::thread& sampler : samplers) {
            sampler.join();
        }
        {
            const std::lock_guard<std::mutex> lock(shared.gate.mutex);
            shared.gate.closed = true;
        }
        shared.gate.changed.notify_all();
    }
    for (const SamplerReport& report : reports) {
        for (const std::string& failure : report.failures) {
            ADD_FAILURE() << failure;
        }
        EXPECT_GT(report.gateTraces, 0);
        std::cout << report.traces << " traces, " << report.gateTraces << " at the gate\n";
    }
}

}  // namespace torture

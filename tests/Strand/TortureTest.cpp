// Takes stack traces for a while of threads that are busy allocating, locking,
// waiting, sleeping, ending and being replaced, amid stray signals. Run as its
// own ctest test; its length in seconds comes from STRAND_TORTURE_SECONDS.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <deque>
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

// One worker at a time waits here, in a known function, until a sampler has
// claimed it, traced it and sent it on.
struct Gate {
    std::optional<Strand::ThreadId> occupant;
    bool claimed = false;
    bool closed = false;
};

// Everything the threads share; one mutex guards the gate and the thread lists.
struct Shared {
    std::atomic<bool> stop{false};
    std::mutex mutex;
    std::condition_variable changed;
    Gate gate;
    std::vector<Strand::ThreadId> live;
    std::deque<Strand::ThreadId> ended;  // the most recent 16
    std::vector<Strand::ThreadId> samplers;
    std::mutex busyLocks[4];
};

struct Report {
    int traces = 0;
    int gateTraces = 0;
    std::vector<std::string> failures;
};

STRAND_TEST_TRACEABLE void tortureHeldAtGate(Shared& shared) {
    std::unique_lock<std::mutex> lock(shared.mutex);
    Gate& gate = shared.gate;
    if (gate.occupant || gate.closed) {
        return;
    }
    const Strand::ThreadId self = Strand::getThreadId();
    gate.occupant = self;
    // A claimed occupant stays until its sampler has traced it, also when the
    // test is closing: leaving earlier would put another stack under the trace.
    shared.changed.wait(lock, [&] {
        return gate.occupant != self || (gate.closed && !gate.claimed);
    });
}

void workerBody(Shared& shared, unsigned seed) {
    std::mt19937 random(seed);
    for (int i = 20 + static_cast<int>(random() % 200); i > 0 && !shared.stop; --i) {
        switch (random() % 5) {
            case 0: {
                std::vector<std::string> garbage(random() % 32, std::string(random() % 512, 'x'));
                break;
            }
            case 1: {
                const std::lock_guard<std::mutex> lock(shared.busyLocks[random() % 4]);
                std::this_thread::yield();
                break;
            }
            case 2: {
                std::unique_lock<std::mutex> lock(shared.mutex);
                shared.changed.wait_for(lock, std::chrono::microseconds(500));
                break;
            }
            case 3:
                std::this_thread::sleep_for(std::chrono::microseconds(200));
                break;
            default:
                tortureHeldAtGate(shared);
        }
    }
}

// Runs one worker after another until stop, each listed while it runs.
void runWorkerSlot(Shared& shared, unsigned seed) {
    while (!shared.stop) {
        std::thread worker([&shared, seed = seed++] {
            const Strand::ThreadId self = Strand::getThreadId();
            {
                const std::lock_guard<std::mutex> lock(shared.mutex);
                shared.live.push_back(self);
            }
            workerBody(shared, seed);
            const std::lock_guard<std::mutex> lock(shared.mutex);
            std::erase(shared.live, self);
            shared.ended.push_back(self);
            if (shared.ended.size() > 16) {
                shared.ended.pop_front();
            }
        });
        worker.join();
    }
}

// Two samplers run this, tracing each other too, so that threads are signalled
// also while they are callers themselves.
STRAND_TEST_TRACEABLE void tortureSamplerLoop(Shared& shared, Report& report) {
    std::mt19937 random(std::random_device{}());
    const auto check = [&](const Strand::ThreadId& thread, const std::string& trace, bool atGate) {
        report.traces += trace.empty() ? 0 : 1;
        report.gateTraces += atGate && !trace.empty() ? 1 : 0;
        if (atGate && !trace.empty() && trace.find("tortureHeldAtGate") == std::string::npos) {
            report.failures.push_back("a thread held at the gate, not named:\n" + trace);
        }
        const auto& samplers = shared.samplers;
        if (std::find(samplers.begin(), samplers.end(), thread) == samplers.end() &&
            trace.find("tortureSamplerLoop") != std::string::npos) {
            report.failures.push_back("a sampler's frames in a worker's trace:\n" + trace);
        }
    };
    while (!shared.stop) {
        std::optional<Strand::ThreadId> held;
        std::vector<Strand::ThreadId> candidates = Strand::getThreadIds();
        {
            const std::lock_guard<std::mutex> lock(shared.mutex);
            if (shared.gate.occupant && !shared.gate.claimed) {
                shared.gate.claimed = true;
                held = shared.gate.occupant;
            }
            candidates.insert(candidates.end(), shared.live.begin(), shared.live.end());
            candidates.insert(candidates.end(), shared.ended.begin(), shared.ended.end());
        }
        if (held) {
            check(*held, Strand::getStackTrace({}, *held), true);
            const std::lock_guard<std::mutex> lock(shared.mutex);
            shared.gate.occupant.reset();
            shared.gate.claimed = false;
            shared.changed.notify_all();
        }
        const Strand::ThreadId& picked = candidates[random() % candidates.size()];
        check(picked, Strand::getStackTrace({}, picked), false);
    }
}

// Stray signals: every other one to a sampler, to land also while it publishes
// or withdraws a call, the rest to workers.
void sendStraySignals(Shared& shared) {
    std::mt19937 random(std::random_device{}());
    for (unsigned i = 0; !shared.stop; ++i) {
        Strand::ThreadId target;
        {
            const std::lock_guard<std::mutex> lock(shared.mutex);
            const auto& pool = i % 2 == 0 || shared.live.empty() ? shared.samplers : shared.live;
            target = pool[random() % pool.size()];
        }
        Strand::platform::sendCrossThreadSignal(target);
        std::this_thread::yield();
    }
}

// Read before the test starts any thread.
std::chrono::seconds tortureDuration() {
    const char* text = std::getenv("STRAND_TORTURE_SECONDS");  // NOLINT(concurrency-mt-unsafe)
    const int seconds = text != nullptr ? std::atoi(text) : 0;
    return std::chrono::seconds(seconds > 0 ? seconds : 12);
}

TEST(Torture, TracesOfBusyThreadsThatComeAndGo) {
    const std::chrono::seconds duration = tortureDuration();
    // Until the library has installed its handler, SIGUSR1 would end the process.
    Strand::executeOnThread(Strand::getThreadId(), [] {});
    Shared shared;
    Report reports[2];
    std::latch samplersKnown(3);
    std::vector<std::thread> threads;
    for (Report& report : reports) {
        threads.emplace_back([&shared, &samplersKnown, &report] {
            {
                const std::lock_guard<std::mutex> lock(shared.mutex);
                shared.samplers.push_back(Strand::getThreadId());
            }
            samplersKnown.arrive_and_wait();
            tortureSamplerLoop(shared, report);
        });
    }
    for (unsigned slot = 0; slot < 16; ++slot) {
        threads.emplace_back(runWorkerSlot, std::ref(shared), slot * 1000);
    }
    samplersKnown.arrive_and_wait();
    threads.emplace_back(sendStraySignals, std::ref(shared));

    std::this_thread::sleep_for(duration);
    shared.stop = true;
    {
        const std::lock_guard<std::mutex> lock(shared.mutex);
        shared.gate.closed = true;
    }
    shared.changed.notify_all();
    for (std::thread& thread : threads) {
        thread.join();
    }

    for (const Report& report : reports) {
        for (const std::string& failure : report.failures) {
            ADD_FAILURE() << failure;
        }
        EXPECT_GT(report.gateTraces, 0);
        std::cout << report.traces << " traces, " << report.gateTraces << " at the gate\n";
    }
}

}  // namespace torture

// Traces, for STRAND_TORTURE_SECONDS, of busy threads that end, are cancelled and replaced.
#include <deque>
#include <optional>
#include <random>

#include "Strand/ExecuteOnThread.h"
#include "Strand/StackTrace.h"
#include "TestSupport.h"

// Named, not anonymous: the traced functions below must keep external linkage.
namespace torture {

// Shared under mutex; one worker at a time waits at the gate until a sampler has traced it.
struct Shared {
    std::atomic<bool> stop{false};
    std::mutex mutex, busy[4];
    std::condition_variable changed;
    std::optional<Strand::ThreadId> gateOccupant;
    bool gateClaimed = false, gateClosed = false;
    std::vector<Strand::ThreadId> live, samplers;
    std::deque<Strand::ThreadId> ended;  // the most recent 16
    int cancellations = 0;
    template <typename Fn>
    auto locked(Fn fn) {
        const std::lock_guard<std::mutex> lock(mutex);
        return fn();
    }
    void retire(const Strand::ThreadId& id) {
        locked([&] {
            std::erase(live, id);
            ended.push_back(id);
            if (ended.size() > 16) ended.pop_front();
        });
    }
};

STRAND_TEST_TRACEABLE void tortureHeldAtGate(Shared& s) {
    std::unique_lock<std::mutex> lock(s.mutex);
    if (s.gateOccupant || s.gateClosed) return;
    const Strand::ThreadId self = Strand::getThreadId();
    s.gateOccupant = self;
    // A claimed occupant stays until traced, also at the close of the test.
    s.changed.wait(lock,
                   [&] { return s.gateOccupant != self || (s.gateClosed && !s.gateClaimed); });
}

// One short-lived worker after another until stop, each listed while it runs.
void runWorkerSlot(Shared& s, unsigned slot) {
    for (unsigned seed = slot * 1000; !s.stop; ++seed) {
        std::thread([&s, seed] {
            const Strand::ThreadId self = Strand::getThreadId();
            s.locked([&] { s.live.push_back(self); });
            std::mt19937 random(seed);
            for (int i = 20 + static_cast<int>(random() % 200); i > 0 && !s.stop; --i) {
                const unsigned action = random() % 5;
                if (action == 0) {
                    std::vector<std::string> garbage(random() % 32,
                                                     std::string(random() % 512, 'x'));
                } else if (action == 1) {
                    const std::lock_guard<std::mutex> lock(s.busy[random() % 4]);
                    std::this_thread::yield();
                } else if (action == 2) {
                    std::unique_lock<std::mutex> lock(s.mutex);
                    s.changed.wait_for(lock, std::chrono::microseconds(500));
                } else {
                    action == 3 ? std::this_thread::sleep_for(std::chrono::microseconds(200))
                                : tortureHeldAtGate(s);
                }
            }
            s.retire(self);
        }).join();
    }
}

// A capture whose copies each trace a thread when destroyed, outside the library's lock.
struct TracesWhenDestroyed {
    Strand::ThreadId thread;
    ~TracesWhenDestroyed() { (void)Strand::getStackTrace({}, thread); }
};

// A thread to cancel, listed once it is known.
struct Victim {
    Shared* s;
    Strand::ThreadId id{};
    std::latch known{1};
    void list() {
        id = Strand::getThreadId();
        s->locked([&] { s->live.push_back(id); });
        known.count_down();
    }
};

// No local's address escapes: ASan would report guard zones of frames a cancellation unwinds.
void* tortureAwaitCancellation(void* victim) {
    static_cast<Victim*>(victim)->list();
    for (;;) pause();
}

// The victim a scope listener lists and then holds in a cancellation point.
thread_local Victim* tVictimInListener = nullptr;

// In pthread_testcancel: a blocking call's cancel would unwind from a signal handler.
void blockTheVictimInListener() {
    if (tVictimInListener == nullptr) return;
    tVictimInListener->list();
    for (;;) {
        pthread_testcancel();
        std::this_thread::yield();
    }
}

// Cancelled inside a scope listener; the scope is on the heap, as above.
void* tortureCancelledInListener(void* victim) {
    tVictimInListener = static_cast<Victim*>(victim);
    delete new Strand::ScopedThreadName("torture victim");
    return nullptr;
}

// Cancels one thread after another: inside a call, in pause() amid signals, inside a listener.
void runCancellations(Shared& s) {
    for (unsigned round = 0; !s.stop; ++round) {
        Victim victim{&s};
        pthread_t handle{};
        pthread_create(&handle, nullptr,
                       round % 3 == 2 ? &tortureCancelledInListener : &tortureAwaitCancellation,
                       &victim);
        victim.known.wait();
        std::promise<void> entered;
        std::atomic<bool> cancelled{false};
        std::thread caller([&] {
            if (round % 3 == 0) {
                Strand::executeOnThread(victim.id, [&] {
                    entered.set_value();
                    for (int i = 0; i < 100 && !cancelled; ++i) usleep(100);
                });
            } else {
                entered.set_value();
                while (!cancelled) Strand::platform::sendCrossThreadSignal(victim.id);
            }
        });
        // Cancelled also if the call was not accepted in time.
        entered.get_future().wait_for(std::chrono::milliseconds(200));
        pthread_cancel(handle);
        void* result = nullptr;
        pthread_join(handle, &result);
        cancelled = true;
        caller.join();
        EXPECT_EQ(result, PTHREAD_CANCELED) << "round " << round;
        s.retire(victim.id);
        s.locked([&] { ++s.cancellations; });
    }
}

// Two samplers trace everyone; now and then one traces itself by number or sends a tracer.
STRAND_TEST_TRACEABLE void tortureSamplerLoop(Shared& s, int& gateTraces) {
    std::mt19937 random(std::random_device{}());
    const Strand::ThreadId selfByNumber{pthread_t{}, Strand::gettid(), 0};
    const auto trace = [&](const Strand::ThreadId& thread, bool atGate) {
        const std::string text = Strand::getStackTrace({}, thread);
        const bool isSampler =
            std::find(s.samplers.begin(), s.samplers.end(), thread) != s.samplers.end();
        gateTraces += atGate && !text.empty() ? 1 : 0;
        // A thread held at the gate is named; a worker's trace has no sampler frames.
        EXPECT_TRUE(!atGate || text.empty() || text.find("tortureHeldAtGate") != std::string::npos)
            << text;
        EXPECT_TRUE(isSampler || text.find("tortureSamplerLoop") == std::string::npos) << text;
    };
    while (!s.stop) {
        std::vector<Strand::ThreadId> candidates = Strand::getThreadIds();
        const auto held = s.locked([&] {
            candidates.insert(candidates.end(), s.live.begin(), s.live.end());
            candidates.insert(candidates.end(), s.ended.begin(), s.ended.end());
            const bool claim = s.gateOccupant && !s.gateClaimed;
            s.gateClaimed = s.gateClaimed || claim;
            return claim ? s.gateOccupant : std::nullopt;
        });
        if (held) {
            trace(*held, true);
            s.locked([&] { s.gateOccupant.reset(), s.gateClaimed = false; });
            s.changed.notify_all();
        }
        const Strand::ThreadId& other = candidates[random() % candidates.size()];
        const unsigned extra = random() % 16;
        if (extra == 0) {
            const std::string own = Strand::getStackTrace({}, selfByNumber);
            EXPECT_NE(own.find("tortureSamplerLoop"), std::string::npos) << own;
        } else if (extra == 1) {
            const TracesWhenDestroyed capture{candidates[random() % candidates.size()]};
            Strand::executeOnThread(other, [capture] {});
        }
        trace(other, false);
    }
}

TEST(Torture, TracesOfBusyThreadsThatComeAndGo) {
    const char* text = std::getenv("STRAND_TORTURE_SECONDS");  // NOLINT(concurrency-mt-unsafe)
    const int seconds = text != nullptr ? std::atoi(text) : 0;
    // Until the library has installed its handler, SIGUSR1 would end the process.
    Strand::executeOnThread(Strand::getThreadId(), [] {});
    const auto listener = std::make_shared<Listener>(&blockTheVictimInListener);
    Strand::ScopedThreadName::registerCallback(listener);
    Shared s;
    int gateTraces[2] = {0, 0};
    std::latch samplersKnown(3);
    std::vector<std::thread> threads;
    for (int& count : gateTraces) {
        threads.emplace_back([&s, &samplersKnown, &count] {
            s.locked([&] { s.samplers.push_back(Strand::getThreadId()); });
            samplersKnown.arrive_and_wait();
            tortureSamplerLoop(s, count);
        });
    }
    for (unsigned i = 0; i < 16; ++i) threads.emplace_back(runWorkerSlot, std::ref(s), i);
    if (kCancellationUnwinds) threads.emplace_back(runCancellations, std::ref(s));
    samplersKnown.arrive_and_wait();
    // Stray signals: every other one to a sampler (as it publishes a call), the rest to workers.
    threads.emplace_back([&s] {
        std::mt19937 random(std::random_device{}());
        for (unsigned i = 0; !s.stop; ++i) {
            Strand::platform::sendCrossThreadSignal(s.locked([&] {
                const auto& pool = i % 2 == 0 || s.live.empty() ? s.samplers : s.live;
                return pool[random() % pool.size()];
            }));
            std::this_thread::yield();
        }
    });
    std::this_thread::sleep_for(std::chrono::seconds(seconds > 0 ? seconds : 12));
    s.stop = true;
    s.locked([&] { s.gateClosed = true; });
    s.changed.notify_all();
    for (std::thread& thread : threads) thread.join();
    Strand::ScopedThreadName::unRegisterCallback(listener);
    EXPECT_GT(gateTraces[0], 0);
    EXPECT_GT(gateTraces[1], 0);
    EXPECT_TRUE(!kCancellationUnwinds || s.cancellations > 0);
    std::cout << gateTraces[0] << " and " << gateTraces[1] << " traces at the gate, "
              << s.cancellations << " threads cancelled during a call\n";
}

}  // namespace torture

#include "Strand/ScopedThreadNotifications.h"

#include <gtest/gtest.h>

#include <functional>
#include <latch>
#include <stdexcept>
#include <thread>

#include "ContextTestSupport.h"

namespace {

using Strand::IScopedThreadCallback;
using Strand::ScopedThreadNotifications;
using Events = std::vector<std::string>;

// Runs an action from inside onStarted.
class Acting : public IScopedThreadCallback {
public:
    explicit Acting(std::function<void()> action) : action_(std::move(action)) {}
    void onStarted() override { action_(); }
    void onEnded() override {}

private:
    std::function<void()> action_;
};

TEST(ScopedThreadNotifications, RegistrationRules) {
    context_test::EventLog log;
    const auto a = log.recorder("a");
    const auto b = log.recorder("b");
    auto dead = log.recorder("dead");
    const struct {
        const char* label;
        std::function<void(ScopedThreadNotifications&)> arrange;
        Events expected;
    } cases[] = {
        {"null changes nothing",
         [&](auto& r) {
             r.registerCallback(nullptr);
             r.registerCallback(a);
             r.unRegisterCallback(nullptr);
         },
         {"a+", "a-"}},
        {"twice registered, once removed",
         [&](auto& r) {
             r.registerCallback(a);
             r.registerCallback(b);
             r.registerCallback(a);
             r.unRegisterCallback(a);
         },
         {"b+", "a+", "b-", "a-"}},
        {"removing one keeps the other",
         [&](auto& r) {
             r.registerCallback(a);
             r.registerCallback(b);
             r.unRegisterCallback(a);
             r.unRegisterCallback(a);
         },
         {"b+", "b-"}},
        {"dead listeners are passed over",
         [&](auto& r) {
             r.registerCallback(dead);
             r.registerCallback(a);
             dead.reset();
         },
         {"a+", "a-"}},
        {"disabled: nothing registers or fires",
         [&](auto& r) {
             r.registerCallback(a);
             r.deinit();
             r.registerCallback(b);
         },
         {}},
        {"enabled again: only new registrations",
         [&](auto& r) {
             r.registerCallback(a);
             r.deinit();
             r.init();
             r.registerCallback(b);
         },
         {"b+", "b-"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        ScopedThreadNotifications registry;
        c.arrange(registry);
        registry.fireOnStarted();
        registry.fireOnEnded();
        EXPECT_EQ(log.take(), c.expected);
    }
}

TEST(ScopedThreadNotifications, ListenersMayUseTheRegistryAndThrow) {
    context_test::EventLog log;
    ScopedThreadNotifications registry;
    const auto late = log.recorder("late");
    std::shared_ptr<IScopedThreadCallback> self;
    self = std::make_shared<Acting>([&] {
        registry.unRegisterCallback(self);  // the lock is not held here
        registry.registerCallback(late);
        registry.fireOnEnded();
    });
    registry.registerCallback(self);
    registry.fireOnStarted();
    EXPECT_EQ(log.take(), (Events{"late-"})) << "changes count from the next round on";
    registry.fireOnStarted();
    EXPECT_EQ(log.take(), (Events{"late+"})) << "the listener left after one round";

    const auto thrower = std::make_shared<Acting>([] { throw std::runtime_error("no"); });
    ScopedThreadNotifications second;
    second.registerCallback(thrower);
    second.registerCallback(late);
    EXPECT_THROW(second.fireOnStarted(), std::runtime_error);
    EXPECT_TRUE(log.take().empty()) << "a throwing listener ends the round";
}

TEST(ScopedThreadNotifications, RegisterUnregisterAndFireFromManyThreads) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 200;
    ScopedThreadNotifications registry;
    std::atomic<int> started{0};
    const auto steady = std::make_shared<Acting>([&] { started.fetch_add(1); });
    registry.registerCallback(steady);
    std::latch start(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            for (int i = 0; i < kRounds; ++i) {
                const auto transient = std::make_shared<Acting>([] {});
                registry.registerCallback(transient);
                registry.fireOnStarted();
                registry.unRegisterCallback(transient);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(started.load(), kThreads * kRounds) << "the steady listener saw every round once";
}

}  // namespace

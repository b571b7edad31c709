#include "Strand/ScopedThreadNotifications.h"

#include <gtest/gtest.h>

#include <functional>
#include <latch>
#include <map>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "ContextTestSupport.h"

namespace {

using Strand::IScopedThreadCallback;
using Strand::ScopedThreadNotifications;

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
    // Steps: +x registers x, -x unregisters it, ~x lets it die, x = 0 is null;
    // off / on disable / enable. Then one started and one ended round.
    const struct {
        const char* steps;
        const char* expected;
    } cases[] = {{"+0 +a -0", "a+ a- "},    {"+a +b +a -a", "b+ a+ b- a- "},
                 {"+a +b -a -a", "b+ b- "}, {"+d +a ~d", "a+ a- "},
                 {"+a off +b", ""},         {"+a off on +b", "b+ b- "}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.steps);
        context_test::EventLog log;
        std::map<char, std::shared_ptr<context_test::Recorder>> listeners;
        for (const char tag : {'a', 'b', 'd'}) {
            listeners[tag] = log.recorder(std::string(1, tag));
        }
        ScopedThreadNotifications registry;
        std::istringstream steps(c.steps);
        for (std::string step; steps >> step;) {
            auto& listener = listeners[step[1]];
            if (step == "off" || step == "on") {
                step == "off" ? registry.deinit() : registry.init();
            } else if (step[0] == '~') {
                listener.reset();
            } else {
                step[0] == '+' ? registry.registerCallback(listener)
                               : registry.unRegisterCallback(listener);
            }
        }
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
        registry.unRegisterCallback(self);  // no lock is held here
        registry.registerCallback(late);
        registry.fireOnEnded();
    });
    registry.registerCallback(self);
    registry.fireOnStarted();
    EXPECT_EQ(log.take(), "late- ") << "changes count from the next round on";
    registry.fireOnStarted();
    EXPECT_EQ(log.take(), "late+ ") << "the listener left after one round";

    const auto thrower = std::make_shared<Acting>([] { throw std::runtime_error("no"); });
    ScopedThreadNotifications second;
    second.registerCallback(thrower);
    second.registerCallback(late);
    EXPECT_THROW(second.fireOnStarted(), std::runtime_error);
    EXPECT_EQ(log.take(), "") << "a throwing listener ends the round";
}

TEST(ScopedThreadNotifications, RegisterUnregisterAndFireFromManyThreads) {
    constexpr int kThreads = 4, kRounds = 200;
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

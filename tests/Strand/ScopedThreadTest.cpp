// Scoped threads: the listener registry and the scoped thread name.
#include "Strand/ScopedThreadNotifications.h"
#include "TestSupport.h"

void runInNextAllocation(void (*hook)());  // inside the thread's next operator new

namespace {

using quill::external_input::context_store;
using quill::external_input::hint;
using quill::source::location;
using Strand::ScopedThreadName;
using Strand::ScopedThreadNotifications;

// Appends "<tag>+ " and "<tag>- " to log (notified from one thread at a time).
std::shared_ptr<Listener> recorder(std::string& log, const std::string& tag) {
    return std::make_shared<Listener>([&log, tag] { log += tag + "+ "; },
                                      [&log, tag] { log += tag + "- "; });
}

// A registry of a test's own, which frees its list at the end.
struct LocalRegistry : ScopedThreadNotifications {
    ~LocalRegistry() { deinit(); }
};

// Listeners a, b and d of one registry, and the tags of those notified so far.
struct Rig {
    std::string log;
    LocalRegistry registry;
    std::shared_ptr<Listener> a = tagger("a"), b = tagger("b"), d = tagger("d");
    std::shared_ptr<Listener> tagger(const char* tag) {
        return std::make_shared<Listener>([this, tag] { log += tag; }, [this, tag] { log += tag; });
    }
    void add(std::initializer_list<std::shared_ptr<Listener>> all) {
        for (const auto& l : all) registry.registerCallback(l);
    }
    void remove(std::initializer_list<std::shared_ptr<Listener>> all) {
        for (const auto& l : all) registry.unRegisterCallback(l);
    }
};

TEST(ScopedThreadNotifications, RegistrationRules) {
    const struct {
        const char* name;
        void (*steps)(Rig&);
        const char* heard;  // tags of the listeners notified, in order, in each round
    } cases[] = {
        {"null is ignored",
         [](Rig& r) { r.add({nullptr, r.a}), r.registry.unRegisterCallback(nullptr); }, "a"},
        {"a listener registered twice is unregistered once, from the front",
         [](Rig& r) { r.add({r.a, r.b, r.a}), r.remove({r.a}); }, "ba"},
        {"unregistering twice is harmless", [](Rig& r) { r.add({r.a, r.b}), r.remove({r.a, r.a}); },
         "b"},
        {"a dead listener is skipped", [](Rig& r) { r.add({r.d, r.a}), r.d.reset(); }, "a"},
        {"a disabled registry ignores all",
         [](Rig& r) { r.add({r.a}), r.registry.deinit(), r.add({r.b}); }, ""},
        {"re-enabling starts empty",
         [](Rig& r) { r.add({r.a}), r.registry.deinit(), r.registry.init(), r.add({r.b}); }, "b"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Rig rig;
        c.steps(rig);
        rig.registry.fireOnStarted();
        EXPECT_EQ(std::exchange(rig.log, {}), c.heard);
        rig.registry.fireOnEnded();
        EXPECT_EQ(rig.log, c.heard);
    }
}

TEST(ScopedThreadNotifications, ListenersMayUseTheRegistry) {
    std::string log;
    LocalRegistry registry;
    const auto late = recorder(log, "late");
    std::shared_ptr<Listener> self = std::make_shared<Listener>([&] {
        registry.unRegisterCallback(self);  // no lock is held here
        registry.registerCallback(late);
        registry.fireOnEnded();
    });
    registry.registerCallback(self);
    registry.fireOnStarted();
    EXPECT_EQ(std::exchange(log, {}), "late- ") << "changes count from the next round on";
    registry.fireOnStarted();
    EXPECT_EQ(log, "late+ ") << "the listener left after one round";
}

TEST(ScopedThreadNotifications, RegisterUnregisterAndFireFromManyThreads) {
    LocalRegistry registry;
    std::atomic<int> started{0};
    const auto steady = std::make_shared<Listener>([&] { started.fetch_add(1); });
    registry.registerCallback(steady);
    onThreadsAtOnce(4, [&](int) {
        for (int i = 0; i < 200; ++i) {
            const auto transient = std::make_shared<Listener>([] {});
            registry.registerCallback(transient);
            registry.fireOnStarted();
            registry.unRegisterCallback(transient);
        }
    });
    EXPECT_EQ(started.load(), 4 * 200) << "the steady listener saw every round once";
}

std::atomic<int> gForkStage{0};  // 1 registry held, 2 forking, 3 in fork's prepare handlers

// A thread holds the registry (allocating its copy) as another forks: the child still works.
TEST(ScopedThreadNotifications, ForkWhileAnotherThreadHoldsTheRegistry) {
    std::string log;
    const auto listener = recorder(log, "p");
    ScopedThreadName::registerCallback(listener);
    // Runs before the library's handler waits for the hold, so the holder lets go mid-fork.
    static const bool installed = pthread_atfork([] {
        if (gForkStage.load() == 2) (gForkStage.store(3), gForkStage.notify_all());
    }, nullptr, nullptr) == 0;
    ASSERT_TRUE(installed);
    static std::atomic<bool> held{true};  // detached: a fork child must not see it unjoined
    std::thread([] {
        runInNextAllocation([] {
            gForkStage.store(1);
            gForkStage.notify_all();
            for (int stage = 1; stage < 3; stage = gForkStage.load()) gForkStage.wait(stage);
        });
        ScopedThreadName::notifier.fireOnStarted();
        held.store(false);
        held.notify_all();
    }).detach();
    gForkStage.wait(0);
    gForkStage.store(2);
    gForkStage.notify_all();
    const std::string child = inChildProcess(10, [&] {
        std::string childLog;
        const auto inChild = recorder(childLog, "c");
        ScopedThreadName::registerCallback(inChild);
        { const ScopedThreadName scope("child's scope with a long name", true); }
        Strand::setThreadName("child, named after the fork");
        const auto listed = Strand::getThreadIds();
        return childLog == "c+ c- " && Strand::getThreadName() == "child, named after the fork" &&
               std::count(listed.begin(), listed.end(), Strand::getThreadId()) == 1;
    });
    held.wait(true);
    ScopedThreadName::unRegisterCallback(listener);
    EXPECT_EQ(child, "ok");
}

// Detached threads open scopes while static destructors run: the registry outlives them.
TEST(ScopedThreadNotifications, ScopesOpenedWhileTheProcessExits) {
    EXPECT_EQ(inChildProcess(20, [] {
        static std::latch running(4);
        const auto listener = std::make_shared<Listener>([] {});
        ScopedThreadName::registerCallback(listener);
        for (int t = 0; t < 4; ++t) {
            std::thread([listener] {
                running.count_down();
                for (;;) const ScopedThreadName scope("still working at exit", true);
            }).detach();
        }
        running.wait();
        return true;
    }, true), "ok");
}

// Registered and fired during static initialisation: the registry needs no init call.
const std::string gEarlyLog = [] {
    std::string log;
    const auto listener = recorder(log, "early");
    ScopedThreadName::registerCallback(listener);
    std::make_unique<ScopedThreadName>("static-init", true).reset();
    ScopedThreadName::unRegisterCallback(listener);
    return log;
}();

// Records the global registry's notifications for the length of a test.
class ScopedThreadNameTest : public ::testing::Test {
protected:
    void SetUp() override { ScopedThreadName::registerCallback(recorder_); }
    void TearDown() override { ScopedThreadName::unRegisterCallback(recorder_); }
    std::string log;
    std::shared_ptr<Listener> recorder_ = recorder(log, "L");
};

struct Net {};

TEST_F(ScopedThreadNameTest, NamesTheThreadAndCarriesTheLocationsContext) {
    EXPECT_EQ(gEarlyLog, "early+ early- ");
    const auto store = std::make_shared<context_store>();
    const auto at = [&](const char* hintName, const char* hintId = "hint123456") {
        return location{"/src/net/Client.cpp", "connect", std::make_shared<hint>(hintId, hintName),
                        store, 120};
    };
    using Make = std::function<std::unique_ptr<ScopedThreadName>()>;
    const auto scopeOf = [](auto... args) -> Make {
        return [=] { return std::make_unique<ScopedThreadName>(args...); };
    };
    const std::string net = std::string("Client.cpp:120:<") + typeid(Net).name() + ">connect";
    const std::string loc = "Client.cpp:120:connect";
    // The thread is named "old" and, if ownHint, has hint hint000001 named "tap".
    const struct {
        const char* name;
        Make make;
        bool ownHint;
        std::string nameDuring, nameAfter, hintDuring, hintAfter;
        bool sharesStore, notifies;
    } cases[] = {
        {"a name over an own hint, which it clears", scopeOf(std::string("worker"), true), true,
         "worker", "old", "tap", "", false, true},
        {"a location", scopeOf(at("click")), false, loc, "old", "click", "", true, true},
        {"a location over an own hint", scopeOf(at("click")), true, loc, "old", "click", "tap",
         true, true},
        {"the own hint's id wins", scopeOf(at("click", "hint000001")), true, loc, "old", "tap",
         "tap", true, true},
        {"a prefix and a location", scopeOf(std::string("Net"), at("click")), false, "Net:" + loc,
         "old", "click", "", true, true},
        {"a type and a location", scopeOf(std::cref(typeid(Net)), at("click")), true, net, "old",
         "tap", "", false, true},
        {"no file: the name stays, nobody hears, the end restores nothing",
         scopeOf(location{nullptr, "f", nullptr, {}, 1}), false, "old", "", "", "", false, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::string nameDuring, nameAfter, hintDuring, hintAfter;
        bool sharesStore = false;
        onNewThread([&] {
            Strand::setThreadName("old");
            if (c.ownHint) hint("hint000001", "tap").setAsExternalInputHint();
            auto scope = c.make();
            nameDuring = Strand::getThreadName();
            hintDuring = hint::getExternalInputHintName();
            scope.reset();
            nameAfter = Strand::getThreadName();
            hintAfter = hint::getExternalInputHintName();
            sharesStore = context_store::getStore().lock() == store;
        });
        EXPECT_EQ(nameDuring, c.nameDuring);
        EXPECT_EQ(nameAfter, c.nameAfter);
        EXPECT_EQ(hintDuring, c.hintDuring);
        EXPECT_EQ(hintAfter, c.hintAfter);
        EXPECT_EQ(sharesStore, c.sharesStore);
        EXPECT_EQ(std::exchange(log, {}), c.notifies ? "L+ L- " : "");
    }
}

TEST_F(ScopedThreadNameTest, OnlyTheOutermostNotifyingScopeNotifies) {
    onNewThread([&] {
        Strand::setThreadName("before");
        {
            const ScopedThreadName outer("outer", true);
            {
                const ScopedThreadName inner("inner", true);
                const ScopedThreadName quiet("quiet", false);
            }
            EXPECT_EQ(Strand::getThreadName(), "outer");
            EXPECT_EQ(std::exchange(log, {}), "L+ ");
        }
        EXPECT_EQ(Strand::getThreadName(), "before");
        EXPECT_EQ(std::exchange(log, {}), "L- ");
        {
            const ScopedThreadName quiet("quiet", false);
            const ScopedThreadName inner("inner", true);
        }
        EXPECT_EQ(log, "L+ L- ") << "a quiet scope never takes the turn";
    });
}

TEST_F(ScopedThreadNameTest, ThrowingListenerIsDroppedByLocationForms) {
    const auto thrower = std::make_shared<Listener>([] { throw std::runtime_error("start"); });
    ScopedThreadName::unRegisterCallback(recorder_);
    ScopedThreadName::registerCallback(thrower);
    ScopedThreadName::registerCallback(recorder_);
    onNewThread([&] {
        hint("hint000001", "tap").setAsExternalInputHint();
        {
            const ScopedThreadName scope(
                {"a.cpp", "f", std::make_shared<hint>("h1", "click"), {}, 1});
            EXPECT_EQ(hint::getExternalInputHintName(), "tap") << "later steps are skipped";
        }
        EXPECT_EQ(hint::getExternalInputHintName(), "") << "no hint was saved";
        EXPECT_EQ(std::exchange(log, {}), "L- ") << "an end whose start was cut short";
        EXPECT_THROW(ScopedThreadName("named", true), std::runtime_error);
        ScopedThreadName::unRegisterCallback(thrower);
        const ScopedThreadName next("next", true);
        EXPECT_EQ(log, "L+ ") << "a failed constructor does not keep the turn";
    });
}

}  // namespace

// Scoped threads: the listener registry and the scoped thread name.
#ifdef __linux__
#include <sys/syscall.h>
#include <unistd.h>
#endif

#include <fstream>
#include <iterator>

#include "Strand/ScopedThreadNotifications.h"
#include "TestSupport.h"

void runInNextAllocation(void (*hook)());  // inside the thread's next operator new

namespace {

using quill::external_input::context_store;
using quill::external_input::hint;
using quill::source::location;
using Strand::ScopedThreadName;
using Strand::ScopedThreadNotifications;

// A listener that runs the given actions.
struct Listener : Strand::IScopedThreadCallback {
    explicit Listener(std::function<void()> start, std::function<void()> end = nullptr)
        : started(std::move(start)), ended(std::move(end)) {}
    void onStarted() override { started(); }
    void onEnded() override { ended ? ended() : void(); }
    std::function<void()> started, ended;
};

// Appends "<tag>+ " and "<tag>- " to log (notified from one thread at a time).
std::shared_ptr<Listener> recorder(std::string& log, const std::string& tag) {
    return std::make_shared<Listener>([&log, tag] { log += tag + "+ "; },
                                      [&log, tag] { log += tag + "- "; });
}

// A registry of a test's own; it frees its list at the end, as the process-wide
// one never does.
struct LocalRegistry : ScopedThreadNotifications {
    ~LocalRegistry() { deinit(); }
};

TEST(ScopedThreadNotifications, RegistrationRules) {
    // +x registers x, -x unregisters it, ~x lets it die, 0 is null; off / on
    // disable / enable. Then one started and one ended round.
    const std::pair<const char*, const char*> cases[] = {
        {"+0 +a -0", "a+ a- "},    {"+a +b +a -a", "b+ a+ b- a- "},
        {"+a +b -a -a", "b+ b- "}, {"+d +a ~d", "a+ a- "},
        {"+a off +b", ""},         {"+a off on +b", "b+ b- "}};
    for (const auto& [steps, expected] : cases) {
        std::string log;
        std::map<char, std::shared_ptr<Listener>> listeners;
        for (const char tag : {'a', 'b', 'd'}) listeners[tag] = recorder(log, std::string(1, tag));
        LocalRegistry registry;
        std::istringstream in(steps);
        for (std::string step; in >> step;) {
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
        EXPECT_EQ(log, expected) << steps;
    }
}

TEST(ScopedThreadNotifications, ListenersMayUseTheRegistryAndThrow) {
    std::string log;
    LocalRegistry registry, second;
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
    EXPECT_EQ(std::exchange(log, {}), "late+ ") << "the listener left after one round";
    const auto thrower = std::make_shared<Listener>([] { throw std::runtime_error(""); });
    second.registerCallback(thrower);
    second.registerCallback(late);
    EXPECT_THROW(second.fireOnStarted(), std::runtime_error);
    EXPECT_EQ(log, "") << "a throwing listener ends the round";
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

// The scheduler state of thread tid ('S' while it sleeps, in a lock say).
char schedulerState(int tid) {
    std::ifstream stat("/proc/self/task/" + std::to_string(tid) + "/stat");
    const std::string text((std::istreambuf_iterator<char>(stat)), {});
    const auto end = text.rfind(')');
    return end != std::string::npos && end + 2 < text.size() ? text[end + 2] : '?';
}

// The kernel's id of the calling thread, as /proc names it (also where the
// library's numeric id is another, as on the Apple layer over the emulation).
int kernelThreadId() {
#ifdef __linux__
    return static_cast<int>(syscall(SYS_gettid));
#else
    return Strand::gettid();
#endif
}

std::atomic<int> gForkStage{0};  // 1 registry held, 2 forking, 3 forked
int gForkingTid = 0;

// One thread is inside the registry's hold (allocating the copy of the list)
// when another forks: the child must still register, fire and name threads.
TEST(ScopedThreadNotifications, ForkWhileAnotherThreadHoldsTheRegistry) {
    std::string log;
    const auto listener = recorder(log, "p");
    ScopedThreadName::registerCallback(listener);
    gForkingTid = kernelThreadId();
    static std::atomic<bool> held{true};  // detached: a fork child must not see it unjoined
    std::thread([] {
        runInNextAllocation([] {
            gForkStage.store(1);
            gForkStage.notify_all();
            gForkStage.wait(1);
            // Leaves the hold once the forking thread waits (for this hold) or has forked.
            while (gForkStage.load() < 3 && schedulerState(gForkingTid) != 'S') sched_yield();
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
    gForkStage.store(3);
    held.wait(true);
    ScopedThreadName::unRegisterCallback(listener);
    EXPECT_EQ(child, "ok");
}

// Detached threads still open scopes while the process exits and static
// destructors run: the registry must outlive them.
TEST(ScopedThreadNotifications, ScopesOpenedWhileTheProcessExits) {
    EXPECT_EQ(inChildProcess(20, [] {
        static std::atomic<int> running{0};
        const auto listener = std::make_shared<Listener>([] {}, [] {});
        ScopedThreadName::registerCallback(listener);
        for (int t = 0; t < 4; ++t) {
            std::thread([listener] {
                running.fetch_add(1);
                running.notify_all();
                for (;;) const ScopedThreadName scope("still working at exit", true);
            }).detach();
        }
        for (int seen = 0; seen < 4; seen = running.load()) running.wait(seen);
        return true;
    }, true), "ok");
}

// Registered and fired during static initialisation, before main() runs: the
// registry needs no init call and no particular order of initialisers.
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
    // The scope, whether the thread has its own hint (tap, hint000001), then what
    // the thread shows: "name during|name after|hint during|hint after|store|events".
    const std::tuple<Make, bool, std::string> cases[] = {
        {scopeOf(std::string("worker"), true), false, "worker|old|||-|L+ L- "},
        {scopeOf(std::string(64, 'n'), true), true, std::string(63, 'n') + "|old|tap||-|L+ L- "},
        {scopeOf(at("click")), false, "Client.cpp:120:connect|old|click||S|L+ L- "},
        {scopeOf(at("click")), true, "Client.cpp:120:connect|old|click|tap|S|L+ L- "},
        {scopeOf(at("click", "hint000001")), true, "Client.cpp:120:connect|old|tap|tap|S|L+ L- "},
        {scopeOf(std::string("Net"), at("click")), false,
         "Net:Client.cpp:120:connect|old|click||S|L+ L- "},
        {scopeOf(std::string(), at("")), false, "Client.cpp:120:connect|old|||S|L+ L- "},
        {scopeOf(std::cref(typeid(Net)), at("click")), true, net + "|old|tap||-|L+ L- "},
        // Without a file the name stays, nobody hears, and the end restores nothing.
        {scopeOf(location{nullptr, "f", nullptr, {}, 1}), false, "old||||-|"}};
    for (const auto& [make, ownHint, expected] : cases) {
        const std::string seen = onNewThread([&, &make = make, ownHint = ownHint] {
            Strand::setThreadName("old");
            if (ownHint) hint("hint000001", "tap").setAsExternalInputHint();
            auto scope = make();
            const std::string nameDuring = Strand::getThreadName() + "|";
            const std::string hintDuring = hint::getExternalInputHintName() + "|";
            scope.reset();
            return nameDuring + Strand::getThreadName() + "|" + hintDuring +
                   hint::getExternalInputHintName() +
                   (context_store::getStore().lock() == store ? "|S|" : "|-|") + log;
        });
        EXPECT_EQ(seen, expected);
        log.clear();
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
            EXPECT_EQ(Strand::getThreadName() + "|" + std::exchange(log, {}), "outer|L+ ");
        }
        EXPECT_EQ(Strand::getThreadName() + "|" + std::exchange(log, {}), "before|L- ");
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

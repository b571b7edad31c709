#include "Strand/ScopedThreadName.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "ContextTestSupport.h"
#include "Strand/ThreadName.h"

namespace {

using context_test::onNewThread;
using quill::external_input::context_store;
using quill::external_input::hint;
using quill::source::location;
using Strand::ScopedThreadName;

struct Net {};

location clientConnect(std::shared_ptr<hint> carried = nullptr,
                       std::weak_ptr<context_store> store = {}) {
    return location{"/src/net/Client.cpp", "connect", std::move(carried), std::move(store), 120};
}

// Registered and fired during static initialisation, before main() runs: the
// registry needs no init call and no particular order of initialisers.
context_test::EventLog gEarlyLog;
const auto gEarlyListener = gEarlyLog.recorder("early");
const bool gEarlyRound = [] {
    ScopedThreadName::registerCallback(gEarlyListener);
    const ScopedThreadName scope("static-init", true);
    return true;
}();

TEST(ScopedThreadNameStartUp, ListenersWorkFromStaticInitialisers) {
    EXPECT_TRUE(gEarlyRound);
    EXPECT_EQ(gEarlyLog.take(), "early+ early- ");
    ScopedThreadName::unRegisterCallback(gEarlyListener);
}

// Records the global registry's notifications for the length of a test.
class ScopedThreadNameTest : public ::testing::Test {
protected:
    void SetUp() override { ScopedThreadName::registerCallback(recorder); }
    void TearDown() override { ScopedThreadName::unRegisterCallback(recorder); }
    context_test::EventLog log;
    std::shared_ptr<context_test::Recorder> recorder = log.recorder("L");
};

TEST_F(ScopedThreadNameTest, NamesTheThreadForTheScope) {
    using Make = std::function<std::unique_ptr<ScopedThreadName>()>;
    const struct {
        Make make;
        std::string expected;
    } cases[] = {
        {[] { return std::make_unique<ScopedThreadName>("worker", true); }, "worker"},
        {[] { return std::make_unique<ScopedThreadName>(clientConnect()); },
         "Client.cpp:120:connect"},
        {[] { return std::make_unique<ScopedThreadName>("Net", clientConnect()); },
         "Net:Client.cpp:120:connect"},
        {[] { return std::make_unique<ScopedThreadName>("", clientConnect()); },
         "Client.cpp:120:connect"},
        {[] { return std::make_unique<ScopedThreadName>(typeid(Net), clientConnect()); },
         std::string("Client.cpp:120:<") + typeid(Net).name() + ">connect"},
        {[] { return std::make_unique<ScopedThreadName>(std::string(64, 'n'), true); },
         std::string(63, 'n')},
    };
    const std::string oldName = "an old name of forty bytes, kept whole..";
    for (const auto& c : cases) {
        SCOPED_TRACE(c.expected);
        const auto names = onNewThread([&] {
            Strand::setThreadName(oldName);
            auto scope = c.make();
            const std::string during = Strand::getThreadName();
            scope.reset();
            return std::make_pair(during, Strand::getThreadName());
        });
        EXPECT_EQ(names, std::make_pair(c.expected, oldName));
        EXPECT_EQ(log.take(), "L+ L- ") << "every form notifies";
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
            EXPECT_EQ(log.take(), "L+ ");
        }
        EXPECT_EQ(Strand::getThreadName(), "before");
        EXPECT_EQ(log.take(), "L- ");
        {
            const ScopedThreadName quiet("quiet", false);
            const ScopedThreadName inner("inner", true);
        }
        EXPECT_EQ(log.take(), "L+ L- ") << "a quiet scope never takes the turn";
        return 0;
    });
}

TEST_F(ScopedThreadNameTest, CarriesTheLocationsHintAndRestoresTheThreads) {
    const auto click = std::make_shared<hint>("hint123456", "click");
    enum class Form { location, type, name };
    const struct {
        const char* label;
        bool ownHint;  // tap, hint000001
        std::shared_ptr<hint> carried;
        Form form;
        const char* during;
        const char* after;
    } cases[] = {{"no own hint", false, click, Form::location, "click", ""},
                 {"own hint comes back", true, click, Form::location, "click", "tap"},
                 {"same id keeps the own name", true, std::make_shared<hint>("hint000001", "click"),
                  Form::location, "tap", "tap"},
                 {"type form: kept, then cleared", true, click, Form::type, "tap", ""},
                 {"name form: kept, then cleared", true, click, Form::name, "tap", ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        onNewThread([&] {
            if (c.ownHint) {
                hint("hint000001", "tap").setAsExternalInputHint();
            }
            const auto store = std::make_shared<context_store>();
            {
                const auto loc = clientConnect(c.carried, store);
                const auto scope =
                    c.form == Form::location ? std::make_unique<ScopedThreadName>(loc)
                    : c.form == Form::type   ? std::make_unique<ScopedThreadName>(typeid(Net), loc)
                                             : std::make_unique<ScopedThreadName>("n", true);
                EXPECT_EQ(hint::getExternalInputHintName(), c.during);
            }
            EXPECT_EQ(hint::getExternalInputHintName(), c.after);
            EXPECT_EQ(context_store::getStore().lock() == store, c.form == Form::location)
                << "the carried store stays after the scope";
            return 0;
        });
    }
}

TEST_F(ScopedThreadNameTest, LocationWithoutFileKeepsTheNameAndIsSilent) {
    const auto after = onNewThread([] {
        Strand::setThreadName("kept");
        {
            const ScopedThreadName scope(location{nullptr, "f", nullptr, {}, 1});
            EXPECT_EQ(Strand::getThreadName(), "kept");
        }
        return Strand::getThreadName();
    });
    EXPECT_EQ(after, "") << "the end names the thread with what it saved: nothing";
    EXPECT_EQ(log.take(), "");
}

TEST_F(ScopedThreadNameTest, ThrowingListenerIsDroppedByLocationForms) {
    struct Thrower : Strand::IScopedThreadCallback {
        void onStarted() override { throw std::runtime_error("start"); }
        void onEnded() override {}
    };
    const auto thrower = std::make_shared<Thrower>();
    ScopedThreadName::unRegisterCallback(recorder);
    ScopedThreadName::registerCallback(thrower);
    ScopedThreadName::registerCallback(recorder);
    onNewThread([&] {
        hint("hint000001", "tap").setAsExternalInputHint();
        {
            const ScopedThreadName scope(
                clientConnect(std::make_shared<hint>("hint123456", "click")));
            EXPECT_EQ(hint::getExternalInputHintName(), "tap") << "later steps are skipped";
        }
        EXPECT_EQ(hint::getExternalInputHintName(), "") << "no hint was saved";
        EXPECT_EQ(log.take(), "L- ") << "an end whose start was cut short";
        EXPECT_THROW(ScopedThreadName("named", true), std::runtime_error);
        ScopedThreadName::unRegisterCallback(thrower);
        const ScopedThreadName next("next", true);
        EXPECT_EQ(log.take(), "L+ ") << "a failed constructor does not keep the turn";
        return 0;
    });
}

}  // namespace

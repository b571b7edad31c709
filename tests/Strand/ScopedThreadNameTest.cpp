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
using Events = std::vector<std::string>;

struct Net {};

location clientConnect(std::shared_ptr<hint> carried = nullptr,
                       std::weak_ptr<context_store> store = {}) {
    return location{"/src/net/Client.cpp", "connect", std::move(carried), std::move(store), 120};
}

// Records the global registry's notifications for the length of a test.
class ScopedThreadNameTest : public ::testing::Test {
protected:
    void SetUp() override { ScopedThreadName::registerCallback(recorder); }
    void TearDown() override {
        ScopedThreadName::unRegisterCallback(recorder);
        ScopedThreadName::initNotifier();
    }
    context_test::EventLog log;
    std::shared_ptr<context_test::Recorder> recorder = log.recorder("L");
};

TEST_F(ScopedThreadNameTest, NamesTheThreadForTheScope) {
    const std::string typeName = typeid(Net).name();
    const struct {
        const char* label;
        std::function<std::unique_ptr<ScopedThreadName>()> make;
        std::string expected;
    } cases[] = {
        {"name", [] { return std::make_unique<ScopedThreadName>("worker", true); }, "worker"},
        {"location", [] { return std::make_unique<ScopedThreadName>(clientConnect()); },
         "Client.cpp:120:connect"},
        {"name and location",
         [] { return std::make_unique<ScopedThreadName>("Net", clientConnect()); },
         "Net:Client.cpp:120:connect"},
        {"empty name and location",
         [] { return std::make_unique<ScopedThreadName>("", clientConnect()); },
         "Client.cpp:120:connect"},
        {"type and location",
         [] { return std::make_unique<ScopedThreadName>(typeid(Net), clientConnect()); },
         "Client.cpp:120:<" + typeName + ">connect"},
        {"64 bytes cut to 63",
         [] { return std::make_unique<ScopedThreadName>(std::string(64, 'n'), true); },
         std::string(63, 'n')},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        const auto names = onNewThread([&] {
            Strand::setThreadName("an old name of forty bytes, kept whole..");
            auto scope = c.make();
            const std::string during = Strand::getThreadName();
            scope.reset();
            return std::make_pair(during, Strand::getThreadName());
        });
        EXPECT_EQ(names.first, c.expected);
        EXPECT_EQ(names.second, "an old name of forty bytes, kept whole..");
        EXPECT_EQ(log.take(), (Events{"L+", "L-"})) << "every form notifies";
    }
}

TEST_F(ScopedThreadNameTest, OnlyTheOutermostNotifyingScopeNotifies) {
    onNewThread([&] {
        Strand::setThreadName("before");
        {
            const ScopedThreadName outer("outer", true);
            EXPECT_EQ(log.take(), Events{"L+"});
            {
                const ScopedThreadName inner("inner", true);
                const ScopedThreadName quiet("quiet", false);
            }
            EXPECT_EQ(Strand::getThreadName(), "outer");
            EXPECT_TRUE(log.take().empty());
        }
        EXPECT_EQ(Strand::getThreadName(), "before");
        EXPECT_EQ(log.take(), Events{"L-"});
        {
            const ScopedThreadName quiet("quiet", false);
            const ScopedThreadName inner("inner", true);
        }
        EXPECT_EQ(log.take(), (Events{"L+", "L-"})) << "a quiet scope never takes the turn";
        return 0;
    });
}

TEST_F(ScopedThreadNameTest, CarriesTheLocationsHintAndRestoresTheThreads) {
    const auto click = std::make_shared<hint>("hint123456", "click");
    const auto sameId = std::make_shared<hint>("hint000001", "click");
    const auto tap = std::make_shared<hint>("hint000001", "tap");
    enum class Form { location, type, name };
    const struct {
        const char* label;
        std::shared_ptr<hint> own;
        std::shared_ptr<hint> carried;
        Form form;
        const char* during;
        const char* after;
    } cases[] = {{"no own hint", nullptr, click, Form::location, "click", ""},
                 {"own hint comes back", tap, click, Form::location, "click", "tap"},
                 {"same id keeps the own name", tap, sameId, Form::location, "tap", "tap"},
                 {"type form: kept, then cleared", tap, click, Form::type, "tap", ""},
                 {"name form: kept, then cleared", tap, nullptr, Form::name, "tap", ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        onNewThread([&] {
            if (c.own) {
                c.own->setAsExternalInputHint();
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
    log.take();
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
    EXPECT_EQ(after, "") << "the end always names the thread, here with nothing saved";
    EXPECT_TRUE(log.take().empty());
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
            EXPECT_EQ(hint::getExternalInputHintName(), "tap")
                << "the steps after the throw are skipped";
        }
        EXPECT_EQ(hint::getExternalInputHintName(), "") << "no hint was saved";
        EXPECT_EQ(log.take(), Events{"L-"}) << "an end whose start was cut short";
        EXPECT_THROW(ScopedThreadName("named", true), std::runtime_error);
        ScopedThreadName::unRegisterCallback(thrower);
        const ScopedThreadName next("next", true);
        EXPECT_EQ(log.take(), Events{"L+"}) << "a failed constructor does not keep the turn";
        return 0;
    });
    log.take();
}

TEST_F(ScopedThreadNameTest, DisabledRegistryDeliversNothing) {
    onNewThread([&] {
        ScopedThreadName::deinitNotifier();
        ScopedThreadName::registerCallback(recorder);
        auto scope = std::make_unique<ScopedThreadName>("one", true);
        ScopedThreadName::initNotifier();
        ScopedThreadName::registerCallback(recorder);
        scope.reset();
        EXPECT_EQ(log.take(), Events{"L-"}) << "the turn taken while disabled still ends";
        return 0;
    });
}

TEST(ScopedThreadNameFile, LastPathComponent) {
    const struct {
        const char* path;
        const char* expected;
    } cases[] = {
        {"a\\b/c", "c"}, {"a/b\\c", "c"}, {"logs/", ""}, {"main.cpp", "main.cpp"}, {"", ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(ScopedThreadName::filenameFromPath(c.path), c.expected);
    }
}

}  // namespace

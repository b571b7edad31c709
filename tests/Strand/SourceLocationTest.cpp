#include "Strand/SourceLocation.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

#include "ContextTestSupport.h"

namespace {

using context_test::isEmptyRef;
using context_test::onNewThread;
using quill::external_input::context_store;
using quill::external_input::hint;
using quill::source::location;

TEST(SourceLocation, TextIsFileNameLineFunctionAndHint) {
    const auto click = std::make_shared<hint>("hint042017", "click");
    const auto unnamed = std::make_shared<hint>("hint042017", "");
    const struct {
        const char* file;
        int line;
        const char* function;
        std::shared_ptr<hint> carried;
        const char* expected;
    } cases[] = {
        {"/home/build/src/net/Client.cpp", 120, "connect", nullptr, "Client.cpp:120:connect"},
        {"/home/build/src/net/Client.cpp", 120, "connect", click,
         "Client.cpp:120:connect externalInputHint=click hint042017"},
        {nullptr, 120, "connect", nullptr, ":120:connect"},
        {"src/", 7, "f", nullptr, ":7:f"},
        {"main.cpp", 7, "f", nullptr, "main.cpp:7:f"},
        {"d:\\src\\a.cpp", 7, "f", nullptr, "a.cpp:7:f"},
        {"a.cpp", -1, "f", nullptr, "a.cpp:4294967295:f"},
        {"a.cpp", 7, "f", unnamed, "a.cpp:7:f"},
        {"a.cpp", 7, nullptr, nullptr, "a.cpp:7:"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.expected);
        const location loc{c.file, c.function, c.carried, {}, static_cast<std::uint32_t>(c.line)};
        std::ostringstream os;
        os << loc;
        EXPECT_EQ(os.str(), c.expected);
        EXPECT_EQ(loc.to_string(), c.expected);
    }
}

TEST(SourceLocation, StreamOperatorUsesTheStreamsNumberFormat) {
    std::ostringstream os;
    os << std::hex << location{"a.cpp", "f", nullptr, {}, 255};
    EXPECT_EQ(os.str(), "a.cpp:ff:f");
}

TEST(SourceLocation, CurrentCapturesTheThreadsContext) {
    enum class Store { none, live, expired };
    const struct {
        const char* label;
        bool withHint;
        Store store;
        bool expectHint;
        bool expectStore;
    } cases[] = {{"nothing", false, Store::none, false, false},
                 {"live store only", false, Store::live, false, true},
                 {"expired store only", false, Store::expired, false, false},
                 {"hint only", true, Store::none, true, false},
                 {"hint and store", true, Store::live, true, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        onNewThread([&] {
            auto store = c.store == Store::none ? nullptr : context_store::getOrCreateStore();
            if (c.store == Store::expired) {
                store.reset();
            }
            if (c.withHint) {
                hint("hint000001", "tap").setAsExternalInputHint();
            }
            const location loc = location::current("/x/y.cpp", 9, "run");
            hint::clearExternalInputHint();
            EXPECT_EQ(loc.to_string(),
                      c.expectHint ? "y.cpp:9:run externalInputHint=tap hint000001" : "y.cpp:9:run")
                << "the record keeps what it captured";
            EXPECT_EQ(loc.contextStore.lock(), c.expectStore ? store : nullptr);
            if (!c.withHint && !c.expectStore) {
                EXPECT_TRUE(isEmptyRef(loc.contextStore)) << "no expired copy";
            }
            return 0;
        });
    }
}

TEST(SourceLocation, CurrentWithoutContextAllocatesNothing) {
    const auto counts = onNewThread([] {
        const std::size_t start = context_test::allocationsOnThisThread();
        const location first = location::current("a.cpp", 1, "f");
        const location second = location::current("a.cpp", 2, "f");
        const std::size_t withoutContext = context_test::allocationsOnThisThread() - start;
        hint("hint000001", "tap").setAsExternalInputHint();
        const std::size_t beforeHint = context_test::allocationsOnThisThread();
        const location third = location::current("a.cpp", 3, "f");
        return std::make_pair(withoutContext, context_test::allocationsOnThisThread() - beforeHint);
    });
    EXPECT_EQ(counts.first, 0u) << "first and later calls on a thread without context";
    EXPECT_EQ(counts.second, 1u) << "with a hint: the one shared copy of it";
}

}  // namespace

#include "Strand/ExternalInputHint.h"

#include <gtest/gtest.h>

#include <climits>
#include <latch>
#include <set>
#include <sstream>
#include <thread>
#include <vector>

#include "ContextTestSupport.h"
#include "RandomUtils/RandomUtils.h"
#include "Strand/SourceLocation.h"

namespace {

using context_test::onNewThread;
using quill::external_input::context_store;
using quill::external_input::hint;

// The counter part of a generated id: its last three digits.
int counterPart(const std::string& id) { return std::stoi(id.substr(id.size() - 3)); }

TEST(ExternalInputHint, FormatsIdsWithSixZeroFilledCharacters) {
    const struct {
        int value;
        const char* expected;
    } cases[] = {{0, "hint000000"},           {42017, "hint042017"}, {999999, "hint999999"},
                 {1234567, "hint1234567"},    {-5, "hint0000-5"},    {-12345, "hint-12345"},
                 {INT_MIN, "hint-2147483648"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(hint::formatHintIdString(c.value), c.expected);
    }
}

TEST(ExternalInputHint, CreatedHintLivesAsLongAsItsScope) {
    const auto previous = quill::overrideable::g_randFunc;
    std::vector<std::tuple<int, int, bool>> draws;
    quill::overrideable::g_randFunc = [&](int low, int high, bool sign) {
        draws.emplace_back(low, high, sign);
        return 42;
    };
    onNewThread([] {
        EXPECT_EQ(hint::getExternalInputHint(), nullptr) << "a fresh thread has no hint";
        EXPECT_EQ(hint::getExternalInputHintName(), "");
        EXPECT_EQ(hint::getExternalInputHintId(), "");
        std::string firstId;
        {
            const auto scope = hint::createExternalInputHint("click");
            firstId = hint::getExternalInputHintId();
            EXPECT_EQ(hint::getExternalInputHintName(), "click");
            EXPECT_EQ(firstId.substr(0, 7), "hint042");
            {
                const auto inner = hint::createExternalInputHint("tap");
                EXPECT_EQ(
                    (counterPart(hint::getExternalInputHintId()) + 1000 - counterPart(firstId)) %
                        1000,
                    1);
            }
            EXPECT_EQ(hint::getExternalInputHint(), nullptr) << "the inner scope cleared it";
        }
        EXPECT_EQ(hint::getExternalInputHintName(), "");
        return 0;
    });
    quill::overrideable::g_randFunc = previous;
    EXPECT_EQ(draws, (std::vector<std::tuple<int, int, bool>>(2, {0, 999, false})));
}

TEST(ExternalInputHint, EmptyRandomHookThrowsAndSetsNothing) {
    const auto previous = std::exchange(quill::overrideable::g_randFunc, nullptr);
    onNewThread([] {
        EXPECT_THROW(hint::createExternalInputHint("click"), std::bad_function_call);
        EXPECT_EQ(hint::getExternalInputHint(), nullptr);
        return 0;
    });
    quill::overrideable::g_randFunc = previous;
}

TEST(ExternalInputHint, NameDecidesWhetherThereIsAHint) {
    onNewThread([] {
        hint("hint000007", "").setAsExternalInputHint();
        EXPECT_EQ(hint::getExternalInputHintId(), "") << "an id without a name counts for nothing";
        EXPECT_EQ(hint::getExternalInputHint(), nullptr);
        hint("hint000001", "tap").setAsExternalInputHint();
        const auto first = hint::getExternalInputHint();
        const auto second = hint::getExternalInputHint();
        EXPECT_NE(first, second) << "every call hands out an object of its own";
        EXPECT_EQ(second->getHintId(), "hint000001");
        hint::clearExternalInputHint();
        EXPECT_EQ(first->getHintName(), "tap") << "handed-out hints do not follow the thread";
        return 0;
    });
}

TEST(ExternalInputHint, CopyThreadStorageCarriesNewIdsAndLiveStores) {
    const auto click = std::make_shared<hint>("hint123456", "click");
    const auto sameIdOtherName = std::make_shared<hint>("hint000001", "click");
    const struct {
        const char* label;
        std::shared_ptr<hint> carried;
        bool liveStore;
        const char* expectedName;
    } cases[] = {{"new id", click, false, "click"},
                 {"same id, other name", sameIdOtherName, false, "tap"},
                 {"no hint, dead store", nullptr, false, "tap"},
                 {"no hint, live store", nullptr, true, "tap"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        onNewThread([&] {
            const auto own = context_store::getOrCreateStore();
            hint("hint000001", "tap").setAsExternalInputHint();
            auto carriedStore = std::make_shared<context_store>();
            quill::source::location location{"a.cpp", "f", c.carried, carriedStore, 1};
            if (!c.liveStore) {
                carriedStore.reset();
            }
            hint::copyThreadStorageIfNecessary(location);
            EXPECT_EQ(hint::getExternalInputHintName(), c.expectedName);
            EXPECT_EQ(context_store::getStore().lock(), c.liveStore ? carriedStore : own);
            return 0;
        });
    }
}

TEST(ExternalInputHint, StreamWritesNameSpaceId) {
    std::ostringstream os;
    os << hint() << "|" << hint("hint042017", "click");
    EXPECT_EQ(os.str(), " |click hint042017");
}

TEST(ExternalInputHint, ConcurrentCreationsCountEveryHint) {
    constexpr int kThreads = 4;
    constexpr int kPerThread = 50;
    std::latch start(kThreads);
    std::mutex mutex;
    std::multiset<int> counters;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            for (int i = 0; i < kPerThread; ++i) {
                const auto scope = hint::createExternalInputHint("click");
                const std::lock_guard<std::mutex> lock(mutex);
                counters.insert(counterPart(hint::getExternalInputHintId()));
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    // 200 consecutive counts modulo 1000: no repeats and exactly one gap.
    int gaps = 0;
    for (const int value : counters) {
        EXPECT_EQ(counters.count(value), 1u) << value;
        gaps += counters.count((value + 1) % 1000) == 0 ? 1 : 0;
    }
    EXPECT_EQ(gaps, 1);
}

}  // namespace

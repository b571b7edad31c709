#include "Strand/ExternalInputHint.h"

#include <gtest/gtest.h>

#include <climits>
#include <latch>
#include <set>
#include <sstream>
#include <thread>

#include "ContextTestSupport.h"
#include "RandomUtils/RandomUtils.h"

namespace {

using context_test::onNewThread;
using quill::external_input::hint;

// The counter part of a generated id: its last three digits.
int counterPart(const std::string& id) { return std::stoi(id.substr(id.size() - 3)); }

TEST(ExternalInputHint, FormatsIdsWithSixZeroFilledCharacters) {
    const std::pair<int, const char*> cases[] = {
        {0, "hint000000"},           {42017, "hint042017"}, {999999, "hint999999"},
        {1234567, "hint1234567"},    {-5, "hint0000-5"},    {-12345, "hint-12345"},
        {INT_MIN, "hint-2147483648"}};
    for (const auto& [value, expected] : cases) {
        SCOPED_TRACE(value);
        EXPECT_EQ(hint::formatHintIdString(value), expected);
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
        std::string firstId;
        {
            const auto scope = hint::createExternalInputHint("click");
            firstId = hint::getExternalInputHintId();
            EXPECT_EQ(hint::getExternalInputHintName(), "click");
            EXPECT_EQ(firstId.substr(0, 7), "hint042");
            {
                const auto inner = hint::createExternalInputHint("tap");
                const int step = counterPart(hint::getExternalInputHintId()) - counterPart(firstId);
                EXPECT_EQ((step + 1000) % 1000, 1);
            }
            EXPECT_EQ(hint::getExternalInputHint(), nullptr) << "the inner scope cleared it";
        }
        EXPECT_EQ(hint::getExternalInputHintId(), "");
        return 0;
    });
    quill::overrideable::g_randFunc = previous;
    EXPECT_EQ(draws, (std::vector<std::tuple<int, int, bool>>(2, {0, 999, false})));
}

TEST(ExternalInputHint, NameDecidesWhetherThereIsAHint) {
    onNewThread([] {
        hint("hint000007", "").setAsExternalInputHint();
        EXPECT_EQ(hint::getExternalInputHintId(), "") << "an id without a name counts for nothing";
        hint("hint000001", "tap").setAsExternalInputHint();
        const auto first = hint::getExternalInputHint();
        EXPECT_NE(first, hint::getExternalInputHint()) << "every call makes a new object";
        hint::clearExternalInputHint();
        EXPECT_EQ(first->getHintId(), "hint000001") << "handed-out hints do not follow the thread";
        std::ostringstream os;
        os << hint() << "|" << *first;
        EXPECT_EQ(os.str(), " |tap hint000001");
        return 0;
    });
}

TEST(ExternalInputHint, ConcurrentCreationsCountEveryHint) {
    constexpr int kThreads = 4, kPerThread = 50;
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

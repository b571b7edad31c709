#include "RandomUtils/RandomUtils.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <tuple>
#include <vector>

namespace {

using quill::overrideable::g_randFunc;

// Restores the default hook after each test.
class Random : public ::testing::Test {
protected:
    void TearDown() override { g_randFunc = &quill::defaultRand; }

    // A hook that records its arguments and answers with `answer`.
    void installRecorder(int answer) {
        g_randFunc = [this, answer](int low, int high, bool sign) {
            draws.emplace_back(low, high, sign);
            return answer;
        };
    }

    std::vector<std::tuple<int, int, bool>> draws;
};

TEST_F(Random, DefaultDrawsStayInRangeAndApplySign) {
    EXPECT_EQ(quill::rand(7, 7, true), 7) << "equal bounds never draw a sign";
    int negatives = 0;
    constexpr int kDraws = 20000;
    for (int i = 0; i < kDraws; ++i) {
        const int value = quill::rand(1, 100, true);
        ASSERT_TRUE((value >= 1 && value <= 100) || (value >= -100 && value <= -1)) << value;
        negatives += value < 0;
    }
    // Binomial(20000, 0.5): +-5% is more than 14 standard deviations.
    EXPECT_GT(negatives, kDraws * 45 / 100);
    EXPECT_LT(negatives, kDraws * 55 / 100);
}

TEST_F(Random, DefaultDistributionIsUniform) {
    std::array<int, 10> buckets{};
    constexpr int kDraws = 100000;
    for (int i = 0; i < kDraws; ++i) {
        const int value = quill::rand(0, 9, false);
        ASSERT_GE(value, 0);
        ASSERT_LE(value, 9);
        ++buckets[static_cast<std::size_t>(value)];
    }
    // Each bucket expects 10000 with a standard deviation of about 95.
    for (const int count : buckets) {
        EXPECT_NEAR(count, kDraws / 10, 600);
    }
}

TEST_F(Random, FunctionsDrawThroughTheHook) {
    struct Case {
        const char* name;
        int answer;
        std::function<int()> call;
        int expected;
        std::vector<std::tuple<int, int, bool>> expectedDraws;
    };
    const std::vector<Case> cases = {
        {"rand", 5, [] { return quill::rand(3, 9, true); }, 5, {{3, 9, true}}},
        {"rand_bool yields 1", 1, [] { return int{quill::rand_bool()}; }, 1, {{1, 2, false}}},
        {"rand_bool yields 2", 2, [] { return int{quill::rand_bool()}; }, 0, {{1, 2, false}}},
        {"spread", -3, [] { return quill::uniform_rand_dist(10, 3); }, 7, {{0, 3, true}}},
        {"spread wraps",
         1,
         [] { return quill::uniform_rand_dist(2147483647, 1); },
         -2147483647 - 1,
         {{0, 1, true}}},
        {"percent 100", 100, [] { return int{quill::isPercentSample(100)}; }, 1, {{1, 100, false}}},
        {"percent 1 of 1", 1, [] { return int{quill::isPercentSample(1)}; }, 1, {{1, 100, false}}},
        {"percent 99 of 100",
         100,
         [] { return int{quill::isPercentSample(99)}; },
         0,
         {{1, 100, false}}},
        {"percent 0", 1, [] { return int{quill::isPercentSample(0)}; }, 0, {}},
        {"percent 101", 1, [] { return int{quill::isPercentSample(101)}; }, 0, {}},
        {"percent -3", 1, [] { return int{quill::isPercentSample(-3)}; }, 0, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        draws.clear();
        installRecorder(c.answer);
        EXPECT_EQ(c.call(), c.expected);
        EXPECT_EQ(draws, c.expectedDraws);
    }
}

TEST_F(Random, SignIsASecondDrawThroughTheHook) {
    quill::Generator generator;
    installRecorder(2);
    const int value = generator.getRandomNumber(5, 6, true);
    EXPECT_TRUE(value == -5 || value == -6) << value;
    EXPECT_EQ(draws, (std::vector<std::tuple<int, int, bool>>{{1, 2, false}}));
}

TEST_F(Random, SpreadStaysWithinBounds) {
    EXPECT_EQ(quill::uniform_rand_dist(10, 0), 10);
    for (int i = 0; i < 2000; ++i) {
        const int value = quill::uniform_rand_dist(10, 3);
        ASSERT_GE(value, 7);
        ASSERT_LE(value, 13);
    }
}

TEST_F(Random, EmptyHookThrows) {
    g_randFunc = nullptr;
    EXPECT_THROW(quill::rand(1, 2, false), std::bad_function_call);
    EXPECT_THROW(quill::rand_bool(), std::bad_function_call);
}

}  // namespace

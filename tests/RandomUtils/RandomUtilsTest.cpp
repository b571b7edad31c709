#include "RandomUtils/RandomUtils.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <functional>

using quill::overrideable::g_randFunc;

TEST(Random, FunctionsMapTheHooksAnswer) {
    const auto randBool = [] { return int{quill::rand_bool()}; };
    const struct {
        const char* call;
        int answer;  // what the hook returns to every draw
        int (*run)();
        int expected;
    } cases[] = {{"rand", 5, [] { return quill::rand(3, 9, true); }, 5},
                 {"rand_bool on 1", 1, +randBool, 1},
                 {"rand_bool on 2", 2, +randBool, 0},
                 {"uniform_rand_dist", -3, [] { return quill::uniform_rand_dist(10, 3); }, 7},
                 {"uniform_rand_dist wraps", 1, [] { return quill::uniform_rand_dist(INT_MAX, 1); },
                  INT_MIN},
                 {"100% on 100", 100, +[] { return int{quill::isPercentSample(100)}; }, 1},
                 {"99% on 100", 100, +[] { return int{quill::isPercentSample(99)}; }, 0},
                 {"0%", 1, +[] { return int{quill::isPercentSample(0)}; }, 0},
                 {"101%", 1, +[] { return int{quill::isPercentSample(101)}; }, 0},
                 // The sign is a second draw through the hook, 2 meaning negative.
                 {"a signed number", 2,
                  [] { return quill::Generator().getRandomNumber(5, 6, true) / 5; }, -1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.call);
        g_randFunc = [answer = c.answer](int, int, bool) { return answer; };
        EXPECT_EQ(c.run(), c.expected);
    }
    g_randFunc = nullptr;
    EXPECT_THROW(quill::rand(1, 2, false), std::bad_function_call);
    g_randFunc = &quill::defaultRand;
}

TEST(Random, DefaultDrawsAreUniformInRangeWithFairSigns) {
    EXPECT_EQ(quill::rand(7, 7, true), 7) << "equal bounds never draw a sign";
    EXPECT_EQ(quill::uniform_rand_dist(10, 0), 10);
    std::array<int, 10> buckets{};
    int negatives = 0;
    for (int i = 0; i < 100000; ++i) {
        const int value = quill::rand(1, 10, true), spread = quill::uniform_rand_dist(10, 3);
        ASSERT_TRUE(value != 0 && value >= -10 && value <= 10 && spread >= 7 && spread <= 13);
        negatives += value < 0 ? 1 : 0;
        ++buckets[static_cast<std::size_t>(std::abs(value) - 1)];
    }
    // Binomial(100000, 1/2) and (100000, 1/10): both margins exceed 12 standard deviations.
    EXPECT_NEAR(negatives, 50000, 2000);
    for (const int count : buckets) EXPECT_NEAR(count, 10000, 1200);
}

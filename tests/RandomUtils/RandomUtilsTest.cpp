#include "RandomUtils/RandomUtils.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <functional>
#include <tuple>
#include <vector>

namespace {

using quill::overrideable::g_randFunc;

TEST(Random, FunctionsDrawThroughTheHook) {
    using Draws = std::vector<std::tuple<int, int, bool>>;
    Draws draws;
    const auto percent = [](int p) { return [p] { return int{quill::isPercentSample(p)}; }; };
    const auto randBool = [] { return int{quill::rand_bool()}; };
    // The hook's answer, the call, its expected result and the draws it makes.
    const std::tuple<int, std::function<int()>, int, Draws> cases[] = {
        {5, [] { return quill::rand(3, 9, true); }, 5, {{3, 9, true}}},
        {1, randBool, 1, {{1, 2, false}}},
        {2, randBool, 0, {{1, 2, false}}},
        {-3, [] { return quill::uniform_rand_dist(10, 3); }, 7, {{0, 3, true}}},
        {1, [] { return quill::uniform_rand_dist(INT_MAX, 1); }, INT_MIN, {{0, 1, true}}},
        {100, percent(100), 1, {{1, 100, false}}},
        {1, percent(1), 1, {{1, 100, false}}},
        {100, percent(99), 0, {{1, 100, false}}},
        {1, percent(0), 0, {}},
        {1, percent(101), 0, {}},
        {1, percent(-3), 0, {}},
        // The sign is a second draw through the hook, 2 meaning negative.
        {2,
         [] { return quill::Generator().getRandomNumber(5, 6, true) / 5; },
         -1,
         {{1, 2, false}}}};
    for (const auto& [answer, call, expected, expectedDraws] : cases) {
        draws.clear();
        g_randFunc = [&draws, answer = answer](int low, int high, bool sign) {
            return draws.emplace_back(low, high, sign), answer;
        };
        EXPECT_EQ(std::tuple(call(), draws), std::tuple(expected, expectedDraws)) << expected;
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

}  // namespace

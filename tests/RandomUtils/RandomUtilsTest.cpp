#include "RandomUtils/RandomUtils.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <tuple>
#include <vector>

namespace {

using quill::overrideable::g_randFunc;
using Draws = std::vector<std::tuple<int, int, bool>>;

TEST(Random, FunctionsDrawThroughTheHook) {
    Draws draws;
    const auto b = [](bool value) { return int{value}; };
    // The hook's answer, the call, its expected result and the draws it makes.
    const std::tuple<int, std::function<int()>, int, Draws> cases[] = {
        {5, [] { return quill::rand(3, 9, true); }, 5, {{3, 9, true}}},
        {1, [&] { return b(quill::rand_bool()); }, 1, {{1, 2, false}}},
        {2, [&] { return b(quill::rand_bool()); }, 0, {{1, 2, false}}},
        {-3, [] { return quill::uniform_rand_dist(10, 3); }, 7, {{0, 3, true}}},
        {1,
         [] { return quill::uniform_rand_dist(2147483647, 1); },
         -2147483647 - 1,
         {{0, 1, true}}},
        {100, [&] { return b(quill::isPercentSample(100)); }, 1, {{1, 100, false}}},
        {1, [&] { return b(quill::isPercentSample(1)); }, 1, {{1, 100, false}}},
        {100, [&] { return b(quill::isPercentSample(99)); }, 0, {{1, 100, false}}},
        {1, [&] { return b(quill::isPercentSample(0)); }, 0, {}},
        {1, [&] { return b(quill::isPercentSample(101)); }, 0, {}},
        {1, [&] { return b(quill::isPercentSample(-3)); }, 0, {}},
        // A sign is a second draw through the hook: 2 of 1..2 means negative.
        {2,
         [] { return quill::Generator().getRandomNumber(5, 6, true) / 5; },
         -1,
         {{1, 2, false}}}};
    for (const auto& [answer, call, expected, expectedDraws] : cases) {
        draws.clear();
        g_randFunc = [&draws, answer = answer](int low, int high, bool sign) {
            draws.emplace_back(low, high, sign);
            return answer;
        };
        EXPECT_EQ(std::tuple(call(), draws), std::tuple(expected, expectedDraws)) << expected;
    }
    g_randFunc = nullptr;
    EXPECT_THROW(quill::rand(1, 2, false), std::bad_function_call);
    EXPECT_THROW(quill::rand_bool(), std::bad_function_call);
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
    // Binomial(100000, 0.5) and (100000, 0.1): these margins are over 12 standard deviations.
    EXPECT_NEAR(negatives, 50000, 2000);
    for (const int count : buckets) EXPECT_NEAR(count, 10000, 1200);
}

}  // namespace

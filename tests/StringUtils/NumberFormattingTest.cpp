#include "StringUtils/NumberFormatting.h"

#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>

namespace {

TEST(NumberFormatting, Integers) {
    EXPECT_EQ(StringUtils::toQuillString(-5), "-5");
    EXPECT_EQ(StringUtils::toQuillString(0), "0");
    EXPECT_EQ(StringUtils::toQuillString(INT_MIN), "-2147483648");
    EXPECT_EQ(StringUtils::uint64ToQuillString(ULLONG_MAX), "18446744073709551615");
    EXPECT_EQ(StringUtils::fromBool(true), "true");
    EXPECT_EQ(StringUtils::fromBool(false), "false");
    EXPECT_EQ(StringUtils::trueValue(), "True");
    EXPECT_EQ(StringUtils::falseValue(), "False");
}

std::string printfG(float value) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%g", static_cast<double>(value));
    return buffer;
}

TEST(NumberFormatting, FloatsAsPrintfG) {
    const std::pair<float, const char*> cases[] = {
        {0.5f, "0.5"},       {100.0f, "100"}, {3.14159265f, "3.14159"}, {1234567.0f, "1.23457e+06"},
        {0.00001f, "1e-05"}, {-0.0f, "-0"},   {999999.5f, "1e+06"},     {0.0001f, "0.0001"},
    };
    for (const auto& [value, text] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(StringUtils::floatToQuillString(value), text);
    }
    const float specials[] = {
        std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity(),
        std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::denorm_min(),
        std::numeric_limits<float>::max()};
    for (const float value : specials) {
        EXPECT_EQ(StringUtils::floatToQuillString(value), printfG(value));
    }
    // Any bit pattern, so every exponent and rounding boundary gets its turn.
    std::mt19937 random(20240607);
    for (int i = 0; i < 20000; ++i) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (std::isnan(value)) {
            continue;  // printf may show the sign of a NaN
        }
        SCOPED_TRACE(printfG(value));
        ASSERT_EQ(StringUtils::floatToQuillString(value), printfG(value));
    }
}

TEST(NumberFormatting, StringFormat) {
    EXPECT_EQ(StringUtils::string_format("^\\+?\\d{%d,%d}$", 7u, 21), "^\\+?\\d{7,21}$");
    EXPECT_EQ(StringUtils::string_format("no conversions"), "no conversions");
    EXPECT_EQ(StringUtils::string_format("100%%"), "100%");
    EXPECT_EQ(StringUtils::string_format(""), "");
    EXPECT_EQ(StringUtils::string_format("%s=%05.1f", "pi", 3.14159), "pi=003.1");
    const std::string longText(5000, 'x');
    EXPECT_EQ(StringUtils::string_format("[%s]", longText.c_str()), "[" + longText + "]");
    EXPECT_EQ(StringUtils::string_format("%c", 0), std::string(1, '\0'));
}

}  // namespace

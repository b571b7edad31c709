// Number parsing and formatting.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>

#include "StringUtils/NumberFormatting.h"
#include "StringUtils/NumberParsing.h"

namespace {

using namespace StringUtils;

// Rows of a text, whether parse succeeds, and the out-parameter (before on entry) after it.
template <typename T, typename Parse>
void check(Parse parse, T before, std::initializer_list<std::tuple<std::string, bool, T>> rows) {
    for (const auto& [text, ok, after] : rows) {
        T value = before;
        EXPECT_EQ(parse(text, value), ok) << "'" << text << "'";
        EXPECT_EQ(value, after) << "'" << text << "'";
    }
}

auto inBase(int base) {
    return [base](const std::string& text, unsigned long long& value) {
        return toUnsignedLongLong(text, value, base);
    };
}

// clang-format off
// The std::sto* parsers zero the out-parameter first and keep a number before trailing text; the
// others keep it on failure. Rows sit at the edges: signs, bare points, subnormals, overflow, hex.
TEST(Numbers, Parsers) {
    check<int>(toInteger, 7, {{"  +42", true, 42}, {"-42 ", false, -42}, {"0x1A", false, 0},
        {"2147483648", false, 0}, {"-2147483648", true, INT_MIN}, {" ", false, 0},
        {"- 5", false, 0}, {"-", false, 0}, {"\t-7", true, -7},
        {"00000000000000000000042", true, 42}, {"99999999999999999999", false, 0},
        {"-2147483649", false, 0}});
    check<long>(toLongInteger, 1, {{"9223372036854775807", true, LONG_MAX},
        {"9223372036854775808", false, 0}});
    check<long long>(toLongLongInteger, 1, {{"-9223372036854775808", true, LLONG_MIN},
        {"-9223372036854775809", false, 0}, {"+9223372036854775807x", false, LLONG_MAX}});
    check<double>(toDouble, 1.0, {{"3.5x", false, 3.5}, {"1e-999", false, 0},
        {" -0x1p4", true, -16}, {"", false, 0}, {"inf", true, HUGE_VAL}, {"1.e5", true, 1e5},
        {"+.5", true, 0.5}, {".", false, 0}, {"+-1", false, 0}, {"5.", true, 5}, {"1e+", false, 1},
        {"4.9e-324", false, 0}, {"0e999999", true, 0}, {"1.7976931348623159e308", false, 0},
        {"2.2250738585072014e-308", true, DBL_MIN}, {"x", false, 0}});
    double notANumber = 1.0, negativeZero = 1.0;
    EXPECT_TRUE(toDouble("nan", notANumber) && std::isnan(notANumber));
    EXPECT_TRUE(toDouble("-0.0", negativeZero) && std::signbit(negativeZero));
    check<long>(toMsTime, 9, {{"", true, 0}, {"1500", true, 1500}, {"1500ms", false, 1500},
        {"abc", false, 9}, {"99999999999999999999", false, 9}});
    check<unsigned long long>(inBase(16), 9, {{"", true, 0}, {"0xff", true, 255}, {"fg", false, 15},
        {"g", false, 9}});
    check<unsigned long long>(inBase(10), 9, {{"-1", true, ULLONG_MAX},
        {"18446744073709551616", false, 9}, {"-18446744073709551615", true, 1}, {"+", false, 9},
        {" 5", true, 5}});
    check<unsigned long long>(inBase(0), 9, {{"0x10", true, 16}, {"010", true, 8}});
    // A base strtoull cannot use is no number, whatever the text.
    for (const int base : {1, 37, -1}) {
        SCOPED_TRACE(base);
        check<unsigned long long>(inBase(base), 9, {{"10", false, 9}, {"", false, 9}});
    }
    check<unsigned short>(toInteger16, 9, {{"65535", true, 65535}, {"65536", false, 9},
        {"-1", true, 65535}, {"1 ", false, 9}, {"", false, 9}});
    check<unsigned char>(toInteger8, 9, {{"255", true, 255}, {"256", false, 9}, {"-1", true, 255}});
    // Plain decimal or hexadecimal digits after an optional minus; parsing stops at a later minus.
    check<int>(stringViewToInteger, 9, {{"-2147483648", true, INT_MIN}, {"2147483648", false, 9},
        {"007", true, 7}, {"-0", true, 0}, {"+5", false, 9}, {" 5", false, 9}, {"12-3", true, 12},
        {"-", false, 9}, {"", false, 9}, {"1a", false, 9}, {"\xD9\xA1", false, 9}});
    check<int>(hexStringViewToInteger, 9, {{"fF", true, 255}, {"-1a", true, -26},
        {"7fffffff", true, INT_MAX}, {"80000000", false, 9}, {"-80000000", true, INT_MIN},
        {"0x10", false, 9}, {"g", false, 9}});
    // True for "1" and "true" in any case; an empty text gives the default.
    const struct { std::string text; bool value; } booleans[] = {{"1", true}, {"0", false},
        {"tRuE", true}, {"t", false}, {"true1", false}, {" true", false}, {"", false}};
    for (const auto& c : booleans) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(toBool(c.text), c.value);
        EXPECT_EQ(toBool(c.text, true), c.value || c.text.empty());
        EXPECT_EQ(toBool(c.text, false), c.value);
    }
}

// Exact texts at the boundaries, then printf's "%g" as the reference for any bit pattern.
TEST(Numbers, Formatting) {
    EXPECT_EQ(toQuillString(INT_MIN), "-2147483648");
    EXPECT_EQ(uint64ToQuillString(ULLONG_MAX), "18446744073709551615");
    // Integers at each change of their digit count, against std::to_chars.
    const auto chars = [](auto value) {
        char text[24];
        return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
    };
    for (unsigned long long power = 1; power != 0; power = power > ULLONG_MAX / 10 ? 0 : power * 10)
        for (const unsigned long long value : {power - 1, power, power + 1}) {
            const int small = static_cast<int>(std::min<unsigned long long>(value, INT_MAX));
            EXPECT_EQ(uint64ToQuillString(value), chars(value));
            EXPECT_EQ(toQuillString(small), chars(small));
            EXPECT_EQ(toQuillString(-small), chars(-small));
        }
    const struct { float value; const char* text; } cases[] = {{100.0f, "100"},
        {1234567.0f, "1.23457e+06"}, {0.00001f, "1e-05"}, {-0.0f, "-0"}, {999999.5f, "1e+06"},
        {0.0001f, "0.0001"}, {-INFINITY, "-inf"}, {NAN, "nan"}, {FLT_TRUE_MIN, "1.4013e-45"}};
    // clang-format on
    for (const auto& c : cases) EXPECT_EQ(floatToQuillString(c.value), c.text) << c.text;
    std::mt19937 random(20240607);
    for (int i = 0; i < 20000; ++i) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (std::isnan(value)) continue;  // printf may show the sign of a NaN
        char printed[64];
        std::snprintf(printed, sizeof printed, "%g", static_cast<double>(value));
        ASSERT_EQ(floatToQuillString(value), printed);
    }
    EXPECT_EQ(string_format("^\\+?\\d{%d,%d}$", 7u, 21), "^\\+?\\d{7,21}$");
    EXPECT_EQ(string_format("[%s]", std::string(5000, 'x').c_str()),
              "[" + std::string(5000, 'x') + "]");
    EXPECT_EQ(string_format("%c", 0), std::string(1, '\0'));
}

}  // namespace

#include "StringUtils/NumberParsing.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

namespace {

// One parser row: the out-parameter before the call, the text, and what the call
// gives back in both.
template <typename T>
struct Row {
    std::string text;
    T before;
    bool ok;
    T after;
};

template <typename T, typename Parse>
void checkRows(Parse parse, std::initializer_list<Row<T>> rows) {
    for (const auto& [text, before, ok, after] : rows) {
        SCOPED_TRACE("'" + text + "'");
        T value = before;
        EXPECT_EQ(parse(text, value), ok);
        EXPECT_EQ(value, after);
    }
}

TEST(NumberParsing, ZeroingParsers) {
    checkRows<int>(StringUtils::toInteger, {
                                               {"  42", 7, true, 42},
                                               {"42 ", 7, false, 42},
                                               {"+42", 7, true, 42},
                                               {"-42", 7, true, -42},
                                               {"0x1A", 7, false, 0},
                                               {"abc", 7, false, 0},
                                               {"2147483648", 7, false, 0},
                                               {"-2147483648", 7, true, INT_MIN},
                                               {"", 7, false, 0},
                                               {" ", 7, false, 0},
                                           });
    checkRows<long>(StringUtils::toLongInteger, {
                                                    {"9223372036854775807", 1, true, LONG_MAX},
                                                    {"9223372036854775808", 1, false, 0},
                                                    {"12abc", 1, false, 12},
                                                    {"", 1, false, 0},
                                                });
    checkRows<long long>(StringUtils::toLongLongInteger,
                         {
                             {"-9223372036854775808", 1, true, LLONG_MIN},
                             {"1e3", 1, false, 1},
                             {"-", 1, false, 0},
                         });
    checkRows<double>(StringUtils::toDouble, {
                                                 {"3.5", 1.0, true, 3.5},
                                                 {"3.5x", 1.0, false, 3.5},
                                                 {"1e999", 1.0, false, 0.0},
                                                 {"1e-999", 1.0, false, 0.0},
                                                 {" -0x1p4", 1.0, true, -16.0},
                                                 {"", 1.0, false, 0.0},
                                                 {"inf", 1.0, true, HUGE_VAL},
                                             });
    double notANumber = 1.0;
    EXPECT_TRUE(StringUtils::toDouble("nan", notANumber));
    EXPECT_TRUE(std::isnan(notANumber));
}

TEST(NumberParsing, KeepingParsers) {
    checkRows<long>(StringUtils::toMsTime, {
                                               {"", 9, true, 0},
                                               {"1500", 9, true, 1500},
                                               {"1500ms", 9, false, 1500},
                                               {"abc", 9, false, 9},
                                               {"99999999999999999999", 9, false, 9},
                                           });
    // One table for every base; the default base is 10.
    struct Case {
        int base;
        Row<unsigned long long> row;
    };
    const Case cases[] = {
        {16, {"", 9, true, 0}},
        {16, {"ff", 9, true, 255}},
        {16, {"0xff", 9, true, 255}},
        {16, {"fg", 9, false, 15}},
        {16, {"g", 9, false, 9}},
        {10, {"-1", 9, true, ULLONG_MAX}},
        {10, {"18446744073709551616", 9, false, 9}},
        {0, {"0x10", 9, true, 16}},
        {0, {"010", 9, true, 8}},
    };
    for (const auto& [base, row] : cases) {
        SCOPED_TRACE(base);
        checkRows<unsigned long long>(
            [base](const std::string& text, unsigned long long& value) {
                return StringUtils::toUnsignedLongLong(text, value, base);
            },
            {row});
    }
    unsigned long long value = 0;
    EXPECT_TRUE(StringUtils::toUnsignedLongLong("255", value));
    EXPECT_EQ(value, 255u);
}

TEST(NumberParsing, BoundedParsers) {
    checkRows<unsigned short>(StringUtils::toInteger16, {
                                                            {"65535", 9, true, 65535},
                                                            {"65536", 9, false, 9},
                                                            {"-1", 9, true, 65535},
                                                            {"1 ", 9, false, 9},
                                                            {"", 9, false, 9},
                                                        });
    checkRows<unsigned char>(StringUtils::toInteger8, {
                                                          {"255", 9, true, 255},
                                                          {"256", 9, false, 9},
                                                          {"-1", 9, true, 255},
                                                          {"x", 9, false, 9},
                                                      });
}

TEST(NumberParsing, FilteredViewParsers) {
    checkRows<int>(StringUtils::stringViewToInteger, {
                                                         {"-2147483648", 9, true, INT_MIN},
                                                         {"2147483648", 9, false, 9},
                                                         {"007", 9, true, 7},
                                                         {"-0", 9, true, 0},
                                                         {"+5", 9, false, 9},
                                                         {" 5", 9, false, 9},
                                                         {"12-3", 9, true, 12},
                                                         {"0-", 9, true, 0},
                                                         {"--5", 9, false, 9},
                                                         {"-", 9, false, 9},
                                                         {"", 9, false, 9},
                                                         {"1a", 9, false, 9},
                                                         {"\xD9\xA1", 9, false, 9},
                                                     });
    checkRows<int>(StringUtils::hexStringViewToInteger, {
                                                            {"ff", 9, true, 255},
                                                            {"FF", 9, true, 255},
                                                            {"-1a", 9, true, -26},
                                                            {"7fffffff", 9, true, INT_MAX},
                                                            {"80000000", 9, false, 9},
                                                            {"-80000000", 9, true, INT_MIN},
                                                            {"0x10", 9, false, 9},
                                                            {"g", 9, false, 9},
                                                        });
}

TEST(NumberParsing, Booleans) {
    const std::pair<std::string, bool> cases[] = {
        {"1", true},      {"0", false},     {"TRUE", true}, {"truE", true},
        {"tRuE", true},   {"yes", false},   {"t", false},   {"true1", false},
        {" true", false}, {"false", false}, {"", false},
    };
    for (const auto& [text, value] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(StringUtils::toBool(text), value);
        EXPECT_EQ(StringUtils::toBool(text, true), text.empty() || value);
        EXPECT_EQ(StringUtils::toBool(text, false), value);
    }
}

}  // namespace

#include "StringUtils/Extract.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>

namespace {

TEST(Extract, ByCharacters) {
    const std::string aeb =
        "a\xC3\xA9"
        "b";  // a, e-acute, b: 4 bytes, 3 characters
    const std::string mixed = "\xE4\xB8\xAD\xF0\x9F\x98\x80z";  // CJK, emoji, z
    struct Case {
        std::string text;
        unsigned int start;
        unsigned long count;
        std::string part;
    };
    const Case cases[] = {
        {aeb, 1, 1, "\xC3\xA9"},
        {aeb, 1, 2,
         "\xC3\xA9"
         "b"},
        {aeb, 0, ULONG_MAX, aeb},
        {aeb, 1, ULONG_MAX,
         "\xC3\xA9"
         "b"},
        {aeb, 3, 1, ""},
        {aeb, 2, 5, "b"},
        {aeb, 0, 0, ""},
        {"", 0, 1, ""},
        {mixed, 1, 1, "\xF0\x9F\x98\x80"},
        {mixed, 0, 2, "\xE4\xB8\xAD\xF0\x9F\x98\x80"},
        {mixed, UINT_MAX, ULONG_MAX, ""},
        {"ab\x80", 0, 1, ""},
        {"a\xF8z", 0, 1, ""},
        {"\xE4\xB8", 0, 1, "\xE4\xB8"},
        {"ab\xE4", 2, 1, "\xE4"},
    };
    for (const auto& [text, start, count, part] : cases) {
        SCOPED_TRACE(text + " from " + std::to_string(start) + " for " + std::to_string(count));
        EXPECT_EQ(StringUtils::substr(text, start, count), part);
    }
}

TEST(Extract, ByMarkers) {
    struct Case {
        std::string text;
        std::string startMarker;
        std::string endMarker;
        std::string part;
    };
    const Case cases[] = {
        {"a[b]c", "[", "]", "b"},  {"a[b]c", "[", "#", "b]c"}, {"a[b]c", "#", "]", ""},
        {"a[b]c", "", "]", "a[b"}, {"a[b]c", "[", "", ""},     {"<<x>>y>>", "<<", ">>", "x"},
        {"]a[b]", "[", "]", "b"},  {"a[]", "[", "]", ""},      {"", "", "x", ""},
    };
    for (const auto& [text, startMarker, endMarker, part] : cases) {
        SCOPED_TRACE(text + " " + startMarker + " " + endMarker);
        EXPECT_EQ(StringUtils::substr(text, startMarker, endMarker), part);
    }
}

TEST(Extract, CopyIntoBuffers) {
    struct Case {
        const char* source;
        unsigned long size;
        bool copied;
        unsigned long truncatedLength;
    };
    const Case cases[] = {
        {"hello", 5, false, 4}, {"hello", 6, true, 5}, {"hello", 9, true, 5},
        {"", 1, true, 0},       {"he", 3, true, 2},    {"hello", 1, false, 0},
    };
    for (const auto& [source, size, copied, truncatedLength] : cases) {
        SCOPED_TRACE(std::string(source) + " into " + std::to_string(size));
        char buffer[12];
        std::memset(buffer, 'x', sizeof buffer);
        EXPECT_EQ(StringUtils::copy(buffer, size, source), copied);
        if (copied) {
            EXPECT_STREQ(buffer, source);
            EXPECT_EQ(std::string(buffer, size), source + std::string(size - strlen(source), '\0'));
        } else {
            EXPECT_EQ(std::string(buffer, sizeof buffer), std::string(sizeof buffer, 'x'));
        }
        EXPECT_EQ(buffer[size], 'x');

        std::memset(buffer, 'x', sizeof buffer);
        EXPECT_EQ(StringUtils::copyn(buffer, size, source), truncatedLength);
        EXPECT_EQ(std::string(buffer), std::string(source, truncatedLength));
        EXPECT_EQ(buffer[size], 'x');
    }

    char buffer[4] = {'x', 'x', 'x', 'x'};
    EXPECT_FALSE(StringUtils::copy(buffer, 0, "a"));
    EXPECT_FALSE(StringUtils::copy(nullptr, 4, "a"));
    EXPECT_FALSE(StringUtils::copy(buffer, 4, nullptr));
    EXPECT_EQ(StringUtils::copyn(buffer, 0, "a"), 0u);
    EXPECT_EQ(StringUtils::copyn(nullptr, 4, "a"), 0u);
    EXPECT_EQ(StringUtils::copyn(buffer, 4, nullptr), 0u);
    EXPECT_EQ(std::string(buffer, 4), "xxxx");
}

}  // namespace

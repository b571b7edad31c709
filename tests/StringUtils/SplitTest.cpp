#include "StringUtils/Split.h"

#include <gtest/gtest.h>

#include "Widen.h"

namespace {

using Fields = std::vector<std::string>;

template <typename CharT>
std::vector<std::basic_string<CharT>> owned(
    const std::vector<std::basic_string_view<CharT>>& views) {
    return StringUtils::stringViewsToStrings(views);
}

// Every view lies inside text: nothing was copied.
template <typename CharT>
void expectViewsInto(const std::basic_string<CharT>& text,
                     const std::vector<std::basic_string_view<CharT>>& views) {
    for (const auto& view : views) {
        EXPECT_GE(view.data(), text.data());
        EXPECT_LE(view.data() + view.size(), text.data() + text.size());
    }
}

TEST(Split, AtCharacter) {
    struct Case {
        std::string text;
        bool skipEmpty;
        Fields fields;
    };
    const Case cases[] = {
        {"a,b,,c", false, {"a", "b", "", "c"}},
        {"a,b,,c", true, {"a", "b", "c"}},
        {"", false, {}},
        {"", true, {}},
        {",", false, {"", ""}},
        {",", true, {}},
        {"abc", false, {"abc"}},
        {"a,", false, {"a", ""}},
        {",,a,,", true, {"a"}},
        {" , ", true, {" ", " "}},
    };
    for (const auto& [text, skipEmpty, fields] : cases) {
        SCOPED_TRACE(text + (skipEmpty ? " skipping empty" : ""));
        EXPECT_EQ(StringUtils::split(text, ',', skipEmpty), fields);
        const auto views = StringUtils::splitToViews(text, ',', skipEmpty);
        EXPECT_EQ(owned(views), fields);
        expectViewsInto(text, views);
        EXPECT_EQ(owned(StringUtils::splitToViews(std::string_view(text), ',', skipEmpty)), fields);

        const std::wstring wideText = widen(text);
        EXPECT_EQ(StringUtils::split(wideText, L',', skipEmpty), widen(fields));
        const auto wideViews = StringUtils::splitToViews(wideText, L',', skipEmpty);
        EXPECT_EQ(owned(wideViews), widen(fields));
        expectViewsInto(wideText, wideViews);
    }
}

TEST(Split, AtString) {
    struct Case {
        std::string text;
        std::string delimiter;
        bool skipEmpty;
        Fields fields;
    };
    const Case cases[] = {
        {"a::b", "::", false, {"a", "b"}},
        {"a:::b", "::", false, {"a", ":b"}},
        {"aaa", "aa", false, {"", "a"}},
        {"abc", "", false, {"abc"}},
        {"", "", false, {}},
        {"", "::", false, {}},
        {"::a::::b::", "::", false, {"", "a", "", "b", ""}},
        {"::a::::b::", "::", true, {"a", "b"}},
        {"abc", "abcd", false, {"abc"}},
        {"a, b,c", ", ", false, {"a", "b,c"}},
    };
    for (const auto& [text, delimiter, skipEmpty, fields] : cases) {
        SCOPED_TRACE(text + " at " + delimiter + (skipEmpty ? " skipping empty" : ""));
        EXPECT_EQ(StringUtils::split(text, delimiter, skipEmpty), fields);
        const auto views = StringUtils::splitToViews(text, delimiter, skipEmpty);
        EXPECT_EQ(owned(views), fields);
        expectViewsInto(text, views);
        EXPECT_EQ(owned(StringUtils::splitToViews(std::string_view(text), delimiter, skipEmpty)),
                  fields);

        const std::wstring wideText = widen(text);
        EXPECT_EQ(StringUtils::split(wideText, widen(delimiter), skipEmpty), widen(fields));
        const auto wideViews = StringUtils::splitToViews(wideText, widen(delimiter), skipEmpty);
        EXPECT_EQ(owned(wideViews), widen(fields));
        expectViewsInto(wideText, wideViews);
    }
}

TEST(Split, ResultIsSizedOnceFromTheEstimate) {
    const std::string csv = "a,b,,c,d,e,f,g,h,i,j,k";
    EXPECT_EQ(StringUtils::splitToViews(csv, ',', false).capacity(), 12u);
    // Separated string-delimiter matches are estimated exactly.
    const std::string text = "x::y::z::w";
    EXPECT_EQ(StringUtils::splitToViews(text, std::string("::"), false).capacity(),
              SplitUtils::countWords(text, std::string("::")) + 1);
    EXPECT_EQ(SplitUtils::countWords(text, std::string("::")), 3u);
}

TEST(Split, CountWords) {
    struct Case {
        std::string text;
        std::string delimiter;
        size_t count;
    };
    const Case cases[] = {
        {"a,,b", ",", 1}, {"a,b,c", ",", 2}, {"abc", "", 3},    {"", ",", 0},
        {"", "", 0},      {",", ",", 1},     {"a::b", "::", 1}, {"abc", "x", 0},
    };
    for (const auto& [text, delimiter, count] : cases) {
        SCOPED_TRACE(text + " at " + delimiter);
        EXPECT_EQ(SplitUtils::countWords(text, delimiter), count);
        EXPECT_EQ(SplitUtils::countWords(std::string_view(text), delimiter), count);
        EXPECT_EQ(SplitUtils::countWords(widen(text), widen(delimiter)), count);
    }
}

TEST(Split, FixedLength) {
    struct Case {
        std::string text;
        int chunkSize;
        bool skipEmpty;
        Fields pieces;
    };
    const Case cases[] = {
        {"abcdefg", 3, false, {"abc", "def", "g"}},
        {"abcdef", 3, false, {"abc", "def"}},
        {"ab", 3, false, {"ab"}},
        {"abc   ", 3, true, {"abc"}},
        {"abc \t\n", 3, true, {"abc"}},
        {"abc  x", 3, true, {"abc", "  x"}},
        {"", 3, false, {}},
        {"abc", 0, false, {"", "abc"}},
        {"abc", 0, true, {"abc"}},
        {"  ", 0, true, {}},
        {"abc", -1, false, {"abc"}},
        {"abc", 1, false, {"a", "b", "c"}},
    };
    for (const auto& [text, chunkSize, skipEmpty, pieces] : cases) {
        SCOPED_TRACE(text + " by " + std::to_string(chunkSize));
        EXPECT_EQ(StringUtils::split(text, chunkSize, skipEmpty), pieces);
    }
}

TEST(Split, Join) {
    struct Case {
        Fields items;
        std::string separator;
        std::string joined;
    };
    const Case cases[] = {
        {{}, ",", ""},
        {{"a"}, ",", "a"},
        {{"a", "", "b"}, ",", "a,,b"},
        {{"a", "b", "c"}, "", "abc"},
        {{"", ""}, ", ", ", "},
    };
    for (const auto& [items, separator, joined] : cases) {
        SCOPED_TRACE(joined);
        EXPECT_EQ(StringUtils::join(items, separator), joined);
        EXPECT_EQ(StringUtils::join(widen(items), widen(separator)), widen(joined));
    }
}

}  // namespace

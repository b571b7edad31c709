#include "StringUtils/Split.h"

#include <gtest/gtest.h>

#include "Widen.h"

namespace {

using Fields = std::vector<std::string>;

// split and splitToViews of text at delimiter (a character or a string) give
// fields, and every view lies inside text: nothing was copied.
template <typename Text, typename Delimiter, typename Fields>
void checkSplitters(const Text& text, const Delimiter& delimiter, bool skipEmpty,
                    const Fields& fields) {
    EXPECT_EQ(StringUtils::split(text, delimiter, skipEmpty), fields);
    const auto views = StringUtils::splitToViews(text, delimiter, skipEmpty);
    EXPECT_EQ(StringUtils::stringViewsToStrings(views), fields);
    for (const auto& view : views) {
        EXPECT_GE(view.data(), text.data());
        EXPECT_LE(view.data() + view.size(), text.data() + text.size());
    }
}

// Every delimiter splitter, narrow and wide, by one table; one-character
// delimiters also through the character overloads.
TEST(Split, AtDelimiter) {
    struct Case {
        std::string text;
        std::string delimiter;
        bool skipEmpty;
        Fields fields;
    };
    const Case cases[] = {
        {"a,b,,c", ",", false, {"a", "b", "", "c"}},
        {"a,b,,c", ",", true, {"a", "b", "c"}},
        {"", ",", false, {}},
        {"", ",", true, {}},
        {",", ",", false, {"", ""}},
        {",", ",", true, {}},
        {"abc", ",", false, {"abc"}},
        {"a,", ",", false, {"a", ""}},
        {" , ", ",", true, {" ", " "}},
        {"a::b", "::", false, {"a", "b"}},
        {"a:::b", "::", false, {"a", ":b"}},
        {"aaa", "aa", false, {"", "a"}},
        {"abc", "", false, {"abc"}},
        {"", "", false, {}},
        {"::a::::b::", "::", false, {"", "a", "", "b", ""}},
        {"::a::::b::", "::", true, {"a", "b"}},
        {"abc", "abcd", false, {"abc"}},
    };
    for (const auto& [text, delimiter, skipEmpty, fields] : cases) {
        SCOPED_TRACE(text + " at " + delimiter + (skipEmpty ? " skipping empty" : ""));
        const std::string_view textView(text);
        const std::wstring wideText = widen(text);
        checkSplitters(text, delimiter, skipEmpty, fields);
        EXPECT_EQ(StringUtils::stringViewsToStrings(
                      StringUtils::splitToViews(textView, delimiter, skipEmpty)),
                  fields);
        checkSplitters(wideText, widen(delimiter), skipEmpty, widen(fields));
        if (delimiter.size() == 1) {
            checkSplitters(text, delimiter[0], skipEmpty, fields);
            checkSplitters(wideText, wchar_t{delimiter[0]}, skipEmpty, widen(fields));
            EXPECT_EQ(StringUtils::stringViewsToStrings(
                          StringUtils::splitToViews(textView, delimiter[0], skipEmpty)),
                      fields);
        }
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

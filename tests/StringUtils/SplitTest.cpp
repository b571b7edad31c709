#include "StringUtils/Split.h"

#include <gtest/gtest.h>

#include "Widen.h"

namespace {

using namespace StringUtils;
using Fields = std::vector<std::string>;

// split (where the text type has it) and splitToViews give fields, and every view lies inside
// text: nothing was copied.
template <typename Text, typename Delimiter, typename Expected>
void checkSplitters(const Text& text, const Delimiter& delimiter, bool skipEmpty,
                    const Expected& fields) {
    if constexpr (requires { split(text, delimiter, skipEmpty); }) {
        EXPECT_EQ(split(text, delimiter, skipEmpty), fields);
    }
    const auto views = splitToViews(text, delimiter, skipEmpty);
    EXPECT_EQ(stringViewsToStrings(views), fields);
    for (const auto& view : views) {
        EXPECT_TRUE(view.data() >= text.data() && view.end() <= text.data() + text.size());
    }
}

// Every delimiter splitter, narrow and wide, by one table; one-character delimiters also through
// the character overloads. countWords sizes the result for a string delimiter. Then the
// fixed-length split and join.
TEST(Split, SplitAndJoin) {
    // clang-format off
    const std::tuple<std::string, std::string, bool, Fields, size_t> cases[] = {
        {"a,b,,c", ",", false, {"a", "b", "", "c"}, 2}, {"a,b,,c", ",", true, {"a", "b", "c"}, 2},
        {"", ",", false, {}, 0}, {"", ",", true, {}, 0}, {",", ",", false, {"", ""}, 1},
        {",", ",", true, {}, 1}, {"abc", ",", false, {"abc"}, 0}, {" , ", ",", true, {" ", " "}, 1},
        {"a:::b", "::", false, {"a", ":b"}, 1}, {"aaa", "aa", false, {"", "a"}, 1},
        {"abc", "", false, {"abc"}, 3}, {"", "", false, {}, 0},
        {"::a::::b::", "::", false, {"", "a", "", "b", ""}, 3},
        {"::a::::b::", "::", true, {"a", "b"}, 3}, {"abc", "abcd", false, {"abc"}, 0}};
    // clang-format on
    for (const auto& [text, delimiter, skipEmpty, fields, count] : cases) {
        SCOPED_TRACE(text + " at " + delimiter + (skipEmpty ? " skipping empty" : ""));
        checkSplitters(text, delimiter, skipEmpty, fields);
        checkSplitters(std::string_view(text), delimiter, skipEmpty, fields);
        checkSplitters(widen(text), widen(delimiter), skipEmpty, widen(fields));
        EXPECT_EQ(SplitUtils::countWords(text, delimiter), count);
        if (delimiter.size() != 1) continue;
        checkSplitters(text, delimiter[0], skipEmpty, fields);
        checkSplitters(std::string_view(text), delimiter[0], skipEmpty, fields);
        checkSplitters(widen(text), wchar_t{delimiter[0]}, skipEmpty, widen(fields));
    }
    const std::string csv = "a,b,,c,d,e,f,g,h,i,j,k", words = "x::y::z::w";
    EXPECT_EQ(splitToViews(csv, ',', false).capacity(), 12u);
    EXPECT_EQ(splitToViews(words, std::string("::"), false).capacity(), 4u);
    // Delimiters in a row: reserved as countWords says (3 + 1), then grown for the 6 fields.
    const std::string run = "a::::::::::b";
    EXPECT_GE(splitToViews(run, std::string("::"), false).capacity(), 6u);
    EXPECT_EQ(splitToViews(run, std::string("::"), true).capacity(), 4u);
    // clang-format off
    const std::tuple<std::string, int, bool, Fields> chunks[] = {
        {"abcdefg", 3, false, {"abc", "def", "g"}}, {"abcdef", 3, false, {"abc", "def"}},
        {"abc \t\n", 3, true, {"abc"}}, {"abc  x", 3, true, {"abc", "  x"}}, {"", 3, false, {}},
        {"abc", 0, false, {"", "abc"}}, {"abc", 0, true, {"abc"}}, {"  ", 0, true, {}},
        {"abc", -1, false, {"abc"}}};
    const std::tuple<Fields, std::string, std::string> joins[] = {{{}, ",", ""}, {{"a"}, ",", "a"},
        {{"a", "", "b"}, ",", "a,,b"}, {{"a", "b"}, "", "ab"}};
    // clang-format on
    for (const auto& [text, chunkSize, skipEmpty, pieces] : chunks) {
        EXPECT_EQ(split(text, chunkSize, skipEmpty), pieces) << text << " by " << chunkSize;
    }
    for (const auto& [items, separator, joined] : joins) {
        EXPECT_EQ(join(items, separator), joined);
        EXPECT_EQ(join(widen(items), widen(separator)), widen(joined));
    }
}

}  // namespace

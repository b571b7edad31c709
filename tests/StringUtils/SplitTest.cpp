#include "StringUtils/Split.h"

#include <gtest/gtest.h>

#include "Widen.h"

namespace {

using namespace StringUtils;
using Fields = std::vector<std::string>;

// split (where the text type has it) and splitToViews give fields; views lie inside text.
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

// Every delimiter splitter, narrow and wide; one-character delimiters also as characters.
TEST(Split, ByDelimiter) {
    // clang-format off
    const struct {
        std::string text, delimiter;
        bool skipEmpty;
        Fields fields;
        size_t words;  // countWords
    } cases[] = {
        {"a,b,,c", ",", false, {"a", "b", "", "c"}, 2}, {"a,b,,c", ",", true, {"a", "b", "c"}, 2},
        {"", ",", false, {}, 0}, {",", ",", true, {}, 1}, {" , ", ",", true, {" ", " "}, 1},
        {"abc", "", false, {"abc"}, 3}, {"", "", false, {}, 0},
        {"::a::::b::", "::", true, {"a", "b"}, 3}};
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text + " at " + c.delimiter + (c.skipEmpty ? " skipping empty" : ""));
        checkSplitters(c.text, c.delimiter, c.skipEmpty, c.fields);
        checkSplitters(std::string_view(c.text), c.delimiter, c.skipEmpty, c.fields);
        checkSplitters(widen(c.text), widen(c.delimiter), c.skipEmpty, widen(c.fields));
        EXPECT_EQ(SplitUtils::countWords(c.text, c.delimiter), c.words);
        if (c.delimiter.size() != 1) continue;
        checkSplitters(c.text, c.delimiter[0], c.skipEmpty, c.fields);
        checkSplitters(std::string_view(c.text), c.delimiter[0], c.skipEmpty, c.fields);
        checkSplitters(widen(c.text), wchar_t{c.delimiter[0]}, c.skipEmpty, widen(c.fields));
    }
}

TEST(Split, ByLengthAndJoin) {
    const struct {
        std::string text;
        int chunkSize;
        bool skipEmpty;
        Fields pieces;
    } chunks[] = {{"abcdefg", 3, false, {"abc", "def", "g"}},
                  {"abc \t\n", 3, true, {"abc"}},
                  {"", 3, false, {}},
                  {"abc", 0, false, {"", "abc"}},
                  {"abc", -1, false, {"abc"}}};
    for (const auto& c : chunks) {
        EXPECT_EQ(split(c.text, c.chunkSize, c.skipEmpty), c.pieces)
            << c.text << " by " << c.chunkSize;
    }
    const struct {
        Fields items;
        std::string separator, joined;
    } joins[] = {
        {{}, ",", ""}, {{"a"}, ",", "a"}, {{"a", "", "b"}, ",", "a,,b"}, {{"a", "b"}, "", "ab"}};
    for (const auto& c : joins) {
        EXPECT_EQ(join(c.items, c.separator), c.joined);
        EXPECT_EQ(join(widen(c.items), widen(c.separator)), widen(c.joined));
    }
}

}  // namespace

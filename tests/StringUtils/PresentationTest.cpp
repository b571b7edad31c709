#include "DifferentialCheck.h"
#include "Reference.h"
#include "StringUtils/Presentation.h"
#include "StringUtils/Sanitizing.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace StringUtils;
using Lines = std::vector<std::string>;

TEST(Presentation, WordWrapString) {
    struct Case {
        std::string text;
        unsigned int width;
        Lines lines;
    };
    const Case cases[] = {
        {"the quick brown fox", 10, {"the quick", "brown fox"}},
        {"the quick brown fox", 0, {}},
        {"", 5, {""}},
        {"abcdefghij klm", 4, {"abcd", "klm"}},
        {"a  b", 10, {"a  b"}},
        {" a", 10, {"a"}},
        {"a ", 10, {"a "}},
        {"abc", 3, {"abc"}},
        {"ab cd", 4, {"ab", "cd"}},
        {"ab cd", 5, {"ab cd"}},
        {"abcdef", 4, {"abcd"}},
        {"ab abcdef xy", 4, {"ab", "abcd", "xy"}},
        {"\xC3\xA9\xC3\xA9\xC3\xA9", 2, {"\xC3\xA9\xC3\xA9"}},
        {"a\tb\nc d", 5, {"a\tb\nc", "d"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text + " / " + std::to_string(c.width));
        EXPECT_EQ(wordWrapString(c.text, c.width), c.lines);
    }
}

TEST(Presentation, ControlWidowOrphanWords) {
    const std::string nbsp = "\xC2\xA0";
    struct Case {
        std::string text;
        bool html;
        std::size_t joined;
        std::string expected;
    };
    const Case cases[] = {
        {"one two three four five", true, 2, "one&nbsp;two three four&nbsp;five"},
        {"one two three four five", false, 2, "one" + nbsp + "two three four" + nbsp + "five"},
        {"one two three", true, 2, "one two three"},
        {"  a  b  c  d ", true, 2, "a&nbsp;b c&nbsp;d"},
        {"a b c d e f", true, 3, "a&nbsp;b&nbsp;c d&nbsp;e&nbsp;f"},
        {"a b c d e f g", true, 3, "a&nbsp;b&nbsp;c d e&nbsp;f&nbsp;g"},
        {"a  b", true, 1, "a  b"},
        {"a  b", true, 0, "a  b"},
        {"", true, 2, ""},
        {"a b c d", true, SIZE_MAX, "a b c d"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text + " / " + std::to_string(c.joined));
        EXPECT_EQ(controlWidowOrphanWords(c.text, c.html, c.joined), c.expected);
    }
}

TEST(Presentation, Counts) {
    const std::pair<std::string, std::size_t> words[] = {
        {"", 0}, {"a b", 2}, {"a  b", 3}, {" ", 2}, {"a\tb", 1},
    };
    for (const auto& [text, count] : words) {
        SCOPED_TRACE(text);
        EXPECT_EQ(wordCount(text), count);
    }
    using Counts = std::pair<std::size_t, std::size_t>;
    const std::pair<std::string, Counts> characters[] = {
        {"a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", {2, 2}},
        {std::string("a\0b", 3), {1, 0}},
        {"a\x80", {0, 1}},
        {"\xF4\x90\x80\x80", {0, 0}},
        {"\xF4\x8F\xBF\xBF", {0, 1}},
        {"\xC3\xBF\xC4\x80", {1, 1}},
        {"\xC3"
         "a",
         {2, 0}},
        {"", {0, 0}},
    };
    for (const auto& [text, counts] : characters) {
        SCOPED_TRACE(text);
        EXPECT_EQ(getUTF8toISO8859_1CharacterCounts(text), counts);
    }
    EXPECT_EQ(getUTF8CharacterLength("h\xC3\xA9llo"), 5u);
    EXPECT_EQ(getUTF8CharacterLength(std::string("a\0b", 3)), 3u);
    EXPECT_EQ(getUTF8CharacterLength("\x80\xBF"), 0u);
}

TEST(Presentation, Utf8Cuts) {
    const std::pair<std::string, std::string> first[] = {
        {"\xE2\x82\xAC"
         "uro",
         "\xE2\x82\xAC"},
        {"abc", "a"},
        {"\x80\x80"
         "a",
         "\x80\x80"},
        {"", ""},
        {"\xF0\x80\x80\x80\x80"
         "a",
         "\xF0\x80\x80\x80\x80"},
    };
    for (const auto& [text, expected] : first) {
        SCOPED_TRACE(text);
        EXPECT_EQ(firstUtf8CodePoint(text), expected);
    }
    const std::string euro =
        "a\xE2\x82\xAC"
        "b";
    struct Case {
        std::string text;
        std::size_t maxBytes;
        std::string expected;
    };
    const Case cases[] = {
        {euro, 0, ""},
        {euro, 1, "a"},
        {euro, 2, "a"},
        {euro, 3, "a"},
        {euro, 4, "a\xE2\x82\xAC"},
        {euro, 5, euro},
        {euro, 99, euro},
        {"a\x80\x80", 2, "a"},
        {"\x80\x80\x80", 2, ""},
        {"ab", 1, "a"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text + " / " + std::to_string(c.maxBytes));
        EXPECT_EQ(truncateBytes(c.text, c.maxBytes), c.expected);
    }
}

TEST(Sanitizing, SanatizeStatusString) {
    const std::pair<std::string, std::string> cases[] = {
        {"Hi<SCRIPT>x", "Hi>x"},
        {"<scr<scriptipt>", ">"},
        {"<script>x</script>", ">x</script>"},
        {"one\ntwo\r\nthree\tfour", "onetwothreefour"},
        {"<Script", "<Script"},
        {"<html><HTML><img src=x><IMG SRC=y><a href=z><A HREF=w>", ">>=x>=y>=z>=w>"},
        {"<ht\nml", "<html"},
        {"<<htmlhtml", ""},
        {"", ""},
    };
    for (const auto& [status, expected] : cases) {
        SCOPED_TRACE(status);
        EXPECT_EQ(sanatizeStatusString(status), expected);
    }
}

TEST(Sanitizing, SanatizeStatusStringAsRepeatedErase) {
    difftest::TextGenerator gen(21);
    const std::string pieces[] = {"<",   "<html", "<HTML", "<scr", "ipt", "<SCR",
                                  "IPT", "<img",  " src",  " SRC", "<a",  " href",
                                  "\n",  "\t",    "\r",    "x",    "<ht", "ml"};
    for (int i = 0; i < 5000; ++i) {
        std::string text;
        for (std::size_t n = gen.number(0, 12); n > 0; --n) {
            text += pieces[gen.number(0, 17)];
        }
        ASSERT_EQ(sanatizeStatusString(text), reference::sanitizeStatusByRepeatedErase(text))
            << difftest::printable(text);
    }
}

TEST(Sanitizing, TemplateMaskHideEscape) {
    EXPECT_EQ(getHtmlErrorTemplate(), "<html><title>%1</title><p>%2</p></html>");
    const std::pair<std::string, std::uint64_t> masks[] = {
        {"", 0},
        {"a", 97},
        {"ab", 3105},
        {"hello", 99162322},
        {"\xC3\xA9", static_cast<std::uint64_t>(-1978)},
    };
    for (const auto& [text, mask] : masks) {
        SCOPED_TRACE(text);
        EXPECT_EQ(maskString(text), mask);
    }
    const std::pair<std::string, std::string> hidden[] = {
        {"secret", "se***(6)"},
        {"a", "a***(1)"},
        {"", ""},
        {"\xC3\xA9t\xC3\xA9", "\xC3\xA9***(5)"},
    };
    for (const auto& [text, expected] : hidden) {
        SCOPED_TRACE(text);
        EXPECT_EQ(hideString(text), expected);
    }
    struct Case {
        std::string text, characters;
        char escape;
        std::string expected;
    };
    const Case escapes[] = {
        {"a.b*c", ".*", '%', "a%.b%*c"},
        {"a.b*c", "", '%', "a.b*c"},
        {"5%", "%", '%', "5%%"},
        {"\xC3\xA9\xC3\xA8", "\xC3\xA9", '\\', "\\\xC3\\\xA9\\\xC3\xA8"},
        {std::string("a\0b", 3), std::string("\0", 1), '\\', std::string("a\\\0b", 4)},
    };
    for (const auto& c : escapes) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(escapeCharacters(c.text, c.characters, c.escape), c.expected);
    }
}

}  // namespace

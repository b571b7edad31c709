#include "Checks.h"
#include "StringUtils/Presentation.h"
#include "StringUtils/Sanitizing.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

using namespace StringUtils;
using checks::with;

TEST(Presentation, Tables) {
    checks::expectTable<std::vector<std::string>>({
        {with(wordWrapString, 9u), "the quick brown fox", {"the quick", "brown fox"}},
        {with(wordWrapString, 5u), "", {""}},
        {with(wordWrapString, 4u), "ab abcdef xy", {"ab", "abcd", "xy"}},
        {with(wordWrapString, 10u), " a\tb  c", {"a\tb  c"}},
        {with(wordWrapString, 2u), "\xC3\xA9\xC3\xA9\xC3\xA9", {"\xC3\xA9\xC3\xA9"}},
    });
    const std::string euro = "a\xE2\x82\xAC|";
    checks::expectTable<std::string>({
        {with(controlWidowOrphanWords, true, 2), "a b c d e", "a&nbsp;b c d&nbsp;e"},
        {with(controlWidowOrphanWords, false, 2), "x y z w", "x\xC2\xA0y z\xC2\xA0w"},
        {with(controlWidowOrphanWords, true, 2), "  a  b  c  d ", "a&nbsp;b c&nbsp;d"},
        {with(controlWidowOrphanWords, true, 1), "a  b", "a  b"},
        {firstUtf8CodePoint, "\xE2\x82\xAC|", "\xE2\x82\xAC"},
        {firstUtf8CodePoint, "\xF0\x80\x80\x80\x80|", "\xF0\x80\x80\x80\x80"},
        {with(truncateBytes, 0), "\x80\x80", ""},
        {with(truncateBytes, 3), euro, "a"},
        {with(truncateBytes, 4), euro, "a\xE2\x82\xAC"},
        {with(truncateBytes, 2), "a\x80\x80", "a"},
        {sanatizeStatusString, "<Script>one\ntwo\r\nthree\tfour", "<Script>onetwothreefour"},
        {hideString, "secret", "se***(6)"},
        {with(escapeCharacters, ".*", '%'), "a.b*c", "a%.b%*c"},
        {with(escapeCharacters, "\xC3\xA9", '\\'), "\xC3\xA9\xC3\xA8", "\\\xC3\\\xA9\\\xC3\xA8"},
    });
    checks::expectTable<std::uint64_t>({
        {wordCount, "", 0},
        {wordCount, "a\tb  c", 3},
        {getUTF8CharacterLength, std::string("h\xC3\xA9\0\x80", 5), 3},
        {maskString, "\xC3\xA9", static_cast<std::uint64_t>(-1978)},  // signed bytes
    });
    checks::expectTable<std::pair<std::size_t, std::size_t>>({
        {getUTF8toISO8859_1CharacterCounts, "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", {2, 2}},
        {getUTF8toISO8859_1CharacterCounts, std::string("a\0b", 3), {1, 0}},
        {getUTF8toISO8859_1CharacterCounts, "a\x80", {0, 1}},
        {getUTF8toISO8859_1CharacterCounts, "\xC3\xBF\xC4\x80", {1, 1}},
        {getUTF8toISO8859_1CharacterCounts, "\xC3|", {2, 0}},
    });
}

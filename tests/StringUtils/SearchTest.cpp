#include "StringUtils/Search.h"

#include <gtest/gtest.h>

#include <random>

#include "Widen.h"

namespace {

TEST(Search, PrefixAndSuffix) {
    struct Case {
        std::string text;
        std::string affix;
        bool starts;
        bool ends;
    };
    const Case cases[] = {
        {"", "", true, true},         {"abc", "", true, true},    {"abc", "abc", true, true},
        {"abc", "ab", true, false},   {"abc", "bc", false, true}, {"ab", "abc", false, false},
        {"abc", "ABC", false, false}, {"aXa", "a", true, true},   {"", "a", false, false},
    };
    for (const auto& [text, affix, starts, ends] : cases) {
        SCOPED_TRACE(text + " / " + affix);
        EXPECT_EQ(StringUtils::startsWith(text, affix), starts);
        EXPECT_EQ(StringUtils::endsWith(text, affix), ends);
        EXPECT_EQ(StringUtils::startsWith(widen(text), widen(affix)), starts);
        EXPECT_EQ(StringUtils::endsWith(widen(text), widen(affix)), ends);
    }
}

TEST(Search, EndsWithAny) {
    struct Case {
        std::string text;
        std::vector<std::string> suffixes;
        bool result;
    };
    const Case cases[] = {
        {"a.example.com", {}, false},
        {"a.example.com", {".org", ".com"}, true},
        {"a.example.com", {".org", ".net"}, false},
        {"", {""}, true},
        {"com", {"x.com"}, false},
    };
    for (const auto& [text, suffixes, result] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(StringUtils::endsWithAny(text, suffixes), result);
        EXPECT_EQ(StringUtils::endsWithAny(widen(text), widen(suffixes)), result);
    }
}

TEST(Search, FirstCharacter) {
    EXPECT_TRUE(StringUtils::startsWithCharacter("+1", '+'));
    EXPECT_FALSE(StringUtils::startsWithCharacter("1+", '+'));
    EXPECT_TRUE(StringUtils::startsWithCharacter("", '\0'));
    EXPECT_TRUE(StringUtils::startsWithDigit("0x"));
    EXPECT_TRUE(StringUtils::startsWithDigit("9"));
    EXPECT_FALSE(StringUtils::startsWithDigit(""));
    EXPECT_FALSE(StringUtils::startsWithDigit("a1"));
    EXPECT_FALSE(StringUtils::startsWithDigit("\xD9\xA1"));
}

TEST(Search, Find) {
    struct Case {
        std::string text;
        std::string sub;
        bool found;
        size_t position;
        bool foundIgnoringCase;
    };
    const Case cases[] = {
        {"abcabc", "bc", true, 1, true},
        {"abc", "", true, 0, true},
        {"", "", true, 0, true},
        {"abc", "x", false, 99, false},
        {"Hello World", "WORLD", false, 99, true},
        {"\xC3\x89t\xC3\xA9", "\xC3\xA9T", false, 99, false},
    };
    for (const auto& [text, sub, found, position, foundIgnoringCase] : cases) {
        SCOPED_TRACE(text + " / " + sub);
        size_t location = 99;
        EXPECT_EQ(StringUtils::findSubStringLocation(text, sub, location), found);
        EXPECT_EQ(location, position);
        EXPECT_EQ(StringUtils::findSubStringCaseSensitive(text, sub), found);
        EXPECT_EQ(StringUtils::findSubStringCaseInsensitive(text, sub), foundIgnoringCase);
    }
}

TEST(Search, EraseSubString) {
    struct Case {
        std::string text;
        std::string sub;
        std::string result;
    };
    const Case cases[] = {
        {"aabb", "ab", ""},
        {"abc", "x", "abc"},
        {"abc", "", "abc"},
        {"", "", ""},
        {"xaabbx", "ab", "xx"},
        {"ab-ab", "ab", "-"},
        {"aaabbb"
         "c"
         "abab",
         "ab", "c"},
        {"aabcbc", "abc", ""},
        {"a"
         "abcd"
         "bcd",
         "abcd", ""},
        {std::string(500, 'a') + std::string(500, 'b') + "!", "ab", "!"},
    };
    for (const auto& [text, sub, result] : cases) {
        SCOPED_TRACE(text.substr(0, 20) + " without " + sub);
        std::string edited = text;
        StringUtils::eraseSubString(edited, sub);
        EXPECT_EQ(edited, result);
    }
}

// The one-pass erasure against its definition: erase the leftmost occurrence
// and search again from the start, until none is left.
TEST(Search, EraseMatchesRepeatedLeftmostErasure) {
    const auto reference = [](std::string text, const std::string& sub) {
        for (std::size_t at; (at = text.find(sub)) != std::string::npos;) {
            text.erase(at, sub.size());
        }
        return text;
    };
    std::mt19937 random(7);
    for (const std::string sub : {"ab", "aba", "aab", "abab", "a", "bba"}) {
        for (int i = 0; i < 2000; ++i) {
            std::string text(random() % 24, 'a');
            for (char& c : text) {
                c = "ab"[random() % 2];
            }
            SCOPED_TRACE(text + " without " + sub);
            std::string edited = text;
            StringUtils::eraseSubString(edited, sub);
            ASSERT_EQ(edited, reference(text, sub));
        }
    }
}

TEST(Search, Replace) {
    struct Case {
        std::string text;
        char from;
        char to;
        std::string all;
        std::string last;
    };
    const Case cases[] = {
        {"a.b.c", '.', '_', "a_b_c", "a.b_c"},
        {"abc", '.', '_', "abc", "abc"},
        {"a.b", '.', '.', "a.b", "a.b"},
        {"", '.', '_', "", ""},
        {"...", '.', '\0', std::string(3, '\0'), std::string("..\0", 3)},
    };
    for (const auto& [text, from, to, all, last] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(StringUtils::replaceAll(text, from, to), all);
        EXPECT_EQ(StringUtils::replaceLastOccurrence(text, from, to), last);
    }
}

}  // namespace

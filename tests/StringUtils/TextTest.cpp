// Trimming, case mapping, searching and extracting.
#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "StringUtils/Case.h"
#include "StringUtils/Extract.h"
#include "StringUtils/Search.h"
#include "StringUtils/Trim.h"
#include "Widen.h"

using namespace StringUtils;

// trimEx splits off runs of " \t\n\f\r" only; the other forms trim \v too.
TEST(Text, Trim) {
    const std::string nul("\0 a", 3), noBreak = "\xC2\xA0x\xC2\xA0";
    const struct {
        std::string text;
        TrimmedParts parts;       // trimEx
        std::string left, right;  // trimLeft, trimRight; trim gives both
    } cases[] = {{"", {"", "", ""}, "", ""},
                 {" \t\n\v\f\r", {" \t\n", "\v", "\f\r"}, "", ""},
                 {"  a b\t", {"  ", "a b", "\t"}, "a b\t", "  a b"},
                 {"abc\v", {"", "abc\v", ""}, "abc\v", "abc"},
                 {noBreak, {"", noBreak, ""}, noBreak, noBreak},
                 {nul, {"", nul, ""}, nul, nul}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.text));
        EXPECT_EQ(trimEx(c.text), c.parts);
        EXPECT_EQ(trimLeft(c.text), c.left);
        EXPECT_EQ(trimRight(c.text), c.right);
        EXPECT_EQ(trim(c.text), trimLeft(c.right));
        EXPECT_EQ(trimLeft(std::string(c.text)), c.left);  // the overloads that reuse storage
        EXPECT_EQ(trimRight(std::string(c.text)), c.right);
    }
    // The white-space tests on any text: the text fuzz target.
    EXPECT_TRUE(isSpace(wchar_t{0xA0}) && allCharsSpaces(""));
    EXPECT_FALSE(isSpace('\xA0') || isSpace(wchar_t{0x2003}) || containsWhiteSpace(""));
}

// ASCII letters only, but the locale-aware forms (the environment's locale, if it is known).
TEST(Text, Case) {
    EXPECT_EQ(toLower("Hello, World @[`{ \xC3\x89t"), "hello, world @[`{ \xC3\x89t");
    EXPECT_EQ(toUpper("Hello, World @[`{ \xC3\xA9t"), "HELLO, WORLD @[`{ \xC3\xA9T");
    // An element with every bit set: -1 where wchar_t is signed, its maximum where it is unsigned.
    constexpr wchar_t allBits = static_cast<wchar_t>(-1);
    const wchar_t lower[] = {0x141, 0x1041, L'q', allBits, 0};
    const wchar_t upper[] = {0x141, 0x1041, L'Q', allBits, 0};
    EXPECT_EQ(toLower(std::wstring(upper)), lower);
    EXPECT_EQ(toUpper(std::wstring(lower)), upper);
    // One letter at an index; none past the end.
    EXPECT_EQ(toUpper("hello", 4), "hellO");
    EXPECT_EQ(toUpper("hello", ~0UL), "hello");
    const char* const old = std::getenv("LC_ALL");
    const std::string saved = old ? old : "";
    setenv("LC_ALL", "C.UTF-8", 1);
    EXPECT_EQ(toUpperWithLocal(std::string("h\xC3\xA9llo \xC5\x82")), "H\xC3\x89LLO \xC5\x81");
    EXPECT_EQ(toLowerWithLocal(std::wstring{0x141, L'A', 0xD83D, 0xDE00}),
              (std::wstring{0x142, L'a', 0xD83D, 0xDE00}));
    EXPECT_THROW(toUpperWithLocal(std::string("ab\xFF")), std::range_error);
    setenv("LC_ALL", "xx_NOWHERE.UTF-8", 1);
    EXPECT_EQ(toUpperWithLocal(std::string("h\xC3\xA9llo")), "H\xC3\xA9LLO");
    EXPECT_EQ(toLowerWithLocal(std::wstring{0x141, L'A'}), (std::wstring{0x141, L'a'}));
    old ? setenv("LC_ALL", saved.c_str(), 1) : unsetenv("LC_ALL");
}

// Against std::string's search and the plain edits on any text: the text fuzz target.
TEST(Text, Search) {
    const struct {
        std::string text, sub;
        bool found;
        size_t position;  // 99: left as it was
        bool foundIgnoringCase;
    } finds[] = {{"abcabc", "bc", true, 1, true},
                 {"", "", true, 0, true},
                 {"Hello World", "WORLD", false, 99, true},
                 {"\xC3\x89t", "\xC3\xA9T", false, 99, false}};
    for (const auto& c : finds) {
        SCOPED_TRACE(c.text + " / " + c.sub);
        size_t location = 99;
        EXPECT_EQ(findSubStringLocation(c.text, c.sub, location), c.found);
        EXPECT_EQ(location, c.position);
        EXPECT_EQ(findSubStringCaseSensitive(c.text, c.sub), c.found);
        EXPECT_EQ(findSubStringCaseInsensitive(c.text, c.sub), c.foundIgnoringCase);
    }
    EXPECT_TRUE(endsWithAny(L"a.com", {L".org", L".com"}) && startsWith(L"abc", L"ab"));
    EXPECT_FALSE(endsWithAny("a.com", {}) || startsWithDigit("\xD9\xA1"));
    EXPECT_EQ(replaceLastOccurrence("...", '.', '\0'), std::string("..\0", 3));
}

// Matches in a 16-byte block or the tail; @ and ` differ only in the case bit; a costly near-miss.
TEST(Text, CaseInsensitiveSearchInLongTexts) {
    const std::string filler(100, 'x');
    const struct {
        std::string text, sub;
        bool found;
    } cases[] = {
        {filler.substr(0, 37) + "NEEDLE", "needle", true},
        {filler + "needlf" + filler, "NEEDLE", false},
        {filler + "a`b" + filler, "A@B", false},
        {filler + "A@B" + filler, "a@b", true},
        {std::string(4096, 'a'), std::string(300, 'A') + "b", false},
        {std::string(4096, 'a') + std::string(299, 'a') + "B", std::string(300, 'A') + "b", true},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(findSubStringCaseInsensitive(c.text, c.sub), c.found) << c.sub.substr(0, 16);
    }
}

// Occurrences formed by an erasure go too; an empty sub changes nothing.
TEST(Text, EraseSubString) {
    std::string runs = std::string(500, 'a') + std::string(500, 'b') + "!", text = "abc";
    eraseSubString(runs, "ab");
    eraseSubString(text, "");
    EXPECT_EQ(runs, "!");
    EXPECT_EQ(text, "abc");
}

// A cut-off sequence at the end counts as a character, any other invalid byte empties the result.
TEST(Text, Substr) {
    const std::string aeb = "a\xC3\xA9!";  // 3 characters
    // clang-format off
    const struct {
        std::string text;
        unsigned start;
        unsigned long count;
        std::string part;
    } byCharacters[] = {{aeb, 1, 1, "\xC3\xA9"}, {aeb, 0, ULONG_MAX, aeb}, {aeb, 2, 5, "!"},
        {aeb, 3, 1, ""}, {aeb, UINT_MAX, ULONG_MAX, ""}, {"", 0, 1, ""},
        {"\xF0\x9F\x98\x80z", 0, 1, "\xF0\x9F\x98\x80"}, {"\xE4\xB8", 0, 1, "\xE4\xB8"},
        {"ab\x80", 0, 1, ""}, {"a\xF8z", 0, 1, ""}};
    // clang-format on
    for (const auto& c : byCharacters)
        EXPECT_EQ(substr(c.text, c.start, c.count), c.part)
            << testing::PrintToString(c.text) << " from " << c.start;
    const struct {
        std::string text, start, end, part;
    } byMarkers[] = {{"a[b]c", "[", "]", "b"}, {"a[b]c", "[", "#", "b]c"},
                     {"a[b]c", "#", "]", ""},  {"a[b]c", "", "]", "a[b"},
                     {"a[b]c", "[", "", ""},   {"]a[b]", "[", "]", "b"}};
    for (const auto& c : byMarkers) {
        EXPECT_EQ(substr(c.text, c.start, c.end), c.part) << c.text << " " << c.start << c.end;
    }
}

// copy writes all or nothing, NUL-filling the rest; copyn truncates; neither writes past size.
TEST(Text, CopyIntoBuffers) {
    const struct {
        const char* source;
        unsigned long size;
        bool copied;           // by copy
        unsigned long length;  // copied by copyn
    } cases[] = {{"hello", 5, false, 4},
                 {"hello", 6, true, 5},
                 {"hello", 9, true, 5},
                 {"hello", 1, false, 0},
                 {"", 1, true, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.source) + " into " + std::to_string(c.size));
        const std::string source = c.source;
        char buffer[12];
        std::memset(buffer, 'x', sizeof buffer);
        EXPECT_EQ(copy(buffer, c.size, c.source), c.copied);
        EXPECT_EQ(std::string(buffer, 12),
                  c.copied
                      ? (source + std::string(c.size - c.length, '\0')).append(12 - c.size, 'x')
                      : "xxxxxxxxxxxx");
        std::memset(buffer, 'x', sizeof buffer);
        EXPECT_EQ(copyn(buffer, c.size, c.source), c.length);
        EXPECT_EQ(std::string(buffer, c.size + 1),
                  source.substr(0, c.length).append(1, '\0').append(c.size - c.length, 'x'));
    }
    char buffer[4] = {'x', 'x', 'x', 'x'};
    EXPECT_FALSE(copy(buffer, 0, "a") || copy(nullptr, 4, "a") || copy(buffer, 4, nullptr));
    EXPECT_EQ(copyn(buffer, 0, "a") + copyn(nullptr, 4, "a") + copyn(buffer, 4, nullptr), 0u);
    EXPECT_EQ(std::string(buffer, 4), "xxxx");
}

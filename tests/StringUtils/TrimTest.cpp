#include "StringUtils/Trim.h"

#include <gtest/gtest.h>

namespace {

TEST(Trim, LeftRightAndBoth) {
    struct Case {
        std::string text;
        std::string left;
        std::string right;
        std::string both;
    };
    const Case cases[] = {
        {"", "", "", ""},
        {" \t\n\v\f\r", "", "", ""},
        {"  a b  ", "a b  ", "  a b", "a b"},
        {"abc\v", "abc\v", "abc", "abc"},
        {"\xC2\xA0x\xC2\xA0", "\xC2\xA0x\xC2\xA0", "\xC2\xA0x\xC2\xA0", "\xC2\xA0x\xC2\xA0"},
        {std::string("\0 a", 3), std::string("\0 a", 3), std::string("\0 a", 3),
         std::string("\0 a", 3)},
    };
    for (const auto& [text, left, right, both] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(StringUtils::trimLeft(text), left);
        EXPECT_EQ(StringUtils::trimRight(text), right);
        EXPECT_EQ(StringUtils::trim(text), both);
    }
}

TEST(Trim, RvalueOverloadsTakeTheArgument) {
    std::string text = "  moved  ";
    EXPECT_EQ(StringUtils::trim(std::move(text)), "moved");
    EXPECT_TRUE(text.empty());
    std::string left = " x";
    EXPECT_EQ(StringUtils::trimLeft(std::move(left)), "x");
    EXPECT_TRUE(left.empty());
}

TEST(Trim, TrimEx) {
    struct Case {
        std::string text;
        StringUtils::TrimmedParts parts;
    };
    const Case cases[] = {
        {"", {"", "", ""}},         {"  ab\t", {"  ", "ab", "\t"}},       {"   ", {"   ", "", ""}},
        {"ab\v", {"", "ab\v", ""}}, {"\r\na b\f", {"\r\n", "a b", "\f"}}, {"x", {"", "x", ""}},
    };
    for (const auto& [text, parts] : cases) {
        SCOPED_TRACE(text);
        const auto result = StringUtils::trimEx(text);
        EXPECT_EQ(result, parts);
        EXPECT_EQ(result.leading + result.middle + result.trailing, text);
    }
}

TEST(Trim, WhiteSpaceClasses) {
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        const bool space = byte == ' ' || (byte >= 9 && byte <= 13);
        EXPECT_EQ(StringUtils::isSpace(static_cast<char>(byte)), space);
        EXPECT_EQ(StringUtils::isSpace(static_cast<wchar_t>(byte)), space || byte == 160);
    }
    EXPECT_FALSE(StringUtils::isSpace(wchar_t{0x2003}));

    EXPECT_TRUE(StringUtils::allCharsSpaces(""));
    EXPECT_TRUE(StringUtils::allCharsSpaces(" \t\v"));
    EXPECT_FALSE(StringUtils::allCharsSpaces(" x "));
    EXPECT_FALSE(StringUtils::containsWhiteSpace(""));
    EXPECT_TRUE(StringUtils::containsWhiteSpace("a\fb"));
    EXPECT_FALSE(
        StringUtils::containsWhiteSpace("a\xC2\xA0"
                                        "b"));
}

}  // namespace

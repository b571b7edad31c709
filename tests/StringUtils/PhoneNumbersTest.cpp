#include "DifferentialCheck.h"
#include "Reference.h"
#include "StringUtils/Patterns.h"
#include "StringUtils/PhoneNumbers.h"

#include <gtest/gtest.h>

#include <climits>
#include <regex>
#include <stdexcept>

namespace {

using namespace StringUtils;

TEST(PhoneNumbers, IsValidPhoneNumberDigit) {
    struct Case {
        char c;
        bool withoutLetters, withLetters;
    };
    const Case cases[] = {
        {'0', true, true},    {'9', true, true},      {'#', true, true},      {'*', true, true},
        {'+', true, true},    {',', true, true},      {'(', false, true},     {')', false, true},
        {'-', false, true},   {'.', false, true},     {' ', false, true},     {'!', false, true},
        {'$', false, true},   {'&', false, true},     {'a', false, true},     {'Z', false, true},
        {'/', false, false},  {'%', false, false},    {'"', false, false},    {'\'', false, false},
        {'\0', false, false}, {'\x80', false, false}, {'\xFF', false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "byte " << int(static_cast<unsigned char>(c.c)));
        EXPECT_EQ(isValidPhoneNumberDigit(c.c, false), c.withoutLetters);
        EXPECT_EQ(isValidPhoneNumberDigit(c.c, true), c.withLetters);
    }
}

TEST(PhoneNumbers, DigitAndNumberTests) {
    EXPECT_TRUE(isPhoneNumber("555 123-4567", false));
    EXPECT_FALSE(isPhoneNumber("(555) 123-4567", false));
    EXPECT_TRUE(isPhoneNumber("(555) 123-4567", true));
    EXPECT_FALSE(isPhoneNumber("", true));
    EXPECT_FALSE(isPhoneNumber("555\xC3\xA9", true));
    const std::pair<std::string_view, bool> numbers[] = {
        {"", false}, {"12a", false}, {"-1", false}, {"1.5", false}, {"007", true}, {"1 2", false},
    };
    for (const auto& [text, expected] : numbers) {
        SCOPED_TRACE(text);
        EXPECT_EQ(isNumber(text), expected);
    }
    EXPECT_FALSE(containsDigit("abc"));
    EXPECT_FALSE(containsDigit(""));
    EXPECT_TRUE(containsDigit("a1"));
    EXPECT_EQ(removeNonDigits("+1 (555) 010-0199"), "15550100199");
    EXPECT_EQ(removeNonDigits("\xD9\xA3"
                              "1"),
              "1");
}

TEST(PhoneNumbers, SanitizePhoneNumber) {
    struct Case {
        std::string number;
        bool longest, letters, keepZero;
        std::string expected;
    };
    const Case cases[] = {
        {"0044 (20) 555", false, false, false, "04420555"},
        {"0044 (20) 555", false, false, true, "004420555"},
        {" 0123", false, false, false, "0123"},
        {"", false, false, false, ""},
        {"0", false, false, false, ""},
        {"1+2*3#4,5", false, false, true, "1+2*3#4,5"},
        {"1-800-FLOWERS!", false, true, true, "1-800-FLOWERS!"},
        {"1-800/FLOWERS\xC3\xA9", false, true, true, "1-800FLOWERS"},
        {"123,45678,9", true, false, false, "45678"},
        {"12a,3b4", true, false, false, "12"},
        {",,,", true, false, false, ""},
        {"0123", true, false, false, "0123"},
        {"", true, false, false, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.number);
        EXPECT_EQ(sanitizePhoneNumber(c.number, c.longest, c.letters, c.keepZero), c.expected);
    }
}

TEST(PhoneNumbers, SanitizeCallString) {
    struct Case {
        std::string text;
        bool letters;
        std::string expected;
    };
    const Case cases[] = {
        {"+1 (555) 010-0199 ext 12", false, "+1 (555) 010-0199 "},
        {"+1 (555) 010-0199 ext 12", true, "+1 (555) 010-0199 ext 12"},
        {"555/0100", false, "555"},
        {"555\xC2\xAD"
         "0100\xE1\xA0\x86"
         "9",
         false,
         "555\xC2\xAD"
         "0100\xE1\xA0\x86"
         "9"},
        {"555\xC3\xA9"
         "0100",
         true, "555"},
        {"", false, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(sanitizeCallString(c.text, c.letters), c.expected);
    }
    EXPECT_THROW(sanitizeCallString("555\xFF", false), std::range_error);
}

TEST(PhoneNumbers, ExtraZeroDtmfAndPlaceholders) {
    EXPECT_EQ(removeExtraZeroPhrase("+44 (0)20 (0)1"), "+44 20 (0)1");
    EXPECT_EQ(removeExtraZeroPhrase("+44 20"), "+44 20");

    std::string number = "old", dtmf = "old";
    splitNumberDTMF("5550100,,123#", number, dtmf);
    EXPECT_EQ(number, "5550100");
    EXPECT_EQ(dtmf, ",,123#");
    splitNumberDTMF("5550100", number, dtmf);
    EXPECT_EQ(number, "5550100");
    EXPECT_EQ(dtmf, "");
    splitNumberDTMF(",1", number, dtmf);
    EXPECT_EQ(number, "");
    EXPECT_EQ(dtmf, ",1");

    const std::pair<std::string, bool> placeholders[] = {
        {"", true},          {"Anonymous", true},   {"UNKNOWN", true},
        {"unknown", true},   {" anonymous", false}, {"anonymous caller", false},
        {"anonymou", false}, {"5550100", false},
    };
    for (const auto& [text, expected] : placeholders) {
        SCOPED_TRACE(text);
        EXPECT_EQ(isNumberAnonymousOrEmpty(text), expected);
    }
}

TEST(PhoneNumbers, ComparePhoneNumbers) {
    struct Case {
        std::string first, second;
        bool same;
    };
    const Case cases[] = {
        {"+1 555-0100", "1 555 0100", true},
        {"-", " ", true},
        {"(555) 0100", "(555) 0100", false},
        {"555 0100", "(555) 0100", false},
        {"+41 44 123", "044 123", false},
        {"5550100", "55501000", false},
        {"", "", false},
        {"12#", "12", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first + " / " + c.second);
        EXPECT_EQ(comparePhoneNumbers(c.first, c.second), c.same);
    }
}

TEST(PhoneNumbers, Phonewords) {
    const std::pair<std::string, std::string> cases[] = {
        {"1800FLOWERS", "18003569377"},
        {"+1-800-FLOWERS", "+1-800-3569377"},
        {"1-800-FLOWERS", "1-800-3569377"},
        {"1a", "12"},
        {"(1)qz", "(1)79"},
        {"#abcdefghijklmnopqrstuvwxyz", "#22233344455566677778889999"},
        {"*ABCDEFGHIJKLMNOPQRSTUVWXYZ", "*22233344455566677778889999"},
        {"FLOWERS", ""},
        {"12", ""},
        {"1", ""},
        {"", ""},
        {"1\xC3\xA9", ""},
        {"1a@bc.de", ""},
        {"-1a", ""},
    };
    for (const auto& [text, digits] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(isPhoneWordFormat(text), !digits.empty());
        EXPECT_EQ(convertPhonewordToPhoneNumber(text), digits);
    }
}

TEST(PhoneNumbers, IsValidPhoneNumber) {
    const std::string digits25(25, '5');
    struct Case {
        std::string number;
        unsigned int minDigits;
        bool raw, valid;
    };
    const Case cases[] = {
        {"+1 (555) 010-0199", 0, true, true},
        {"555.0100", 0, false, false},
        {digits25, 10, true, true},
        {"+" + digits25, 10, true, false},
        {"12", 3, true, false},
        {"123", 3, true, true},
        {"+", 0, false, false},
        {" ", 0, true, false},
        {"+" + std::string(21, '1'), 21, true, true},
        {"+" + std::string(22, '1'), 1, true, false},
        {std::string(30, '1'), 21, true, true},
        {std::string(31, '1'), 1, true, false},
        {"++1", 1, false, false},
        {"1+1", 1, false, false},
        {"1\n", 1, false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.number + " min " + std::to_string(c.minDigits));
        EXPECT_EQ(isValidRawPhoneNumber(c.number), c.raw);
        EXPECT_EQ(isValidPhoneNumber(c.number, c.minDigits), c.valid);
    }
}

TEST(PhoneNumbers, IsValidPhoneNumberRejectsMinimumAbove21LikeThePattern) {
    for (const unsigned int minDigits :
         {22U, 23U, 100U, 100000U, unsigned(INT_MAX), 1U << 31, UINT_MAX}) {
        SCOPED_TRACE(minDigits);
        try {
            isValidPhoneNumber("5550100", minDigits);
            ADD_FAILURE() << "no exception";
        } catch (const std::regex_error& error) {
            EXPECT_EQ(error.code(), std::regex_constants::error_badbrace);
        }
        // A text that fails the raw test is rejected before any digit count.
        EXPECT_FALSE(isValidPhoneNumber("555.0100", minDigits));
    }
}

TEST(PhoneNumbers, IsValidPhoneNumberAsItsPatterns) {
    difftest::TextGenerator gen(11);
    const std::regex raw = reference::compile(Patterns::kRawPhoneNumber);
    for (int i = 0; i < 3000; ++i) {
        std::string number = gen.text("0123456789 -()", gen.number(0, 34));
        if (gen.number(0, 1)) {
            number.insert(0, "+");
        }
        number = gen.mutate(number, "+.#a");
        const auto minDigits = static_cast<unsigned int>(gen.number(0, 21));
        ASSERT_EQ(isValidPhoneNumber(number, minDigits),
                  reference::isValidPhoneNumber(number, minDigits, raw))
            << "number \"" << number << "\" min " << minDigits;
    }
}

TEST(PhoneNumbers, IsValidFeatureAccessCode) {
    const std::pair<std::string, bool> cases[] = {
        {"*72", true},
        {"*72 555 0100", true},
        {"**21*5550100#", true},
        {"#", false},
        {"123", false},
        {"*72,5", false},
        {"*72abc", true},
        {"0*72", false},
        {"*7", true},
        {"*", false},
        {"*72#", true},
        {"*72##", true},
        {"*72###", true},
        {"*1*2*3*4", true},
        {"*1*2*3", true},
        {"*72+", true},
        {"*72++1", false},
        {"*72+123456789012345", true},
        {"*72+1234567890123456", false},
        {"*12345", true},
        {"*1234+", true},
        {"", false},
        {"*\xC3\xA9"
         "72",
         true},
    };
    for (const auto& [code, valid] : cases) {
        SCOPED_TRACE(code);
        EXPECT_EQ(isValidFeatureAccessCode(code), valid);
    }
}

}  // namespace

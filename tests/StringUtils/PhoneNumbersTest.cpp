#include "Checks.h"
#include "StringUtils/PhoneNumbers.h"

#include <gtest/gtest.h>

#include <climits>
#include <regex>
#include <stdexcept>

using namespace StringUtils;
using namespace std::string_view_literals;
using checks::expectVerdicts;
using checks::with;

TEST(PhoneNumbers, Predicates) {
    for (const char c : "09#*+,"sv) EXPECT_TRUE(isValidPhoneNumberDigit(c, false)) << c;
    for (const char c : "()-. !$&aZ"sv) {
        EXPECT_TRUE(!isValidPhoneNumberDigit(c, false) && isValidPhoneNumberDigit(c, true)) << c;
    }
    for (const char c : "/%\"'\0\x80\xFF"sv) EXPECT_FALSE(isValidPhoneNumberDigit(c, true)) << +c;
    expectVerdicts(with(isPhoneNumber, false), {"555 123-4567", "-1"}, {"(555) 1", "", "1.5"});
    expectVerdicts(with(isPhoneNumber, true), {"(555) 1-A!"}, {"", "555\xC3\xA9", "1/2"});
    expectVerdicts(isNumber, {"007"}, {"", "12a", "-1", "1.5", "1 2"});
    expectVerdicts(containsDigit, {"a1"}, {"abc", ""});
    expectVerdicts(isNumberAnonymousOrEmpty, {"", "aNONYMOUS", "Unknown"}, {"unknown\n"});
    expectVerdicts(isPhoneWordFormat, {"1a", "(1)q"}, {"12", "Ab", "1\xC3\xA9", "1a@b.c", ""});
    expectVerdicts(isValidFeatureAccessCode, {"*72 5 0", "*72a\xC3\xA9"}, {"*72,5", "0*72", ""});
    expectVerdicts(with(comparePhoneNumbers, "1 5"), {"+1-5"}, {"1", "01 5", ""});
    expectVerdicts(with(comparePhoneNumbers, "(1)"), {}, {"(1)", "1"});
    const auto ones = [](std::size_t count) { return std::string(count, '1'); };
    const auto valid = [](unsigned int minDigits) { return with(isValidPhoneNumber, minDigits); };
    expectVerdicts(valid(3), {"+1 (55) 0-9", "+1-2-3"}, {"12", "+1 2", "5.01", ""});
    expectVerdicts(valid(21), {"+" + ones(21), ones(30)}, {"+" + ones(20), ones(20)});
    expectVerdicts(valid(0), {"1", ones(22)}, {"+" + ones(22), ones(31)});
    // A minimum above 21 makes a digit-count pattern invalid, after the raw test.
    for (const unsigned int minDigits : {22U, UINT_MAX}) {
        EXPECT_THROW(isValidPhoneNumber("5550100", minDigits), std::regex_error) << minDigits;
        EXPECT_FALSE(isValidPhoneNumber("555.0100", minDigits)) << minDigits;
    }
}

TEST(PhoneNumbers, Cleaners) {
    const auto plain = with(sanitizePhoneNumber, false, false, false);
    const auto longest = with(sanitizePhoneNumber, true, false, false);
    checks::expectTable<std::string>({
        {plain, "0044 (20) 555", "04420555"},
        {with(sanitizePhoneNumber, false, false, true), "0044 (20) 555", "004420555"},
        {with(sanitizePhoneNumber, false, true, false), "1-800/FLOWERS!\xC3\xA9", "1-800FLOWERS!"},
        {longest, "123,45678,9", "45678"},
        {longest, "12a,3b4", "12"},
        {with(sanitizeCallString, false), "+1 (555) 010-0199 ext 12", "+1 (555) 010-0199 "},
        {with(sanitizeCallString, true), "+1 (555) 010-0199 ext 12", "+1 (555) 010-0199 ext 12"},
        {with(sanitizeCallString, true), "555\xC3\xA9 0100", "555"},
        {with(sanitizeCallString, false), "5\xC2\xAD-0\xE1\xA0\x86-9", "5\xC2\xAD-0\xE1\xA0\x86-9"},
        {removeNonDigits, "+1 (555) 010-0199\xD9\xA3", "15550100199"},
        {removeExtraZeroPhrase, "+44 (0)20 (0)1", "+44 20 (0)1"},
        {convertPhonewordToPhoneNumber, "12", ""},
    });
    EXPECT_THROW(sanitizeCallString("555\xFF", false), std::range_error);
    const struct {
        std::string text, number, dtmf;
    } splits[] = {
        {"5550100,,123#", "5550100", ",,123#"}, {"5550100", "5550100", ""}, {",1", "", ",1"}};
    for (const auto& c : splits) {
        std::string number = "old", dtmf = "old";  // outputs that held text
        splitNumberDTMF(c.text, number, dtmf);
        EXPECT_EQ(number, c.number) << c.text;
        EXPECT_EQ(dtmf, c.dtmf) << c.text;
    }
    const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    const std::string keys = "22233344455566677778889999";
    EXPECT_EQ(convertPhonewordToPhoneNumber("(1)-" + letters), "(1)-" + keys + keys);
}

// Formatters, std::stod and byte-wise case follow the global locale; nothing else does.
#include <gtest/gtest.h>

#include <cctype>
#include <functional>
#include <locale>

#include "StringUtils/StringUtils.h"
#include "TestLocale.h"

namespace {

using namespace StringUtils;

const char* const kLocales[] = {"tr_TR.UTF-8", "de_DE.UTF-8"};

// Bools and texts, which GoogleTest shows alike in every locale (no number is shown here).
std::string shown(const auto& value) { return testing::PrintToString(value); }

// Turkish differs from ASCII in I and i; German in digit grouping and the decimal comma.
const struct {
    const char* name;
    std::function<std::string()> run;
} kLocaleFree[] = {
    {"sanatizeStatusString",
     [] { return sanatizeStatusString("a<SCRIPT>b<IMG SRC=x><HTML><A HREF=y>\tc"); }},
    {"toBool", [] { return shown(toBool("TRUE")) + shown(toBool("tRuE")); }},
    {"isNumberAnonymousOrEmpty", [] { return shown(isNumberAnonymousOrEmpty("UNKNOWN")); }},
    {"convertPhonewordToPhoneNumber", [] { return convertPhonewordToPhoneNumber("1800FLIGHTS"); }},
    {"text",
     [] {
         return trim("\xC2\xA0 I \xA0") + shown(split("I,i", ',', false)) +
                shown(wordWrapString("Ii Ii Ii", 5)) +
                shown(findSubStringCaseSensitive("FILE", "I")) + escapeCharacters("Ii", "I", '\\') +
                shown(greaterVersion("1.10", "1.9")) + toHexString(-1) +
                toString(toWString("\xC4\xB0\xC4\xB1"));
     }},
};

TEST(Locale, OtherFunctionsIgnoreTheLocale) {
    std::vector<std::string> classic;
    for (const auto& probe : kLocaleFree) classic.push_back(probe.run());
    for (const char* name : kLocales) {
        const ScopedGlobalLocale locale(name);
        if (!locale.active()) GTEST_SKIP() << name << " could not be loaded or built";
        for (size_t i = 0; i < std::size(kLocaleFree); ++i) {
            EXPECT_EQ(kLocaleFree[i].run(), classic[i]) << kLocaleFree[i].name << " under " << name;
        }
    }
}

// Each byte through toupper/tolower: under tr_TR.UTF-8 i need not have an ASCII capital.
TEST(Locale, ByteWiseCaseFollowsTheLocale) {
    const ScopedGlobalLocale locale("tr_TR.UTF-8");
    if (!locale.active()) GTEST_SKIP() << "tr_TR.UTF-8 could not be loaded or built";
    const std::string upperI(1, static_cast<char>(std::toupper('i')));
    const std::string lowerI(1, static_cast<char>(std::tolower('I')));
    EXPECT_EQ(toUpper("title"), "T" + upperI + "TLE");
    EXPECT_EQ(toLower("TITLE"), "t" + lowerI + "tle");
    EXPECT_EQ(toUpper("file", 1), "f" + upperI + "le");
    EXPECT_EQ(findSubStringCaseInsensitive("FILE", "file"), lowerI == "i");
    EXPECT_TRUE(findSubStringCaseInsensitive("FOLDER", "folder"));
}

TEST(Locale, NumbersFollowTheLocale) {
    const ScopedGlobalLocale locale("de_DE.UTF-8");
    if (!locale.active()) GTEST_SKIP() << "de_DE.UTF-8 could not be loaded or built";
    EXPECT_EQ(toQuillString(-1234567), "-1.234.567");
    EXPECT_EQ(uint64ToQuillString(1000), "1.000");
    EXPECT_EQ(floatToQuillString(0.5F), "0,5");
    double value = 0;
    EXPECT_TRUE(toDouble("1,5", value));
    EXPECT_EQ(value, 1.5);
    EXPECT_FALSE(toDouble("1.5", value));
}

}  // namespace

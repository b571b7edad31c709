// The validators on texts of 10 MB, run on a thread with a 256 KB stack: they
// must give the right answer in linear time where a backtracking regular
// expression engine would overflow the stack.
#include "StringUtils/Addresses.h"
#include "StringUtils/PhoneNumbers.h"
#include "StringUtils/Sanitizing.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>
#include <string>

namespace {

using namespace StringUtils;

constexpr std::size_t kTextBytes = std::size_t{10} * 1024 * 1024;
constexpr std::size_t kStackBytes = std::size_t{256} * 1024;

// unit repeated count times, or as often as fits in kTextBytes.
std::string repeated(std::string_view unit, std::size_t count = 0) {
    if (count == 0) {
        count = kTextBytes / unit.size();
    }
    std::string text;
    text.reserve(count * unit.size());
    for (std::size_t i = 0; i < count; ++i) {
        text += unit;
    }
    return text;
}

// Runs body to completion on a new thread with a kStackBytes stack.
void runOnSmallStack(const std::function<void()>& body) {
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStackBytes), 0);
    pthread_t thread;
    auto trampoline = [](void* argument) -> void* {
        (*static_cast<const std::function<void()>*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(
        pthread_create(&thread, &attributes, trampoline, const_cast<std::function<void()>*>(&body)),
        0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST(LargeInput, ValidatorsOnASmallStack) {
    struct Case {
        const char* name;
        std::function<bool()> check;
        bool expected;
    };
    const std::string longLabels = "a@b" + repeated(".c1-d");
    const std::string longLocal = repeated("x") + "@b.c";
    const std::string sipHost = "alice@" + repeated("ab.");
    const std::string plusDigits = "+" + repeated("1 ");
    const std::string star = "*" + repeated("1");
    const std::string phoneword = "1" + repeated("a");
    const Case cases[] = {
        {"email with many labels", [&] { return isValidEmail(longLabels); }, true},
        {"email with a long local part", [&] { return isValidEmail(longLocal); }, false},
        {"discovery code", [&] { return isValidDiscoveryCode(longLabels); }, false},
        {"SIP address", [&] { return isValidSipUri(sipHost); }, true},
        {"raw phone number", [&] { return isValidRawPhoneNumber(plusDigits); }, true},
        {"phone number", [&] { return isValidPhoneNumber(plusDigits, 1); }, false},
        {"feature access code", [&] { return isValidFeatureAccessCode(star); }, false},
        {"phoneword", [&] { return isPhoneWordFormat(phoneword); }, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        bool result = !c.expected;
        runOnSmallStack([&] { result = c.check(); });
        EXPECT_EQ(result, c.expected);
    }
}

TEST(LargeInput, CleanersOnASmallStack) {
    const std::string mac = repeated(":") + "1:2:3:4:5:6" + repeated("-");
    const std::string nested =
        repeated("<scr", kTextBytes / 8) + "<script" + repeated("ipt", kTextBytes / 8);
    const std::string newlines = repeated("\n");
    std::string macResult, nestedResult, newlinesResult;
    runOnSmallStack([&] {
        macResult = reformatMACaddress(mac, ":");
        nestedResult = sanatizeStatusString(nested);
        newlinesResult = sanatizeStatusString(newlines);
    });
    EXPECT_EQ(macResult, "01:02:03:04:05:06");
    EXPECT_TRUE(nestedResult.empty()) << nestedResult.size() << " bytes left";
    EXPECT_TRUE(newlinesResult.empty()) << newlinesResult.size() << " bytes left";
}

}  // namespace

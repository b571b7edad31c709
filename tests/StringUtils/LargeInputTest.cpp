// Validators and cleaners on 10 MB texts on a 256 KB stack, which backtracking would overflow.
#include "StringUtils/Addresses.h"
#include "StringUtils/PhoneNumbers.h"
#include "StringUtils/Sanitizing.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <string>

namespace {

using namespace StringUtils;

// unit repeated as often as fits in 10 MB.
std::string repeated(std::string_view unit) {
    std::string text;
    for (std::size_t count = (10 << 20) / unit.size(); count > 0; --count) text += unit;
    return text;
}

TEST(LargeInput, OnASmallStack) {
    const std::string labels = "a@b" + repeated(".c1-d"), plusDigits = "+" + repeated("1 "),
                      mac = repeated(":") + "1:2:3:4:5:6" + repeated("-"),
                      nested = repeated("<img") + "<img src" + repeated(" src");
    auto checks = [&]() -> void* {
        EXPECT_TRUE(isValidEmail(labels));
        EXPECT_FALSE(isValidEmail(repeated("x") + "@b.c"));
        EXPECT_FALSE(isValidDiscoveryCode(labels));
        EXPECT_TRUE(isValidSipUri("alice@" + repeated("ab.")));
        EXPECT_TRUE(isValidRawPhoneNumber(plusDigits));
        EXPECT_FALSE(isValidPhoneNumber(plusDigits, 1));
        EXPECT_FALSE(isValidFeatureAccessCode("*" + repeated("1")));
        EXPECT_TRUE(isPhoneWordFormat("1" + repeated("a")));
        EXPECT_EQ(reformatMACaddress(mac, ":"), "01:02:03:04:05:06");
        EXPECT_TRUE(sanatizeStatusString(nested).empty());
        EXPECT_TRUE(sanatizeStatusString(repeated("\n")).empty());
        return nullptr;
    };
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
    const auto run = [](void* body) { return (*static_cast<decltype(checks)*>(body))(); };
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &checks), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

}  // namespace

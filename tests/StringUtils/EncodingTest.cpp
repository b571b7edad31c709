#include "StringUtils/Encoding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <latch>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

const char* const kFromBytesError = "wstring_convert: from_bytes error";
const char* const kToBytesError = "wstring_convert: to_bytes error";

template <typename Call>
std::string rangeErrorOf(Call call) {
    try {
        call();
    } catch (const std::range_error& error) {
        return error.what();
    }
    return "no error";
}

TEST(Encoding, WellFormedText) {
    struct Case {
        std::string utf8;
        std::wstring wide;
    };
    const Case cases[] = {
        {"", L""},
        {"plain", L"plain"},
        {"\xC3\xA9\xE4\xB8\xAD", {0xE9, 0x4E2D}},
        {"\xF0\x9F\x98\x80", {0xD83D, 0xDE00}},
        {"\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}},
        {"\xEF\xBB\xBF"
         "a",
         {0xFEFF, L'a'}},
        {std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
    };
    for (const auto& [utf8, wide] : cases) {
        SCOPED_TRACE(utf8);
        EXPECT_EQ(StringUtils::toWString(utf8), wide);
        EXPECT_EQ(StringUtils::toString(wide), utf8);
        EXPECT_EQ(StringUtils::toString(std::wstring_view(wide)), utf8);
        const std::u16string utf16(wide.begin(), wide.end());
        if (utf16.find(u'\0') == std::u16string::npos) {
            EXPECT_EQ(StringUtils::fromUtf16String(utf16.c_str()), utf8);
            EXPECT_EQ(StringUtils::toString(wide.c_str()), utf8);
        }
        EXPECT_EQ(StringUtils::converter->from_bytes(utf8), utf16);
    }
    // A wide element beyond 0xFFFF that is a code point is written as one.
    EXPECT_EQ(StringUtils::toString(std::wstring{0x1F600}), "\xF0\x9F\x98\x80");
    // The pointer form stops at the first NUL element, the string form does not.
    const std::wstring withNul(L"a\0b", 3);
    EXPECT_EQ(StringUtils::toString(withNul.c_str()), "a");
}

TEST(Encoding, MalformedUtf8) {
    const std::string cases[] = {
        "\xFF",
        "a\xC3",
        "\xC3"
        "a",
        "\x80",
        "\xC0\x80",
        "\xC1\xBF",
        "\xE0\x80\x80",
        "\xE0\x9F\xBF",
        "\xED\xA0\x80",
        "\xED\xBF\xBF",
        "\xE2\x82",
        "\xF0\x80\x80\x80",
        "\xF0\x9F\x98",
        "\xF4\x90\x80\x80",
        "\xF5\x80\x80\x80",
        "\xF8\x88\x80\x80\x80",
        std::string(5000, 'a') + "\xC3",
    };
    for (const auto& utf8 : cases) {
        SCOPED_TRACE(utf8.substr(0, 8));
        EXPECT_EQ(rangeErrorOf([&] { StringUtils::toWString(utf8); }), kFromBytesError);
        EXPECT_EQ(rangeErrorOf([&] { StringUtils::converter->from_bytes(utf8); }), kFromBytesError);
    }
}

TEST(Encoding, MalformedUtf16) {
    const std::wstring cases[] = {
        {0xDC00},
        {L'a', 0xD800},
        {0xD800, L'a'},
        {0xDC00, 0xD800},
        {0xD800, 0xD800},
        {0x110000},
        {static_cast<wchar_t>(-1)},
        std::wstring(5000, L'a') + wchar_t{0xDBFF},
    };
    for (const auto& wide : cases) {
        SCOPED_TRACE(testing::PrintToString(wide.substr(0, 4)));
        EXPECT_EQ(rangeErrorOf([&] { StringUtils::toString(wide); }), kToBytesError);
        if (std::all_of(wide.begin(), wide.end(),
                        [](wchar_t c) { return c >= 0 && c <= 0xFFFF; })) {
            const std::u16string utf16(wide.begin(), wide.end());
            EXPECT_EQ(rangeErrorOf([&] { StringUtils::fromUtf16String(utf16.c_str()); }),
                      kToBytesError);
        }
    }
}

TEST(Encoding, ConverterIsUsableAfterAnError) {
    EXPECT_THROW(StringUtils::toWString("\xFF"), std::range_error);
    EXPECT_EQ(StringUtils::toWString("ok"), L"ok");
    EXPECT_THROW(StringUtils::toString(std::wstring{0xDC00}), std::range_error);
    EXPECT_EQ(StringUtils::toString(std::wstring(L"ok")), "ok");
}

TEST(Encoding, IdentityConversions) {
    const std::string invalid = "a\xFF\xC3";
    EXPECT_EQ(StringUtils::toString(invalid), invalid);
    EXPECT_EQ(StringUtils::toQuillString(invalid), invalid);
    EXPECT_EQ(StringUtils::fromU8string(invalid), invalid);
    const std::string whole = "left[middle]right";
    EXPECT_EQ(StringUtils::fromQuillString(std::string_view(whole).substr(5, 6)), "middle");
    EXPECT_EQ(StringUtils::fromU8string(std::u8string(u8"\u00e9t\u00e9")), "\xC3\xA9t\xC3\xA9");
    std::string moved = "taken";
    EXPECT_EQ(StringUtils::fromU8string(std::move(moved)), "taken");
    EXPECT_TRUE(moved.empty());
}

TEST(Encoding, SharedConverterServesManyThreads) {
    constexpr int kThreads = 4;
    std::latch start(kThreads);
    std::vector<std::thread> threads;
    std::vector<int> mismatches(kThreads, 0);
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            const std::string utf8 = std::string(100 + t, 'x') + "\xE4\xB8\xAD\xF0\x9F\x98\x80";
            start.arrive_and_wait();
            for (int i = 0; i < 500; ++i) {
                const std::wstring wide = StringUtils::toWString(utf8);
                mismatches[t] += StringUtils::toString(wide) != utf8;
                mismatches[t] += wide.size() != static_cast<size_t>(100 + t + 3);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(mismatches, std::vector<int>(kThreads, 0));
}

}  // namespace

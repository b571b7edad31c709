// The conversion wrappers, then our transcoder against the standard library's reference.
#include "StringUtils/Encoding.h"

#include <gtest/gtest.h>

#include <atomic>
#include <codecvt>
#include <locale>
#include <optional>
#include <random>
#include <stdexcept>
#include <vector>

#include "ThreadsAtOnce.h"

namespace {

using namespace StringUtils;

// A byte-order mark stays; a NUL too, but ends the pointer forms; errors leave converters usable.
TEST(Encoding, Wrappers) {
    const std::string utf8("\xEF\xBB\xBF\x61\xC3\xA9\0\xF0\x9F\x98\x80", 11),
        head = utf8.substr(0, 6);
    const std::wstring wide(L"\xFEFF\x61\xE9\0\xD83D\xDE00", 6);
    EXPECT_EQ(toWString(utf8), wide);
    EXPECT_EQ(toString(std::wstring_view(wide)), utf8);
    EXPECT_EQ(toString(wide.c_str()), head);
    EXPECT_EQ(fromUtf16String(u"\xFEFF\x61\xE9\0z"), head);
    EXPECT_TRUE(toWString("").empty() && fromUtf16String(u"").empty());
    EXPECT_THROW(toWString("a\xC3"), std::range_error);
    EXPECT_THROW(fromUtf16String(u"a\xD800"), std::range_error);
    EXPECT_THROW(toString(std::wstring(5000, L'a') + L"\xD800"), std::range_error);
    EXPECT_EQ(toString(toWString("ok")), "ok") << "the shared converter is still usable";
    EXPECT_EQ(toQuillString("a\xFF\xC3"), "a\xFF\xC3");
}

TEST(Encoding, SharedConverterServesManyThreads) {
    std::atomic<int> mismatches = 0;
    onThreadsAtOnce(4, [&](int t) {
        const std::string utf8 = std::string(100 + t, 'x') + "\xE4\xB8\xAD\xF0\x9F\x98\x80";
        for (int i = 0; i < 500; ++i) mismatches += toString(toWString(utf8)) != utf8;
    });
    EXPECT_EQ(mismatches, 0);
}

// Against the standard facet, lax (libstdc++'s) on encoded surrogates and cut-off sequences.
template <typename T>
using Reference =
    std::wstring_convert<std::codecvt_utf8_utf16<T, 0x10FFFF, std::codecvt_mode{}>, T>;

// Whether UTF-8 text holds an encoded surrogate or ends in a cut-off sequence.
bool laxForReference(const std::string& text) {
    bool lax = false;
    const auto at = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    for (size_t i = 0; i + 2 < text.size(); ++i)
        lax |= at(i) == 0xED && (at(i + 1) & 0xE0) == 0xA0 && (at(i + 2) & 0xC0) == 0x80;
    for (size_t back = 1; back <= 3 && back <= text.size(); ++back) {
        const unsigned lead = at(text.size() - back);
        lax |= lead >= 0xC2 && lead <= 0xF4 && back < 2u + (lead >= 0xE0) + (lead >= 0xF0);
    }
    return lax;
}

// The conversion's result, or the text of the std::range_error it threw.
template <typename Convert>
auto attempt(Convert convert) -> std::pair<std::optional<decltype(convert())>, std::string> {
    try {
        return {convert(), ""};
    } catch (const std::range_error& error) {
        return {std::nullopt, error.what()};
    }
}

template <typename T>
class Utf16Differential : public testing::Test {
protected:
    Converter<T> ours;
    Reference<T> reference;
    int departures = 0;

    // Equal to the reference's result, except at a known departure, where ours rejects.
    template <typename Text, typename Convert>
    void agree(const Text& text, Convert convert, bool lax) {
        const auto expected = attempt([&] { return convert(reference); }).first;
        const auto [actual, message] = attempt([&] { return convert(ours); });
        const char* const ourText = std::is_same_v<Text, std::string>
                                        ? "wstring_convert: from_bytes error"
                                        : "wstring_convert: to_bytes error";
        EXPECT_EQ(message, actual ? "" : ourText) << testing::PrintToString(text);
        EXPECT_EQ(actual, lax ? std::nullopt : expected) << testing::PrintToString(text);
        departures += lax && expected;
    }
    // Bytes alone, so that a cut-off sequence ends the input, and with a letter after them.
    void bytes(const std::string& text) {
        for (const std::string& input : {text, text + "z"}) {
            agree(input, [&](auto& c) { return c.from_bytes(input); }, laxForReference(input));
        }
    }
    void units(const std::basic_string<T>& text) {
        const bool highLast = !text.empty() && text.back() >= 0xD800 && text.back() <= 0xDBFF;
        agree(text, [&](auto& c) { return c.to_bytes(text); }, highLast);
    }
};

// clang-format off
const char* const kSequences[] = {
    "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEF\xBF\xBF", "\xF0\x90\x80\x80",
    "\xF4\x8F\xBF\xBF", "\x80", "\xBF", "\xC0\x80", "\xE0\x9F\xBF", "\xED\xA0\x80",
    "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80", "\xFF", "\xC2\x41", "\xE2\x82\x41",
    "\xF0\x9F\x98\x41", "\xC3", "\xE2\x82", "\xF0\x9F\x98"};
const std::string kPieces[] = {"a", "word ", "\xC3\xA9", "\xDF\xBF", "\xE4\xB8\xAD", "\xEF\xBF\xBF",
    "\xF0\x9F\x98\x80", "\xF4\x8F\xBF\xBF", "\xEF\xBB\xBF", std::string(40, 'x')};
// clang-format on

using CodeUnitTypes = testing::Types<char16_t, wchar_t>;
TYPED_TEST_SUITE(Utf16Differential, CodeUnitTypes);

// Every one- and two-byte text, longer ones of every first two bytes, triples of edge units.
TYPED_TEST(Utf16Differential, ShortInputs) {
    const char edges[] = "\x41\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC2\xE0\xF0\xFF";  // and its NUL
    for (int first = 0; first < 256; ++first) {
        const char a = static_cast<char>(first);
        this->bytes({a});
        for (int second = 0; second < 256; ++second) {
            const char b = static_cast<char>(second);
            this->bytes({a, b});
            if (first < 0xE0) continue;
            for (const char c : edges) this->bytes({a, b, c});
            if (first < 0xF0) continue;
            for (const char c : {'\x80', '\xBF', 'A'})
                for (const char d : {'\x80', '\xBF', '\xC0', 'A'}) this->bytes({a, b, c, d});
        }
    }
    using Text = std::basic_string<TypeParam>;
    const auto unit = [](long value) { return static_cast<TypeParam>(value); };
    std::vector<long> edgeUnits = {0,      0x7F,   0x80,   0x7FF,  0x800,  0xD7FF,
                                   0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFF};
    // Elements above 0xFFFF only against a facet that reads them as code points (not libc++'s).
    if constexpr (sizeof(TypeParam) == 4)
        if (attempt([&] { return this->reference.to_bytes(Text{unit(0x10000)}); }).first ==
            "\xF0\x90\x80\x80")
            edgeUnits.insert(edgeUnits.end(), {0x10000, 0x10FFFF, 0x110000, -1});
    for (const long a : edgeUnits)
        for (const long b : edgeUnits)
            for (const long c : edgeUnits) this->units(Text{unit(a), unit(b), unit(c)});
    const bool laxReference =
        attempt([this] { return this->reference.from_bytes("\xED\xA0\x80"); }).first.has_value();
    EXPECT_EQ(this->departures > 0, laxReference);
}

// Each class at every offset past the widest step (every lane), then long random texts.
TYPED_TEST(Utf16Differential, LongInputs) {
    using Text = std::basic_string<TypeParam>;
    const Text units[] = {{0x80},   {0x7FF},  {0x800},          {0xFFFF},       {0xD83D, 0xDE00},
                          {0xD800}, {0xDC00}, {0xDC00, 0xD800}, {0xD800, 0x41}, {0xDBFF, 0xDFFF}};
    constexpr size_t kReach = 136;  // past two of the encoder's 64-unit looks
    for (size_t offset = 0; offset <= kReach; ++offset) {
        for (const std::string sequence : kSequences) {
            this->bytes(std::string(offset, '1') + sequence + std::string(kReach - offset, ' '));
            this->bytes(std::string(offset, '1') + sequence);
        }
        for (const auto& unit : units) {
            this->units(Text(offset, u'1') + unit + Text(kReach - offset, u' '));
            this->units(Text(offset, u'1') + unit);
        }
    }
    std::mt19937 random(7);
    for (int round = 0; round < 600; ++round) {
        std::string text;
        for (auto length = random() % 1500; length > 0; --length) text += kPieces[random() % 10];
        auto wide = this->reference.from_bytes(text);
        if (round % 2 == 1 && !text.empty()) {
            text[random() % text.size()] = static_cast<char>(random());
            wide[random() % wide.size()] = static_cast<TypeParam>(0xD800 + random() % 0x800);
        }
        this->bytes(text);
        this->units(wide);
    }
}

}  // namespace

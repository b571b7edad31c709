// Each hand-written matcher against std::regex running the pattern it stands
// for, on many random texts drawn from alphabets near that pattern, including
// texts at the edges of every bounded repetition.
#include "DifferentialCheck.h"
#include "Reference.h"
#include "StringUtils/Addresses.h"
#include "StringUtils/PatternMatchers.h"
#include "StringUtils/Patterns.h"

#include <gtest/gtest.h>


namespace {

using difftest::TextGenerator;
using namespace std::string_view_literals;
namespace detail = StringUtils::detail;
namespace Patterns = StringUtils::Patterns;

constexpr int kRandomTexts = 20000;
constexpr std::string_view kNonAscii = "\x80\xC3\xFF";

std::string join(std::string_view a, std::string_view b) { return std::string(a) + std::string(b); }

TEST(PatternMatchers, EmailShortRandomTexts) {
    TextGenerator gen(1);
    const std::string alphabet = join("aZ09-_.%+@@..!~ \0"sv, kNonAscii);
    difftest::expectSameAsRegex(
        Patterns::kEmail, detail::matchesEmail, [&] { return gen.text(alphabet, 0, 12); },
        kRandomTexts);
}

TEST(PatternMatchers, EmailPartsAtTheirLengthBounds) {
    TextGenerator gen(2);
    // Parts of valid bytes with lengths just inside and outside each bound; the
    // mutation then brings in a byte that may not belong there.
    const auto part = [&](std::string_view chars, std::size_t bound) {
        const std::size_t near[] = {0, 1, 2, bound - 1, bound, bound + 1};
        const std::size_t length = near[gen.number(0, 5)];
        return length == 0 ? std::string() : gen.text("aZ9", 1) + gen.text(chars, length - 1);
    };
    const std::string nearChars = join("@.-_#a", kNonAscii);
    const auto email = [&] {
        std::string text = part("aZ09-_.%+", 256) + "@" + part("aZ09-", 65);
        for (std::size_t labels = gen.number(0, 3); labels > 0; --labels) {
            text += "." + part("aZ09-", 26);
        }
        return gen.mutate(text, nearChars);
    };
    difftest::expectSameAsRegex(Patterns::kEmail, detail::matchesEmail, email, kRandomTexts / 4);
}

TEST(PatternMatchers, DiscoveryCode) {
    TextGenerator gen(3);
    const std::string alphabet = join("AZ09-aK -_", kNonAscii);
    difftest::expectSameAsRegex(
        Patterns::kDiscoveryCode, detail::matchesDiscoveryCode,
        [&] {
            const std::string shaped =
                gen.text("AZ09", 3) + "-" + gen.text("AZ09", 3) + "-" + gen.text("AZ09", 3);
            return gen.number(0, 1) ? gen.mutate(shaped, alphabet) : gen.text(alphabet, 0, 13);
        },
        kRandomTexts);
}

TEST(PatternMatchers, RawPhoneNumber) {
    TextGenerator gen(4);
    const std::string alphabet = join("++ -()0159.#*a\n\0"sv, kNonAscii);
    difftest::expectSameAsRegex(
        Patterns::kRawPhoneNumber, detail::matchesRawPhoneNumber,
        [&] { return gen.text(alphabet, 0, 10); }, kRandomTexts);
}

TEST(PatternMatchers, FeatureAccessCodeShortRandomTexts) {
    TextGenerator gen(6);
    difftest::expectSameAsRegex(
        Patterns::kFeatureAccessCode, detail::matchesFeatureAccessCode,
        [&] { return gen.text("**##+0123456789,", 0, 14); }, kRandomTexts);
}

TEST(PatternMatchers, FeatureAccessCodeBlocksAtTheirLengthBounds) {
    TextGenerator gen(7);
    const auto block = [&] {
        std::string text = gen.text("*#", 1) + gen.text("*#0123456789", gen.number(0, 5));
        if (gen.number(0, 1)) {
            text += "+";
        }
        const std::size_t digits[] = {0, 1, 14, 15, 16};
        return text + gen.text("0123456789", digits[gen.number(0, 4)]);
    };
    const auto code = [&] {
        std::string text;
        for (std::size_t blocks = gen.number(1, 4); blocks > 0; --blocks) {
            text += block();
        }
        if (gen.number(0, 1)) {
            text += "#";
        }
        return gen.mutate(text, "*#+0,");
    };
    difftest::expectSameAsRegex(Patterns::kFeatureAccessCode, detail::matchesFeatureAccessCode,
                                code, kRandomTexts / 2);
}

TEST(PatternMatchers, MacAddressSearch) {
    TextGenerator gen(8);
    const std::regex group = reference::compile(Patterns::kHexGroup);
    const std::string alphabet = join("00aF9g:- .", kNonAscii);
    for (int i = 0; i < kRandomTexts; ++i) {
        const std::string mac = gen.text(alphabet, 0, 24);
        const std::string separator = gen.text(":-", 0, 2);
        ASSERT_EQ(StringUtils::reformatMACaddress(mac, separator),
                  reference::reformatMACaddress(mac, separator, group))
            << "mac \"" << difftest::printable(mac) << "\" separator \"" << separator << "\"";
    }
}

}  // namespace

// Matchers against std::regex with their patterns, the rest against references, on random texts.
#include "Checks.h"
#include "Reference.h"
#include "StringUtils/Addresses.h"
#include "StringUtils/PatternMatchers.h"
#include "StringUtils/Patterns.h"
#include "StringUtils/PhoneNumbers.h"
#include "StringUtils/Sanitizing.h"

#include <gtest/gtest.h>

using namespace std::string_view_literals;
using namespace StringUtils;
using namespace StringUtils::detail;
using namespace StringUtils::Patterns;
using checks::with;

TEST(PatternMatchers, SameAsTheirPatterns) {
    checks::TextGenerator gen{std::mt19937(1)};
    // 0 to 2, or bound - 2 to bound, bytes of chars: both sides of an upper bound bound - 1.
    const auto near = [&](std::string_view chars, std::size_t bound) {
        const std::size_t length = gen.number(0, 1) ? gen.number(0, 2) : bound - gen.number(0, 2);
        return gen.text(chars, length, length);
    };
    const auto label = [&](std::size_t n) { return gen.text("aZ9", 1, 1) + near("aZ09-", n); };
    const auto email = [&] {
        std::string text = near("aZ09-_.%+", 257) + "@" + label(65);
        for (std::size_t n = gen.number(0, 3); n > 0; --n) text += "." + label(26);
        return gen.mutate(text, "@.-_#a\x80");
    };
    const auto discoveryCode = [&] {
        std::string text = gen.text("AZ09", 9, 9);
        return gen.mutate(text.insert(6, "-").insert(3, "-"), "AZ09-aK -_\x80");
    };
    const auto code = [&] {  // 1 to 4 blocks, each with up to 2 or 14 to 16 final digits
        std::string text;
        for (std::size_t n = gen.number(1, 4); n > 0; --n) {
            text += gen.text("*#", 1, 1) + gen.text("*#0123456789", 0, 5) + gen.text("+", 0, 1) +
                    near("0123456789", 16);
        }
        return gen.mutate(text + gen.text("#", 0, 1), "*#+0,");
    };
    // Half of the texts short and random from alphabet, half from shaped.
    const auto check = [&](std::string_view pattern, bool (*matcher)(std::string_view),
                           std::string_view alphabet, auto shaped) {
        SCOPED_TRACE(pattern);
        const std::regex regex = reference::compile(pattern);
        const auto expected = [&](auto& text) { return std::regex_match(text, regex); };
        const auto make = [&] { return gen.number(0, 1) ? gen.text(alphabet, 0, 14) : shaped(); };
        checks::expectSame(matcher, expected, make, 20000);
    };
    check(kEmail, matchesEmail, "aZ09-_.%+@@..!~ \0\x80\xC3\xFF"sv, email);
    check(kDiscoveryCode, matchesDiscoveryCode, "AZ09-aK -_\x80\xC3", discoveryCode);
    check(kFeatureAccessCode, matchesFeatureAccessCode, "**##+0123456789,", code);
    check(kRawPhoneNumber, matchesRawPhoneNumber, "++ -()0159.#*a\n\0\x80\xC3\xFF"sv,
          [&] { return gen.text("+", 0, 1) + gen.text(" -()0123456789", 1, 9); });
}

TEST(PatternMatchers, OthersSameAsTheirReferences) {
    checks::TextGenerator gen{std::mt19937(2)};
    const std::regex raw = reference::compile(kRawPhoneNumber),
                     group = reference::compile(kHexGroup);
    const auto number = [&] {
        return gen.mutate(gen.text("+", 0, 1) + gen.text("0123456789 -()", 0, 34), "+.#a");
    };
    for (unsigned int min = 0; min <= 21; ++min) {
        SCOPED_TRACE(min);
        checks::expectSame(with(isValidPhoneNumber, min),
                           with(reference::isValidPhoneNumber, min, raw), number, 200);
    }
    const auto mac = [&] { return gen.text("00aF9g:- .\x80\xC3\xFF", 0, 24); };
    for (const std::string separator : {"", ":", "::-"}) {
        SCOPED_TRACE(separator);
        checks::expectSame(with(reformatMACaddress, separator),
                           with(reference::reformatMACaddress, separator, group), mac, 7000);
    }

    const std::string pieces[] = {"<",   "<html", "<HTML", "<scr", "ipt", "<SCR",
                                  "IPT", "<img",  " src",  " SRC", "<a",  " href",
                                  "\n",  "\t",    "\r",    "x",    "<ht", "ml"};
    const auto text = [&] {
        std::string out;
        for (std::size_t n = gen.number(0, 12); n > 0; --n) out += pieces[gen.number(0, 17)];
        return out;
    };
    checks::expectSame(sanatizeStatusString, reference::sanitizeStatusByRepeatedErase, text, 5000);
}

// Hand-written matchers for the patterns of Patterns.h. Each gives exactly the
// result of the ECMAScript pattern (whole-string match unless said otherwise)
// for every input, in one left-to-right pass with no recursion and no
// allocation, so that input of any length is safe on any stack. Internal to
// the string library; all functions are thread-safe and async-signal-safe.
#pragma once

#include <cstddef>
#include <string_view>

#include "StringUtils/AsciiClass.h"

namespace StringUtils::detail {

// A digit or one of "#*+,"; with allowLetters also a letter or one of " !$&()-.".
constexpr bool isPhoneNumberCharacter(char c, bool allowLetters) {
    switch (c) {
        case '#':
        case '*':
        case '+':
        case ',':
            return true;
        case ' ':
        case '!':
        case '$':
        case '&':
        case '(':
        case ')':
        case '-':
        case '.':
            return allowLetters;
        default:
            return isAsciiDigit(c) || (allowLetters && isAsciiLetter(c));
    }
}

// Patterns::kEmail as a whole-string match; false for any other text.
bool matchesEmail(std::string_view text);

// Patterns::kDiscoveryCode as a whole-string match; false for any other text.
bool matchesDiscoveryCode(std::string_view text);

// Patterns::kRawPhoneNumber as a whole-string match; false for any other text.
bool matchesRawPhoneNumber(std::string_view text);

// "^\+?\d{minDigits,maxDigits}$" when allowPlus, else "^\d{minDigits,maxDigits}$",
// as a whole-string match; false for any other text (and when minDigits > maxDigits).
bool matchesDigitRun(std::string_view text, bool allowPlus, std::size_t minDigits,
                     std::size_t maxDigits);

// Patterns::kFeatureAccessCode as a whole-string match; false for any other text.
bool matchesFeatureAccessCode(std::string_view text);

// The first match of Patterns::kHexGroup that starts at or after `from`, as
// regex_search finds it: the leftmost position holding a hexadecimal digit, two
// bytes long when the next byte is one as well. Empty (length 0) when none.
struct HexGroup {
    std::size_t position = 0;
    std::size_t length = 0;
};
HexGroup findHexGroup(std::string_view text, std::size_t from);

}  // namespace StringUtils::detail

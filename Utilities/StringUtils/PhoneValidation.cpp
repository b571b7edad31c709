// The phone-number validators and the phoneword functions of PhoneNumbers.h.
#include "StringUtils/Addresses.h"
#include "StringUtils/PatternMatchers.h"
#include "StringUtils/Patterns.h"
#include "StringUtils/PhoneNumbers.h"

#include <algorithm>
#include <array>
#include <regex>

namespace StringUtils {
namespace {

using detail::isAsciiLetter;

constexpr std::string_view kPhonewordFirstSymbols = "#*+(";

// The keypad digit of an ASCII letter, either case.
char keypadDigit(char letter) {
    constexpr std::string_view kDigitOfLetter = "22233344455566677778889999";
    return kDigitOfLetter[static_cast<std::size_t>(detail::toAsciiLower(letter) - 'a')];
}

}  // namespace

bool isPhoneWordFormat(std::string text) {
    if (text.empty() || isValidSipUri(text)) {
        return false;
    }
    const char first = text.front();
    if (kPhonewordFirstSymbols.find(first) == std::string_view::npos &&
        !detail::isAsciiDigit(first)) {
        return false;
    }
    return std::any_of(text.begin() + 1, text.end(), isAsciiLetter);
}

std::string convertPhonewordToPhoneNumber(std::string text) {
    if (!isPhoneWordFormat(text)) {
        return {};
    }
    for (char& c : text) {
        if (isAsciiLetter(c)) {
            c = keypadDigit(c);
        }
    }
    return text;
}

bool isValidRawPhoneNumber(const std::string& number) {
    return detail::matchesRawPhoneNumber(number);
}

bool isValidPhoneNumber(const std::string& number, unsigned int minDigits) {
    if (!isValidRawPhoneNumber(number)) {
        return false;
    }
    const unsigned int minimum = std::max(minDigits, 1U);
    // The digit-count pattern "{minimum,21}" is malformed for a larger minimum;
    // report it as the pattern's compilation would.
    if (minimum > Patterns::kPhoneDigitsWithPlusMax) {
        throw std::regex_error(std::regex_constants::error_badbrace);
    }
    // What sanitizePhoneNumber(number, false, false, true) leaves of a raw phone
    // number: its leading '+' and its digits. Collected on the stack, as neither
    // pattern matches more than kPhoneDigitsMax + 1 bytes.
    std::array<char, Patterns::kPhoneDigitsMax + 1> cleaned{};
    std::size_t length = 0;
    for (const char c : number) {
        if (!detail::isPhoneNumberCharacter(c, false)) {
            continue;
        }
        if (length == cleaned.size()) {
            return false;
        }
        cleaned[length++] = c;
    }
    const std::string_view digits(cleaned.data(), length);
    return detail::matchesDigitRun(digits, true, minimum, Patterns::kPhoneDigitsWithPlusMax) ||
           detail::matchesDigitRun(digits, false, minimum, Patterns::kPhoneDigitsMax);
}

bool isValidFeatureAccessCode(const std::string& code) {
    return detail::matchesFeatureAccessCode(sanitizePhoneNumber(code, false, false, true));
}

}  // namespace StringUtils

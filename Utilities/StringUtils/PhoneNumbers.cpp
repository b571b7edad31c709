#include "StringUtils/PhoneNumbers.h"

#include "StringUtils/Encoding.h"
#include "StringUtils/PatternMatchers.h"
#include "StringUtils/SharedConverters.h"
#include "StringUtils/Split.h"

#include <algorithm>

namespace StringUtils {
namespace {

using detail::isAsciiDigit;

constexpr std::string_view kExtraZero = "(0)";

// The characters a call string may hold, in the order they are listed: digits
// and dial punctuation, the two soft hyphens, then (optionally) the letters.
// Constants, so nothing is built before first use or destroyed at exit.
constexpr std::wstring_view kCallStringCharacters =
    L"0123456789+#*,()-. \u00AD\u1806abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr std::size_t kCallStringCharactersWithoutLetters = 21;

std::wstring_view callStringCharacters(bool allowLetters) {
    return allowLetters ? kCallStringCharacters
                        : kCallStringCharacters.substr(0, kCallStringCharactersWithoutLetters);
}

}  // namespace

bool isValidPhoneNumberDigit(const char& c, bool allowLetters) {
    return detail::isPhoneNumberCharacter(c, allowLetters);
}

bool isPhoneNumber(const std::string& text, bool allowLetters) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [&](char c) {
        return c == '-' || c == ' ' || isValidPhoneNumberDigit(c, allowLetters);
    });
}

bool isNumber(const std::string_view& text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), isAsciiDigit);
}

bool containsDigit(const std::string& text) {
    return std::any_of(text.begin(), text.end(), isAsciiDigit);
}

std::string removeNonDigits(std::string text) {
    std::erase_if(text, [](char c) { return !isAsciiDigit(c); });
    return text;
}

std::string sanitizePhoneNumber(std::string number, bool longestCommaPart, bool allowLetters,
                                bool keepLeadingZero) {
    if (longestCommaPart) {
        const auto pieces = splitToViews(number, ',', true);
        if (!pieces.empty()) {
            // max_element keeps the first of equally long pieces.
            number = std::string(*std::max_element(
                pieces.begin(), pieces.end(),
                [](std::string_view a, std::string_view b) { return a.size() < b.size(); }));
        }
        return removeNonDigits(std::move(number));
    }
    if (number.empty()) {
        return number;
    }
    if (!keepLeadingZero && number.front() == '0') {
        number.erase(0, 1);
    }
    std::erase_if(number, [&](char c) { return !isValidPhoneNumberDigit(c, allowLetters); });
    return number;
}

// Takes its text by value like the other clean-up functions of this family.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
std::string sanitizeCallString(std::string callString, bool allowLetters) {
    std::wstring wide = wideConverter().from_bytes(callString);
    const auto cut = wide.find_first_not_of(callStringCharacters(allowLetters));
    if (cut != std::wstring::npos) {
        wide.erase(cut);
    }
    return wideConverter().to_bytes(wide);
}

std::string removeExtraZeroPhrase(std::string number) {
    const auto at = number.find(kExtraZero);
    if (at != std::string::npos) {
        number.erase(at, kExtraZero.size());
    }
    return number;
}

void splitNumberDTMF(const std::string& dialString, std::string& number, std::string& dtmf) {
    const auto comma = dialString.find(',');
    if (comma == std::string::npos) {
        number = dialString;
        dtmf.clear();
        return;
    }
    dtmf = dialString.substr(comma);
    number = dialString.substr(0, comma);
}

bool isNumberAnonymousOrEmpty(const std::string& number) {
    if (number.empty()) {
        return true;
    }
    // ASCII case only: the words must match the same way in every locale.
    const auto isWord = [&number](std::string_view word) {
        return std::equal(number.begin(), number.end(), word.begin(), word.end(),
                          [](char c, char w) { return detail::toAsciiLower(c) == w; });
    };
    return isWord("anonymous") || isWord("unknown");
}

bool comparePhoneNumbers(const std::string& first, const std::string& second) {
    return isPhoneNumber(first, false) && isPhoneNumber(second, false) &&
           removeNonDigits(first) == removeNonDigits(second);
}

}  // namespace StringUtils

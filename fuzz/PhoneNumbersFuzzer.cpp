// The phone-number validators against their patterns run by std::regex, and the
// clean-up functions against their invariants. The first byte chooses the flags
// and the minimum digit count (0 to 31, so that the error of a minimum above 21
// is reached too); the rest is the text.
#include "FuzzCheck.h"
#include "Reference.h"
#include "StringUtils/Patterns.h"
#include "StringUtils/PhoneNumbers.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <stdexcept>
#include <tuple>

using fuzzcheck::require;
namespace Patterns = StringUtils::Patterns;
using namespace StringUtils;

namespace {

void checkValidators(const std::string& text, unsigned int minDigits) {
    static const std::regex raw = reference::compile(Patterns::kRawPhoneNumber);
    static const std::regex feature = reference::compile(Patterns::kFeatureAccessCode);
    const bool short_ = text.size() <= fuzzcheck::kRegexMaxLength;
    const bool validRaw = isValidRawPhoneNumber(text);
    if (short_) {
        require(validRaw == std::regex_match(text, raw), "the raw phone-number pattern");
    }
    try {
        const bool valid = isValidPhoneNumber(text, minDigits);
        require(minDigits <= Patterns::kPhoneDigitsWithPlusMax || !validRaw,
                "a minimum above 21 throws");
        if (short_) {
            require(valid == reference::isValidPhoneNumber(text, minDigits, raw),
                    "isValidPhoneNumber is its patterns");
        }
    } catch (const std::regex_error& error) {
        require(minDigits > Patterns::kPhoneDigitsWithPlusMax && validRaw &&
                    error.code() == std::regex_constants::error_badbrace,
                "only a minimum above 21 throws, as error_badbrace");
    }
    if (short_) {
        require(isValidFeatureAccessCode(text) ==
                    std::regex_match(sanitizePhoneNumber(text, false, false, true), feature),
                "isValidFeatureAccessCode is its pattern");
    }
}

void checkCleaners(const std::string& text, bool allowLetters, bool longest, bool keepZero) {
    const std::string cleaned = sanitizePhoneNumber(text, longest, allowLetters, keepZero);
    require(cleaned.size() <= text.size(), "cleaning never adds");
    require(std::all_of(cleaned.begin(), cleaned.end(),
                        [&](char c) {
                            return longest ? isNumber(std::string_view(&c, 1))
                                           : isValidPhoneNumberDigit(c, allowLetters);
                        }),
            "cleaning leaves only valid characters");
    try {
        require(fuzzcheck::isPrefix(sanitizeCallString(text, allowLetters), text),
                "a call string is cut, never changed");
    } catch (const std::range_error&) {
        // Malformed UTF-8: the documented failure.
    }
    const std::string withoutZero = removeExtraZeroPhrase(text);
    require(withoutZero.size() == text.size() || withoutZero.size() + 3 == text.size(),
            "at most one \"(0)\" goes");
    std::string number, dtmf;
    splitNumberDTMF(text, number, dtmf);
    require(number + dtmf == text, "number and DTMF part make the dial string");
    require(comparePhoneNumbers(text, text) == isPhoneNumber(text, false),
            "a phone number equals itself");
    const std::string digits = convertPhonewordToPhoneNumber(text);
    require(digits.empty() == !isPhoneWordFormat(text), "a phoneword converts");
    require(
        digits.empty() ||
            (digits.size() == text.size() &&
             !std::any_of(digits.begin(), digits.end(),
                          [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); })),
        "a converted phoneword has no letters and the same length");
    std::string lowered = text, digitsOnly;
    for (char& c : lowered) c = (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c;
    require(isNumberAnonymousOrEmpty(text) ==
                (text.empty() || lowered == "anonymous" || lowered == "unknown"),
            "anonymous and unknown in any ASCII case");
    std::copy_if(text.begin(), text.end(), std::back_inserter(digitsOnly),
                 [](char c) { return c >= '0' && c <= '9'; });
    require(removeNonDigits(text) == digitsOnly && containsDigit(text) == !digitsOnly.empty(),
            "the ASCII digits of the text");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const unsigned char control = data[0];
    const std::string text = fuzzcheck::text(data + 1, size - 1);
    fuzzcheck::sameInEveryLocale(
        [&] {
            bool valid = false;
            try {
                valid = isValidPhoneNumber(text, control >> 3);
            } catch (const std::regex_error&) {
            }
            return std::make_tuple(valid, isValidRawPhoneNumber(text), isPhoneNumber(text, true),
                                   isValidFeatureAccessCode(text), isNumberAnonymousOrEmpty(text),
                                   sanitizePhoneNumber(text, (control & 2) != 0, (control & 1) != 0,
                                                       (control & 4) != 0),
                                   convertPhonewordToPhoneNumber(text), isPhoneWordFormat(text));
        },
        "the phone-number functions ignore the locale");
    checkValidators(text, control >> 3);
    checkCleaners(text, (control & 1) != 0, (control & 2) != 0, (control & 4) != 0);
    return 0;
}

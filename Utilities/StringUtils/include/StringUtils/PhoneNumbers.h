// Recognising, cleaning, comparing and validating dial strings: phone numbers
// with their punctuation, trailing DTMF parts, phonewords, feature access codes
// and the placeholders of anonymous numbers. Pure functions, safe from any
// thread. Byte tests are ASCII-only: a byte of 0x80 or above is never a digit,
// letter or dial character.
#pragma once

#include <string>
#include <string_view>

namespace StringUtils {

// Whether c is a digit or one of "#*+,"; with allowLetters also an ASCII letter
// or one of " !$&()-.". Never fails.
bool isValidPhoneNumberDigit(const char& c, bool allowLetters);

// Whether text is non-empty and every byte passes isValidPhoneNumberDigit or is
// '-' or a space. False otherwise.
bool isPhoneNumber(const std::string& text, bool allowLetters);

// Whether text is non-empty and only ASCII digits. False otherwise.
bool isNumber(const std::string_view& text);

// Whether text holds an ASCII digit. False for an empty text.
bool containsDigit(const std::string& text);

// text with every byte that is not an ASCII digit removed. Never fails.
std::string removeNonDigits(std::string text);

// With longestCommaPart: the longest ','-separated piece (the earliest on a tie)
// with its non-digits removed; the other flags are ignored. Otherwise: number
// without its first byte when that is '0' and keepLeadingZero is false, then
// without the bytes that fail isValidPhoneNumberDigit(byte, allowLetters).
// Never fails; an empty number comes back empty.
std::string sanitizePhoneNumber(std::string number, bool longestCommaPart, bool allowLetters,
                                bool keepLeadingZero);

// callString cut at its first character outside digits, "+#*,()-. ", the soft
// hyphens U+00AD and U+1806 and, with allowLetters, the ASCII letters. Throws
// std::range_error("wstring_convert: from_bytes error") for malformed UTF-8.
std::string sanitizeCallString(std::string callString, bool allowLetters);

// number without its first "(0)" ("+44 (0)20" -> "+44 20"). Never fails.
std::string removeExtraZeroPhrase(std::string number);

// number = the text before the first ',' of dialString, dtmf = the rest from that
// ',' on; without a ',' number = dialString and dtmf is emptied. Never fails.
void splitNumberDTMF(const std::string& dialString, std::string& number, std::string& dtmf);

// Whether number is empty or, ignoring ASCII case, exactly "anonymous" or
// "unknown". False otherwise.
bool isNumberAnonymousOrEmpty(const std::string& number);

// Whether both texts pass isPhoneNumber(text, false) and hold the same digits in
// the same order. False otherwise.
bool comparePhoneNumbers(const std::string& first, const std::string& second);

// Whether text looks like a phoneword: not a valid SIP address, beginning with a
// digit or one of "#*+(", at least two bytes, and an ASCII letter after the first
// byte. False otherwise.
bool isPhoneWordFormat(std::string text);

// text with every ASCII letter replaced by its telephone keypad digit ("1-800-
// FLOWERS" -> "1-800-3569377"); empty when isPhoneWordFormat(text) is false.
std::string convertPhonewordToPhoneNumber(std::string text);

// Whether number as a whole matches the library's raw phone-number pattern: an optional '+',
// then one or more digits, spaces, '-', '(' and ')'. False otherwise.
bool isValidRawPhoneNumber(const std::string& number);

// Whether number passes isValidRawPhoneNumber and, without its spaces, '-', '('
// and ')', holds at least minDigits (0 counts as 1) digits: at most 21 after a
// leading '+', at most 30 without one. False otherwise. Throws std::regex_error
// with code std::regex_constants::error_badbrace when minDigits is above 21 and
// number passes the raw test, as the digit-count pattern {minDigits,21} cannot
// be built then.
bool isValidPhoneNumber(const std::string& number, unsigned int minDigits);

// Whether code, after sanitizePhoneNumber(code, false, false, true), as a whole
// matches the library's feature-access-code pattern: one to three blocks of '*' or '#', one to
// four of "*#" and digits, an optional '+' and up to 15 digits; then an optional
// '#'. False otherwise.
bool isValidFeatureAccessCode(const std::string& code);

}  // namespace StringUtils

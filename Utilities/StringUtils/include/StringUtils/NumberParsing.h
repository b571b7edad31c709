// Text to numbers and booleans. No parser throws for bad input: each returns
// false, and what it leaves in its out-parameter differs per function as stated
// below. Leading white space is accepted where a standard conversion reads the
// number; trailing characters make the result false.
#pragma once

#include <string>
#include <string_view>

namespace StringUtils {

// The parsers over std::stod / stoll / stol / stoi (base 10). value is zeroed
// first; empty text, no number at the start or a value out of range give false
// with value 0; characters after the number give false with value holding the
// number read. Locale: toDouble reads the decimal separator of the process's
// current C locale (LC_NUMERIC; "1,5" under de_DE.UTF-8, "1.5" in the classic
// locale), which the library never changes. Every other parser of this file
// gives the same result in every locale.
bool toDouble(const std::string& text, double& value);
bool toLongLongInteger(const std::string& text, long long& value);
bool toLongInteger(const std::string& text, long& value);
bool toInteger(const std::string& text, int& value);

// A plain decimal count of milliseconds (no unit). Empty text: true with value 0.
// No number or out of range: false, value untouched. Trailing characters: false
// with value holding the number read.
bool toMsTime(const std::string& text, long& value);

// std::stoull with base (0 detects "0x" and leading-zero octal); a leading minus
// wraps into the unsigned range. Empty text: true with value 0. No number or out
// of range: false, value untouched. Trailing characters: false with value holding
// the number read.
bool toUnsignedLongLong(const std::string& text, unsigned long long& value, int base = 10);

// toInteger, then a test that the value is below 65536 (toInteger16) or 256
// (toInteger8); a negative value passes and is stored as its low bits. On any
// failure value is left untouched.
bool toInteger16(const std::string& text, unsigned short& value);
bool toInteger8(const std::string& text, unsigned char& value);

// Accepts only ASCII digits (hexadecimal digits for the hex variant) and minus
// signs, then reads an int with std::from_chars, ignoring whatever follows the
// number ("12-3" gives 12). No "0x" and no plus sign. False, value untouched, on
// any other character, no digits, or a value outside the 32-bit signed range.
bool stringViewToInteger(const std::string_view& text, int& value);
bool hexStringViewToInteger(const std::string_view& text, int& value);

// True for "1" and for "true" in any letter case; false for anything else.
bool toBool(const std::string& text);

// defaultValue for an empty text, toBool(text) otherwise.
bool toBool(const std::string& text, bool defaultValue);

}  // namespace StringUtils

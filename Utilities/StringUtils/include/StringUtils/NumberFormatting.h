// Numbers and booleans as text, and printf-style formatting into a string.
//
// Locale: the three number formatters write through a default string stream, so
// they follow the process's global C++ locale, which the library never changes:
// no grouping and a decimal point in the classic locale, "1.234.567" and "0,5"
// under de_DE.UTF-8. The printf-style functions follow the C locale as printf
// does (only the decimal separator of floating-point conversions).
#pragma once

#include <string>
#include <utility>

namespace StringUtils {

// Decimal text with a minus sign for negative values, grouped as the global
// locale groups digits. Never fails.
std::string toQuillString(int value);

// Decimal text of the full unsigned 64-bit range, grouped as the global locale
// groups digits. Never fails.
std::string uint64ToQuillString(unsigned long long value);

// The value as printf("%g") writes it: at most six significant digits, no
// trailing zeros, the exponent form below 1e-4 and from 1e6 on, "inf", "-inf",
// "nan", with the global locale's decimal separator. Never fails.
std::string floatToQuillString(float value);

// "true" or "false". Never fails.
std::string fromBool(bool value);

// "True" and "False", the capitalised forms. Never fail.
std::string trueValue();
std::string falseValue();

// The text printf would write for format and its arguments (measured with
// vsnprintf, then written into a buffer of exactly that size). The arguments must
// match format's conversions. Empty string on an encoding error.
std::string formatPrintf(const char* format, ...);

// The text printf would write for format and args, e.g.
// string_format("^\\+?\\d{%d,%d}$", 7, 21) == "^\\+?\\d{7,21}$". The arguments
// must match format's conversions. Empty string on an encoding error.
template <typename... Args>
std::string string_format(const std::string& format, Args&&... args) {
    return formatPrintf(format.c_str(), std::forward<Args>(args)...);
}

}  // namespace StringUtils

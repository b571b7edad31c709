// Letter case: byte-wise through the C character functions (only A-Z / a-z in the
// classic locale), and locale-aware through the user's locale.
#pragma once

#include <string>

namespace StringUtils {

// Every byte (narrow) or element (wide, taken whole) through tolower / toupper.
// Locale: these follow the process's current C locale (LC_CTYPE), which the
// library never changes; in the classic locale only A-Z / a-z change, under
// tr_TR.UTF-8 glibc leaves i and I alone. Elements above 0xFF never change.
// Never fail.
std::string toLower(const std::string& text);
std::string toUpper(const std::string& text);
std::wstring toLower(const std::wstring& text);
std::wstring toUpper(const std::wstring& text);

// A copy with only the byte at index through toupper, under the process's
// current C locale as toUpper; unchanged when index is past the end. Never fails.
std::string toUpper(const std::string& text, unsigned long index);

// Every element through the wide case facet of the user's locale (the locale
// named by the environment, built on each call; the process's global locale plays
// no part). When that locale cannot be built
// or has no such facet, falls back to the C tolower / toupper of each element's
// whole value. Never fail.
std::wstring toLowerWithLocal(const std::wstring& text);
std::wstring toUpperWithLocal(const std::wstring& text);

// The wide mappings applied to the UTF-16 form of the UTF-8 text. Throw the
// std::range_error of toWString for malformed UTF-8.
std::string toLowerWithLocal(const std::string& text);
std::string toUpperWithLocal(const std::string& text);

}  // namespace StringUtils

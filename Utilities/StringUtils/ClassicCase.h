// The byte-wise case mapping of the classic C locale, for the fast paths of the
// functions that map through tolower / toupper. Internal to the string library.
#pragma once

#include <cstddef>

namespace StringUtils::detail {

// Whether the calling thread's C locale for the character functions is the
// classic one, where tolower and toupper change only A-Z and a-z: the thread
// uses the process's locale (no uselocale of its own) and its LC_CTYPE, as
// setlocale reports it, is "C" or "POSIX". Never fails; not async-signal-safe.
bool classicCharacterFunctions();

// A-Z to a-z (lower) or a-z to A-Z (upper) over size bytes at text, in place,
// every other byte kept; what tolower / toupper do in the classic locale.
// Never fails; async-signal-safe.
void mapAsciiLower(char* text, std::size_t size);
void mapAsciiUpper(char* text, std::size_t size);

}  // namespace StringUtils::detail

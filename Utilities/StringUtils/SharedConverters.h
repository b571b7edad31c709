// The library's own way to the two shared converters of Encoding.h. Internal.
#pragma once

#include "StringUtils/Encoding.h"

namespace StringUtils {

// The converter behind `converter`, set up on first use if no static
// initialiser has done so yet: usable from any client's static initialiser, in
// any link order, and until the process ends. Never fails; thread-safe.
Converter<char16_t>& utf16Converter();

// The same for the converter behind `converterToString`.
Converter<wchar_t>& wideConverter();

}  // namespace StringUtils

// The UTF-8 <-> UTF-16 transcoder behind Converter<T>. Internal to the string
// library: callers use Converter<T> or the StringUtils conversion functions.
//
// Both directions validate strictly and report malformed input by throwing
// std::range_error with "wstring_convert: from_bytes error" (UTF-8 input) or
// "wstring_convert: to_bytes error" (UTF-16 input); no partial result escapes.
// They keep no state and are safe from any thread.
#pragma once

#include <string>
#include <string_view>

namespace StringUtils::Utf16Codec {

// UTF-16 code units (char16_t or wchar_t elements) of the UTF-8 text. Rejects
// invalid lead and continuation bytes, overlong forms, encoded surrogates, code
// points above U+10FFFF and a sequence cut off at the end.
template <typename T>
std::basic_string<T> fromUtf8(std::string_view text);

// UTF-8 form of the code units. Rejects a low surrogate without a high one before
// it, a high surrogate not followed by a low one (also at the end), and a wide
// element above 0x10FFFF; a wide element from 0x10000 to 0x10FFFF is taken as
// that code point.
template <typename T>
std::string toUtf8(std::basic_string_view<T> text);

extern template std::basic_string<char16_t> fromUtf8<char16_t>(std::string_view);
extern template std::basic_string<wchar_t> fromUtf8<wchar_t>(std::string_view);
extern template std::string toUtf8<char16_t>(std::basic_string_view<char16_t>);
extern template std::string toUtf8<wchar_t>(std::basic_string_view<wchar_t>);

}  // namespace StringUtils::Utf16Codec

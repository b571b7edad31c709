// Conversions between UTF-8 (std::string), UTF-16 (std::u16string) and wide text
// (std::wstring holding UTF-16 code units, one per element, with surrogate pairs
// above U+FFFF). No byte-order mark is read or written: a leading U+FEFF is text.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>

// One shared UTF-8 <-> UTF-16 converter for code units of type T (char16_t or
// wchar_t). Each conversion holds the instance's own lock, so any thread may use
// an instance; conversions through different instances run in parallel.
template <typename T>
class Converter {
public:
    constexpr Converter() = default;
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // The UTF-8 form of exactly the view's elements, embedded NULs included. A
    // wide element above 0xFFFF that is no surrogate and at most 0x10FFFF is taken
    // as that code point. Throws std::range_error("wstring_convert: to_bytes error")
    // for a lone or reversed surrogate, a high surrogate at the end, or an element
    // above 0x10FFFF; the lock is released either way.
    std::string to_bytes(const std::basic_string_view<T>& text);

    // The UTF-16 form of all bytes of text. Throws std::range_error
    // ("wstring_convert: from_bytes error") for an invalid lead or continuation
    // byte, an overlong form, an encoded surrogate, a code point above U+10FFFF or
    // a sequence cut off at the end; the lock is released either way.
    std::basic_string<T> from_bytes(const std::string_view& text);

private:
    std::mutex mutex_;
};

extern template class Converter<char16_t>;
extern template class Converter<wchar_t>;

namespace StringUtils {

// The two process-wide converters: `converter` serves fromUtf16String,
// `converterToString` every wide conversion of the library. Both exist before
// any dynamic initialisation runs and are never destroyed, so every conversion
// works from a client's static initialiser (in any link order) and from threads
// that outlive main. Neither pointer is ever null, reset or released.
extern std::unique_ptr<Converter<char16_t>>& converter;
extern std::unique_ptr<Converter<wchar_t>>& converterToString;

// UTF-8 form of text up to its first zero code unit. Throws the to_bytes
// std::range_error for malformed UTF-16; text must not be null.
std::string fromUtf16String(const char16_t* text);

// UTF-8 form of text up to its first NUL element. Throws the to_bytes
// std::range_error for malformed UTF-16; text must not be null.
std::string toString(const wchar_t* text);

// UTF-8 form of the viewed elements. Throws the to_bytes std::range_error.
std::string toString(const std::wstring_view& text);

// UTF-8 form of the whole string, embedded NULs included. Throws the to_bytes
// std::range_error.
std::string toString(const std::wstring& text);

// Wide (UTF-16 code unit) form of the UTF-8 text. Throws the from_bytes
// std::range_error for malformed UTF-8.
std::wstring toWString(const std::string& text);

// Identity conversions between the library's string type (UTF-8 in std::string)
// and plain strings: copies (or a move) that never inspect the bytes, so invalid
// UTF-8 passes through. They never fail.
std::string toString(const std::string& text);
std::string fromQuillString(const std::string_view& text);
std::string toQuillString(const std::string& text);
std::string fromU8string(const std::string& text);
// Takes over text's storage; text is left empty.
std::string fromU8string(std::string&& text);
std::string fromU8string(const std::u8string& text);

}  // namespace StringUtils

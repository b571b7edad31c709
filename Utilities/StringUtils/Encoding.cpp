#include "StringUtils/Encoding.h"

#include <cwchar>

#include "StringUtils/Utf16Codec.h"

template <typename T>
std::string Converter<T>::to_bytes(const std::basic_string_view<T>& text) {
    const std::lock_guard lock(mutex_);
    return StringUtils::Utf16Codec::toUtf8(text);
}

template <typename T>
std::basic_string<T> Converter<T>::from_bytes(const std::string_view& text) {
    const std::lock_guard lock(mutex_);
    return StringUtils::Utf16Codec::fromUtf8<T>(text);
}

template class Converter<char16_t>;
template class Converter<wchar_t>;

namespace StringUtils {

// Function-local and deliberately leaked: nothing runs before first use, and a
// thread converting during exit never meets a destroyed lock. The pointer keeps
// the object reachable for leak checkers.
Converter<char16_t>& converter() {
    static Converter<char16_t>* const instance = new Converter<char16_t>();
    return *instance;
}

Converter<wchar_t>& converterToString() {
    static Converter<wchar_t>* const instance = new Converter<wchar_t>();
    return *instance;
}

std::string fromUtf16String(const char16_t* text) {
    return converter().to_bytes(std::u16string_view(text));
}

std::string toString(const wchar_t* text) {
    return converterToString().to_bytes(std::wstring_view(text, std::wcslen(text)));
}

std::string toString(const std::wstring_view& text) { return converterToString().to_bytes(text); }

std::string toString(const std::wstring& text) { return converterToString().to_bytes(text); }

std::wstring toWString(const std::string& text) { return converterToString().from_bytes(text); }

std::string toString(const std::string& text) { return text; }

std::string fromQuillString(const std::string_view& text) { return std::string(text); }

std::string toQuillString(const std::string& text) { return text; }

std::string fromU8string(const std::string& text) { return text; }

std::string fromU8string(std::string&& text) {
    std::string result(std::move(text));
    text.clear();
    return result;
}

std::string fromU8string(const std::u8string& text) {
    return std::string(text.begin(), text.end());
}

}  // namespace StringUtils

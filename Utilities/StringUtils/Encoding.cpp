#include "StringUtils/Encoding.h"

#include <cstdint>
#include <cstring>
#include <cwchar>

#include "StringUtils/SharedConverters.h"
#include "StringUtils/Utf16Codec.h"
#include "Support/NoDestructor.h"

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

namespace {

// The converters and the pointers that own them are never destroyed: a thread
// converting during exit never meets a destroyed lock, and since the pointers
// are never destroyed they never delete the objects they point to. The
// converters are constant-initialised; each pointer is set on the first use of
// its accessor, at the latest by this file's own static initialiser.
constinit quill::NoDestructor<Converter<char16_t>> gUtf16Converter;
constinit quill::NoDestructor<Converter<wchar_t>> gWideConverter;
constinit quill::NoDestructor<std::unique_ptr<Converter<char16_t>>> gUtf16ConverterOwner;
constinit quill::NoDestructor<std::unique_ptr<Converter<wchar_t>>> gWideConverterOwner;

}  // namespace

constinit std::unique_ptr<Converter<char16_t>>& converter = *gUtf16ConverterOwner;
constinit std::unique_ptr<Converter<wchar_t>>& converterToString = *gWideConverterOwner;

Converter<char16_t>& utf16Converter() {
    static Converter<char16_t>* const instance = [] {
        converter.reset(gUtf16Converter.get());
        return converter.get();
    }();
    return *instance;
}

Converter<wchar_t>& wideConverter() {
    static Converter<wchar_t>* const instance = [] {
        converterToString.reset(gWideConverter.get());
        return converterToString.get();
    }();
    return *instance;
}

namespace {

// Sets both pointers during start-up, first converter, then converterToString,
// for code that uses them directly.
[[maybe_unused]] const bool gConvertersSet = (utf16Converter(), wideConverter(), true);

}  // namespace

namespace {

// Eight code units as one vector; may alias them.
typedef std::uint16_t Units8 __attribute__((vector_size(16), may_alias));

// The number of code units before the first zero one. Reads whole aligned
// sixteen-byte blocks, which may extend past the terminator but never onto
// another page (hence no address or thread checks on those reads).
__attribute__((no_sanitize("address", "thread"))) size_t unitsBeforeZero(const char16_t* text) {
    const char16_t* p = text;
    for (; reinterpret_cast<std::uintptr_t>(p) % sizeof(Units8) != 0; ++p) {
        if (*p == 0) {
            return static_cast<size_t>(p - text);
        }
    }
    for (;; p += 8) {
        const auto zero = *reinterpret_cast<const Units8*>(p) == 0;
        std::uint64_t halves[2];
        std::memcpy(halves, &zero, sizeof halves);
        if ((halves[0] | halves[1]) != 0) {
            break;
        }
    }
    while (*p != 0) {
        ++p;
    }
    return static_cast<size_t>(p - text);
}

}  // namespace

std::string fromUtf16String(const char16_t* text) {
    return utf16Converter().to_bytes(std::u16string_view(text, unitsBeforeZero(text)));
}

std::string toString(const wchar_t* text) {
    return wideConverter().to_bytes(std::wstring_view(text, std::wcslen(text)));
}

std::string toString(const std::wstring_view& text) { return wideConverter().to_bytes(text); }

std::string toString(const std::wstring& text) { return wideConverter().to_bytes(text); }

std::wstring toWString(const std::string& text) { return wideConverter().from_bytes(text); }

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

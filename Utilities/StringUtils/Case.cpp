#include "StringUtils/Case.h"

#include <locale.h>

#include <cctype>
#include <clocale>
#include <cstring>
#include <exception>
#include <locale>
#include <type_traits>

#include "StringUtils/ClassicCase.h"
#include "StringUtils/Encoding.h"

namespace StringUtils {

namespace detail {

bool classicCharacterFunctions() {
    // A thread that has a locale of its own (uselocale) maps through that one.
    if (uselocale(locale_t{}) != LC_GLOBAL_LOCALE) {
        return false;
    }
    const char* const name = std::setlocale(LC_CTYPE, nullptr);
    return name != nullptr && (std::strcmp(name, "C") == 0 || std::strcmp(name, "POSIX") == 0);
}

// Branch-free, so that the compiler maps many bytes at once.
void mapAsciiLower(char* text, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        text[i] = static_cast<char>(c + (static_cast<unsigned char>(c - 'A') < 26 ? 32 : 0));
    }
}

void mapAsciiUpper(char* text, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        text[i] = static_cast<char>(c - (static_cast<unsigned char>(c - 'a') < 26 ? 32 : 0));
    }
}

}  // namespace detail

namespace {

enum class Case { lower, upper };

// One value through the C character function. Values beyond a byte have no case
// there and stay as they are (the C functions are only defined on bytes).
int mapValue(unsigned long value, Case to) {
    if (value > 0xFF) {
        return static_cast<int>(value);
    }
    const int byte = static_cast<int>(value);
    return to == Case::lower ? std::tolower(byte) : std::toupper(byte);
}

// Every element of text, read as an unsigned value, through mapValue.
template <typename CharT>
std::basic_string<CharT> mapEach(std::basic_string<CharT> text, Case to) {
    using Unsigned = std::make_unsigned_t<CharT>;
    for (CharT& c : text) {
        c = static_cast<CharT>(mapValue(static_cast<Unsigned>(c), to));
    }
    return text;
}

// Maps text through the wide case facet of the user's locale; when the locale or
// its facet is unavailable, through the C function fallback instead.
std::wstring mapWithUserLocale(const std::wstring& text, Case to) {
    std::wstring result(text);
    try {
        const std::locale userLocale("");
        const auto& facet = std::use_facet<std::ctype<wchar_t>>(userLocale);
        wchar_t* const begin = result.data();
        if (to == Case::lower) {
            facet.tolower(begin, begin + result.size());
        } else {
            facet.toupper(begin, begin + result.size());
        }
        return result;
    } catch (const std::exception&) {
        return mapEach(text, to);
    }
}

}  // namespace

// In the classic locale, the same mapping without a library call per byte.
std::string toLower(const std::string& text) {
    if (!detail::classicCharacterFunctions()) {
        return mapEach(text, Case::lower);
    }
    std::string result(text);
    detail::mapAsciiLower(result.data(), result.size());
    return result;
}

std::string toUpper(const std::string& text) {
    if (!detail::classicCharacterFunctions()) {
        return mapEach(text, Case::upper);
    }
    std::string result(text);
    detail::mapAsciiUpper(result.data(), result.size());
    return result;
}

std::wstring toLower(const std::wstring& text) { return mapEach(text, Case::lower); }

std::wstring toUpper(const std::wstring& text) { return mapEach(text, Case::upper); }

std::string toUpper(const std::string& text, unsigned long index) {
    std::string result(text);
    if (index < result.size()) {
        result[index] =
            static_cast<char>(mapValue(static_cast<unsigned char>(result[index]), Case::upper));
    }
    return result;
}

std::wstring toLowerWithLocal(const std::wstring& text) {
    return mapWithUserLocale(text, Case::lower);
}

std::wstring toUpperWithLocal(const std::wstring& text) {
    return mapWithUserLocale(text, Case::upper);
}

std::string toLowerWithLocal(const std::string& text) {
    return toString(toLowerWithLocal(toWString(text)));
}

std::string toUpperWithLocal(const std::string& text) {
    return toString(toUpperWithLocal(toWString(text)));
}

}  // namespace StringUtils

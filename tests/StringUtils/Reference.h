// Plain, obviously right versions of library functions for tests, fuzz targets and
// benchmarks to compare with: std::regex validators (short texts only: the engine
// recurses once per byte), splitting and erasure over std::string::find (short
// texts only: quadratic), and UTF-8 / UTF-16 well-formedness from the Unicode
// tables.
#pragma once

#include "StringUtils/Patterns.h"
#include "StringUtils/PhoneNumbers.h"

#include <cstdio>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

namespace reference {

inline std::regex compile(std::string_view pattern) { return std::regex(std::string(pattern)); }

// isValidPhoneNumber with the raw pattern compiled by the caller; a minimum above 21 throws.
inline bool isValidPhoneNumber(const std::string& number, unsigned int minDigits,
                               const std::regex& raw) {
    using namespace StringUtils::Patterns;
    const auto digits = [minDigits](std::string_view format, unsigned int max) {
        char pattern[64];
        std::snprintf(pattern, sizeof pattern, format.data(), minDigits ? minDigits : 1, max);
        return std::regex(pattern);
    };
    const std::string cleaned = StringUtils::sanitizePhoneNumber(number, false, false, true);
    return std::regex_match(number, raw) &&
           (std::regex_match(cleaned, digits(kPhoneDigitsWithPlus, kPhoneDigitsWithPlusMax)) ||
            std::regex_match(cleaned, digits(kPhoneDigits, kPhoneDigitsMax)));
}

// reformatMACaddress by repeated std::regex_search with the compiled group pattern.
inline std::string reformatMACaddress(const std::string& mac, const std::string& separator,
                                      const std::regex& group) {
    constexpr std::string_view hex = "0123456789ABCDEF";
    std::string out;
    unsigned long count = 0, any = 0;
    for (std::sregex_iterator it(mac.begin(), mac.end(), group), end; it != end; ++it) {
        const unsigned long value = std::stoul(it->str(), nullptr, 16);
        if (count++ == 6) return {};
        out += (count == 1 ? "" : separator) + hex[value >> 4] + hex[value & 15];
        any |= value;
    }
    return count == 6 && any != 0 ? out : std::string();
}

// Erases the first occurrence of sub and searches again from the start, until
// none is left; an empty sub leaves text alone.
template <typename CharT>
std::basic_string<CharT> eraseRepeatedly(std::basic_string<CharT> text,
                                         std::basic_string_view<CharT> sub) {
    if (sub.empty()) return text;
    for (auto at = text.find(sub); at != text.npos; at = text.find(sub)) text.erase(at, sub.size());
    return text;
}

// sanatizeStatusString as repeated erasure of each token form in turn.
inline std::string sanitizeStatusByRepeatedErase(std::string text) {
    for (const std::string_view form : {"<html", "<HTML", "<script", "<SCRIPT", "<img src",
                                        "<IMG SRC", "<a href", "<A HREF", "\n", "\t", "\r"}) {
        text = eraseRepeatedly(std::move(text), form);
    }
    return text;
}

// The fields between the non-overlapping matches of a non-empty delimiter, left
// to right, the last field always taken.
template <typename CharT>
std::vector<std::basic_string<CharT>> splitAt(const std::basic_string<CharT>& text,
                                              const std::basic_string<CharT>& delimiter) {
    std::vector<std::basic_string<CharT>> fields;
    size_t start = 0;
    for (size_t match; (match = text.find(delimiter, start)) != text.npos;) {
        fields.push_back(text.substr(start, match - start));
        start = match + delimiter.size();
    }
    fields.push_back(text.substr(start));
    return fields;
}

// Well-formed UTF-8 by the table of well-formed byte sequences: no overlong form,
// no encoded surrogate, nothing above U+10FFFF, no cut-off sequence.
inline bool isWellFormedUtf8(std::string_view text) {
    for (size_t i = 0; i < text.size();) {
        const auto byte = [&](size_t at) { return static_cast<unsigned char>(text[at]); };
        const unsigned lead = byte(i);
        size_t length = 0;
        unsigned low = 0x80, high = 0xBF;  // range of the second byte
        if (lead < 0x80) length = 1;
        else if (lead >= 0xC2 && lead <= 0xDF) length = 2;
        else if (lead >= 0xE0 && lead <= 0xEF) length = 3, low = lead == 0xE0 ? 0xA0 : 0x80,
                                                high = lead == 0xED ? 0x9F : 0xBF;
        else if (lead >= 0xF0 && lead <= 0xF4) length = 4, low = lead == 0xF0 ? 0x90 : 0x80,
                                                high = lead == 0xF4 ? 0x8F : 0xBF;
        else return false;
        if (text.size() - i < length) return false;
        for (size_t k = 1; k < length; ++k) {
            const unsigned b = byte(i + k);
            if (b < (k == 1 ? low : 0x80) || b > (k == 1 ? high : 0xBF)) return false;
        }
        i += length;
    }
    return true;
}

// Well-formed UTF-16: every high surrogate followed by a low one, no other low one.
template <typename Unit>
bool isWellFormedUtf16(std::basic_string_view<Unit> units) {
    for (size_t i = 0; i < units.size(); ++i) {
        const auto unit = static_cast<unsigned long>(units[i]);
        if (unit >= 0xD800 && unit <= 0xDBFF) {
            const auto next = i + 1 < units.size() ? static_cast<unsigned long>(units[i + 1]) : 0UL;
            if (next < 0xDC00 || next > 0xDFFF) return false;
            ++i;
        } else if (unit >= 0xDC00 && unit <= 0xDFFF) {
            return false;
        }
    }
    return true;
}

}  // namespace reference

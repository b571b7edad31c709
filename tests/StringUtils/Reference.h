// Obviously right versions of library functions, for short texts only (recursive or quadratic).
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

// Erases the first occurrence of sub until none is left; an empty sub leaves text alone.
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

// The fields between the non-overlapping matches of a non-empty delimiter, the last always taken.
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

}  // namespace reference

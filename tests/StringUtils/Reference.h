// Plain, obviously right versions of library functions that tests, fuzz targets
// and benchmarks compare the library with: the validators that are more than one
// whole-string match, written directly with std::regex as their patterns define
// them (only for short texts: the engine recurses once per byte), and the
// status-text clean-up as a loop of erasures.
#pragma once

#include "StringUtils/Patterns.h"
#include "StringUtils/PhoneNumbers.h"

#include <array>
#include <cstdio>
#include <regex>
#include <string>
#include <string_view>

namespace reference {

inline std::regex compile(std::string_view pattern) { return std::regex(std::string(pattern)); }

// One of the digit-count patterns formatted with its bounds.
inline std::regex compileDigits(std::string_view format, unsigned int min, unsigned int max) {
    char pattern[64];
    std::snprintf(pattern, sizeof pattern, std::string(format).c_str(), min, max);
    return std::regex(pattern);
}

// isValidPhoneNumber, with the raw pattern compiled once by the caller and the
// two digit-count patterns compiled on every call.
inline bool isValidPhoneNumber(const std::string& number, unsigned int minDigits,
                               const std::regex& raw) {
    namespace Patterns = StringUtils::Patterns;
    if (!std::regex_match(number, raw)) {
        return false;
    }
    const std::string cleaned = StringUtils::sanitizePhoneNumber(number, false, false, true);
    const unsigned int minimum = minDigits == 0 ? 1 : minDigits;
    return std::regex_match(cleaned, compileDigits(Patterns::kPhoneDigitsWithPlus, minimum,
                                                   Patterns::kPhoneDigitsWithPlusMax)) ||
           std::regex_match(
               cleaned, compileDigits(Patterns::kPhoneDigits, minimum, Patterns::kPhoneDigitsMax));
}

// reformatMACaddress by repeated std::regex_search with the compiled group pattern.
inline std::string reformatMACaddress(const std::string& mac, const std::string& separator,
                                      const std::regex& group) {
    if (mac.empty()) {
        return {};
    }
    unsigned int groups[6] = {};
    int count = 0;
    std::smatch match;
    for (auto from = mac.cbegin(); std::regex_search(from, mac.cend(), match, group);
         from = match[0].second) {
        if (count == 6) {
            return {};
        }
        groups[count++] = static_cast<unsigned int>(std::stoul(match.str(), nullptr, 16));
    }
    if (count < 6 || (groups[0] | groups[1] | groups[2] | groups[3] | groups[4] | groups[5]) == 0) {
        return {};
    }
    std::string out;
    for (int i = 0; i < 6; ++i) {
        char hex[3];
        std::snprintf(hex, sizeof hex, "%02X", groups[i]);
        out += (i == 0 ? "" : separator) + hex;
    }
    return out;
}

// sanatizeStatusString as a loop that erases the first occurrence of each token
// form and searches again from the start, until none is left.
inline std::string sanitizeStatusByRepeatedErase(std::string text) {
    const std::array<std::string_view, 11> forms = {"<html",    "<HTML",    "<script", "<SCRIPT",
                                                    "<img src", "<IMG SRC", "<a href", "<A HREF",
                                                    "\n",       "\t",       "\r"};
    for (const std::string_view form : forms) {
        for (auto at = text.find(form); at != std::string::npos; at = text.find(form)) {
            text.erase(at, form.size());
        }
    }
    return text;
}

}  // namespace reference

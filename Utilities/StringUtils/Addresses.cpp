#include "StringUtils/Addresses.h"

#include "StringUtils/PatternMatchers.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace StringUtils {
namespace {

using detail::isAsciiAlnum;

constexpr std::string_view kSipPrefix = "sip:";
constexpr std::size_t kMaxUserWithPrefix = 51;
constexpr std::size_t kMaxUserWithoutPrefix = 47;
constexpr std::string_view kUserPunctuation = "!$%&*_+~-=?\\',./:";

// The calling backend's host-name suffixes, passed by the build from the
// STRAND_CALLING_ROUTE_SUFFIXES cache variable.
constexpr std::array<std::string_view, 4> kRouteSuffixes = {
    STRAND_CALLING_ROUTE_SUFFIX_0, STRAND_CALLING_ROUTE_SUFFIX_1, STRAND_CALLING_ROUTE_SUFFIX_2,
    STRAND_CALLING_ROUTE_SUFFIX_3};

bool isSipUserChar(char c) {
    return isAsciiAlnum(c) || kUserPunctuation.find(c) != std::string_view::npos;
}

bool isSipUser(std::string_view user) {
    if (user.starts_with(kSipPrefix)) {
        if (user.size() <= kSipPrefix.size() || user.size() > kMaxUserWithPrefix) {
            return false;
        }
    } else if (user.size() > kMaxUserWithoutPrefix) {
        return false;
    }
    return std::all_of(user.begin(), user.end(), isSipUserChar);
}

bool isSipHost(std::string_view host) {
    if (host.size() < 2 || host.front() == '-' || host.front() == '.' || host.back() == '-') {
        return false;
    }
    for (std::size_t i = 0; i < host.size(); ++i) {
        const char c = host[i];
        if (c == '.') {
            if (i + 1 < host.size() && host[i + 1] == '.') {
                return false;
            }
        } else if (!isAsciiAlnum(c) && c != '-') {
            return false;
        }
    }
    return true;
}

void appendHexByte(std::string& out, unsigned int value) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    out += kDigits[(value >> 4) & 0xF];
    out += kDigits[value & 0xF];
}

}  // namespace

bool isValidSipUri(const std::string& uri) {
    const auto at = uri.find('@');
    if (at == std::string::npos || uri.find('@', at + 1) != std::string::npos) {
        return false;
    }
    const std::string_view text = uri;
    return isSipUser(text.substr(0, at)) && isSipHost(text.substr(at + 1));
}

std::string removeSipKeywordFromSipAddress(const std::string& address) {
    const auto colon = address.rfind(':');
    return colon == std::string::npos ? address : address.substr(colon + 1);
}

bool isValidEmail(const std::string& email) { return detail::matchesEmail(email); }

std::string getEmailDomain(const std::string& email) {
    const auto at = email.rfind('@');
    return at == std::string::npos ? std::string() : email.substr(at + 1);
}

bool isValidDiscoveryCode(const std::string& code) { return detail::matchesDiscoveryCode(code); }

bool isRouteToVestaCalling(const std::string& address) {
    return std::any_of(kRouteSuffixes.begin(), kRouteSuffixes.end(),
                       [&](std::string_view suffix) { return address.ends_with(suffix); });
}

std::string reformatMACaddress(const std::string& mac, const std::string& separator) {
    constexpr std::size_t kGroups = 6;
    std::array<unsigned int, kGroups> groups{};
    std::size_t count = 0;
    for (auto match = detail::findHexGroup(mac, 0); match.length != 0;
         match = detail::findHexGroup(mac, match.position + match.length)) {
        if (count == kGroups) {
            return {};
        }
        unsigned int value = 0;
        for (std::size_t i = 0; i < match.length; ++i) {
            value = value * 16 +
                    static_cast<unsigned int>(detail::hexDigitValue(mac[match.position + i]));
        }
        groups[count++] = value;
    }
    if (count < kGroups ||
        std::all_of(groups.begin(), groups.end(), [](unsigned v) { return v == 0; })) {
        return {};
    }
    std::string out;
    out.reserve(kGroups * 2 + (kGroups - 1) * separator.size());
    for (std::size_t i = 0; i < kGroups; ++i) {
        if (i != 0) {
            out += separator;
        }
        appendHexByte(out, groups[i]);
    }
    return out;
}

}  // namespace StringUtils

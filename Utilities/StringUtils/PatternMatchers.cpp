#include "StringUtils/PatternMatchers.h"

#include <array>

namespace StringUtils::detail {
namespace {

constexpr bool isEmailLocalChar(char c) {
    return isAsciiAlnum(c) || c == '-' || c == '_' || c == '.' || c == '%' || c == '+';
}

constexpr bool isDiscoveryChar(char c) { return isAsciiDigit(c) || isAsciiUpper(c); }

constexpr bool isRawPhoneChar(char c) {
    return isAsciiDigit(c) || c == ' ' || c == '-' || c == '(' || c == ')';
}

constexpr bool isStarOrHash(char c) { return c == '*' || c == '#'; }

// "[a-zA-Z0-9][a-zA-Z0-9\-]{0,maxTail}": a domain label without its dot.
bool isEmailLabel(std::string_view label, std::size_t maxTail) {
    if (label.empty() || label.size() > maxTail + 1 || !isAsciiAlnum(label.front())) {
        return false;
    }
    for (const char c : label) {
        if (!isAsciiAlnum(c) && c != '-') {
            return false;
        }
    }
    return true;
}

// The longest run of bytes satisfying `pred` from `from`, stopping at `limit` bytes.
template <typename Pred>
std::size_t runLength(std::string_view text, std::size_t from, std::size_t limit, Pred pred) {
    std::size_t length = 0;
    while (length < limit && from + length < text.size() && pred(text[from + length])) {
        ++length;
    }
    return length;
}

}  // namespace

bool matchesEmail(std::string_view text) {
    // No '@' may stand in the local part or in a label, so the only '@' splits
    // the text, and the labels are exactly the pieces between the dots.
    const auto at = text.find('@');
    if (at == std::string_view::npos || at == 0 || at > 256) {
        return false;
    }
    for (std::size_t i = 0; i < at; ++i) {
        if (!isEmailLocalChar(text[i])) {
            return false;
        }
    }
    std::string_view domain = text.substr(at + 1);
    std::size_t labels = 0;
    while (true) {
        const auto dot = domain.find('.');
        if (!isEmailLabel(domain.substr(0, dot), labels == 0 ? 64 : 25)) {
            return false;
        }
        ++labels;
        if (dot == std::string_view::npos) {
            break;
        }
        domain.remove_prefix(dot + 1);
    }
    return labels >= 2;
}

bool matchesDiscoveryCode(std::string_view text) {
    if (text.size() != 11) {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool ok = (i == 3 || i == 7) ? text[i] == '-' : isDiscoveryChar(text[i]);
        if (!ok) {
            return false;
        }
    }
    return true;
}

bool matchesRawPhoneNumber(std::string_view text) {
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
    }
    if (text.empty()) {
        return false;
    }
    for (const char c : text) {
        if (!isRawPhoneChar(c)) {
            return false;
        }
    }
    return true;
}

bool matchesDigitRun(std::string_view text, bool allowPlus, std::size_t minDigits,
                     std::size_t maxDigits) {
    if (allowPlus && !text.empty() && text.front() == '+') {
        text.remove_prefix(1);
    }
    if (text.size() < minDigits || text.size() > maxDigits) {
        return false;
    }
    for (const char c : text) {
        if (!isAsciiDigit(c)) {
            return false;
        }
    }
    return true;
}

bool matchesFeatureAccessCode(std::string_view text) {
    // A block "[*#][*#\d]{1,4}(\+?\d{0,15})?" is at most 21 bytes; three blocks
    // and a final '#' make 64. The optional tail may match empty, which changes
    // nothing about the accepted texts. Track the set of positions at which the
    // first, second and third block can end.
    constexpr std::size_t kMaxLength = 3 * 21 + 1;
    if (text.size() > kMaxLength) {
        return false;
    }
    const std::size_t n = text.size();
    std::array<bool, kMaxLength + 1> starts{};
    std::array<bool, kMaxLength + 1> ends{};
    starts[0] = true;
    bool accepted = false;
    for (int block = 0; block < 3 && !accepted; ++block) {
        ends.fill(false);
        for (std::size_t p = 0; p < n; ++p) {
            if (!starts[p] || !isStarOrHash(text[p])) {
                continue;
            }
            const std::size_t body = runLength(
                text, p + 1, 4, [](char c) { return isStarOrHash(c) || isAsciiDigit(c); });
            for (std::size_t q = p + 2; q <= p + 1 + body; ++q) {
                const std::size_t digits = runLength(text, q, 15, isAsciiDigit);
                for (std::size_t e = q; e <= q + digits; ++e) {
                    ends[e] = true;
                }
                if (q < n && text[q] == '+') {
                    const std::size_t signedDigits = runLength(text, q + 1, 15, isAsciiDigit);
                    for (std::size_t e = q + 1; e <= q + 1 + signedDigits; ++e) {
                        ends[e] = true;
                    }
                }
            }
        }
        accepted = ends[n] || (n > 0 && text[n - 1] == '#' && ends[n - 1]);
        starts = ends;
    }
    return accepted;
}

HexGroup findHexGroup(std::string_view text, std::size_t from) {
    for (std::size_t i = from; i < text.size(); ++i) {
        if (!isHexDigit(text[i])) {
            continue;
        }
        const bool pair = i + 1 < text.size() && isHexDigit(text[i + 1]);
        return {i, pair ? std::size_t{2} : std::size_t{1}};
    }
    return {};
}

}  // namespace StringUtils::detail

#include "StringUtils/CaseBlindSearch.h"

#include <bit>
#include <cstdint>
#include <cstring>

#include "StringUtils/AsciiClass.h"

namespace StringUtils::detail {

namespace {

typedef std::uint8_t Bytes16 __attribute__((vector_size(16)));
typedef std::uint64_t Words2 __attribute__((vector_size(16)));

// The checks of candidates may cost this many byte comparisons per text byte
// passed, plus the slack, before the search gives up.
constexpr std::size_t kChecksPerByte = 4;
constexpr std::size_t kCheckSlack = 64;

// The byte with A-Z lowered, as the classic locale's tolower.
unsigned char lowered(char c) { return static_cast<unsigned char>(toAsciiLower(c)); }

// Matches a byte against a lowered pattern byte: a letter matches both of its
// cases, which differ only in bit 0x20; any other byte only itself.
struct ByteMatcher {
    explicit ByteMatcher(char patternByte)
        : value(lowered(patternByte)),
          fold(isAsciiLetter(patternByte) ? std::uint8_t{0x20} : std::uint8_t{0}) {}

    Bytes16 matches(const char* p) const {
        Bytes16 bytes;
        std::memcpy(&bytes, p, sizeof bytes);
        return reinterpret_cast<Bytes16>((bytes | fold) == value);
    }

    bool matches(char c) const {
        return (static_cast<unsigned char>(c) | fold) == value;
    }

    std::uint8_t value;
    std::uint8_t fold;
};

// The number of bytes, from 1, for which the pattern matches at p; all of them
// when it matches whole.
std::size_t matchedLength(const char* p, std::string_view pattern) {
    std::size_t i = 1;
    while (i < pattern.size() && lowered(p[i]) == lowered(pattern[i])) {
        ++i;
    }
    return i;
}

}  // namespace

AsciiCaseBlindMatch findAsciiCaseBlind(std::string_view text, std::string_view pattern) {
    const std::size_t m = pattern.size();
    if (m == 0) {
        return AsciiCaseBlindMatch::found;
    }
    if (text.size() < m) {
        return AsciiCaseBlindMatch::notFound;
    }
    const ByteMatcher first(pattern.front());
    const ByteMatcher last(pattern.back());
    const char* const base = text.data();
    // Candidate positions run up to lastStart inclusive.
    const std::size_t lastStart = text.size() - m;
    std::size_t checks = 0;
    // Checks the candidate at position; true when it is a match.
    const auto check = [&](std::size_t position) {
        const std::size_t matched = matchedLength(base + position, pattern);
        checks += matched;
        return matched == m;
    };
    const auto tooCostly = [&](std::size_t position) {
        return checks > kChecksPerByte * position + kCheckSlack;
    };
    std::size_t position = 0;
    for (; position + 16 <= lastStart + 1; position += 16) {
        const Bytes16 both = first.matches(base + position) & last.matches(base + position + m - 1);
        const auto words = reinterpret_cast<Words2>(both);
        for (int half = 0; half < 2; ++half) {
            // A candidate's lane is all ones; found lanes are cleared whole.
            for (std::uint64_t flags = words[half]; flags != 0;) {
                const int shift = std::countr_zero(flags) / 8 * 8;
                flags &= ~(std::uint64_t{0xFF} << shift);
                const int lane = std::endian::native == std::endian::little ? shift / 8 : 7 - shift / 8;
                if (check(position + 8 * static_cast<std::size_t>(half) +
                          static_cast<std::size_t>(lane))) {
                    return AsciiCaseBlindMatch::found;
                }
            }
        }
        if (tooCostly(position)) {
            return AsciiCaseBlindMatch::tooCostly;
        }
    }
    for (; position <= lastStart; ++position) {
        if (first.matches(base[position]) && last.matches(base[position + m - 1]) &&
            check(position)) {
            return AsciiCaseBlindMatch::found;
        }
    }
    return AsciiCaseBlindMatch::notFound;
}

}  // namespace StringUtils::detail

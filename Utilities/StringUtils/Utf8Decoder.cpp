// UTF-8 -> UTF-16 half of the transcoder.
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "StringUtils/Utf16Codec.h"
#include "StringUtils/Utf16CodecWords.h"

namespace StringUtils::Utf16Codec {

namespace {

bool isContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// Decodes the one UTF-8 sequence at p (p < end) into out; returns the position
// after it. Inlined into each loop, which keeps out in a register.
template <typename T>
[[gnu::always_inline]] inline const unsigned char* decodeSequence(const unsigned char* p,
                                                                  const unsigned char* end,
                                                                  T*& out) {
    const std::uint32_t lead = p[0];
    if (lead < 0x80) {
        *out++ = static_cast<T>(lead);
        return p + 1;
    }
    const auto available = end - p;
    if (lead < 0xE0) {
        // C0 and C1 could only start overlong forms of ASCII.
        if (lead < 0xC2 || available < 2 || !isContinuation(p[1])) {
            throwFromBytesError();
        }
        *out++ = static_cast<T>(((lead & 0x1F) << 6) | (p[1] & 0x3F));
        return p + 2;
    }
    if (lead < 0xF0) {
        if (available < 3 || !isContinuation(p[1]) || !isContinuation(p[2])) {
            throwFromBytesError();
        }
        const std::uint32_t code = ((lead & 0x0F) << 12) | ((p[1] & 0x3Fu) << 6) | (p[2] & 0x3Fu);
        if (code < 0x800 || (code & 0xF800) == 0xD800) {
            throwFromBytesError();
        }
        *out++ = static_cast<T>(code);
        return p + 3;
    }
    if (lead > 0xF4 || available < 4 || !isContinuation(p[1]) || !isContinuation(p[2]) ||
        !isContinuation(p[3])) {
        throwFromBytesError();
    }
    const std::uint32_t code =
        ((lead & 0x07) << 18) | ((p[1] & 0x3Fu) << 12) | ((p[2] & 0x3Fu) << 6) | (p[3] & 0x3Fu);
    if (code < 0x10000 || code > 0x10FFFF) {
        throwFromBytesError();
    }
    out[0] = static_cast<T>(0xD800 + ((code - 0x10000) >> 10));
    out[1] = static_cast<T>(0xDC00 + (code & 0x3FF));
    out += 2;
    return p + 4;
}

// The k-th 8-byte word at p, its first byte lowest.
inline std::uint64_t wordAt(const unsigned char* p, int k) {
    std::uint64_t word;
    std::memcpy(&word, p + 8 * k, sizeof word);
    if constexpr (std::endian::native == std::endian::big) {
        word = __builtin_bswap64(word);
    }
    return word;
}

// True when the 64 bytes at p are all ASCII.
inline bool asciiLook(const unsigned char* p) {
    std::uint64_t any = 0;
    for (int k = 0; k < 8; ++k) {
        any |= wordAt(p, k);
    }
    return gatherTopBits(any) == 0;
}

// Bit i set when byte i of the 64 at p is not ASCII.
inline std::uint64_t nonAsciiBytes(const unsigned char* p) {
    std::uint64_t mask = 0;
    for (int k = 0; k < 8; ++k) {
        mask |= std::uint64_t{gatherTopBits(wordAt(p, k))} << (8 * k);
    }
    return mask;
}

// Widens the count ASCII bytes at from (at most 64) to units at out, 32 at a
// time; out has room for 64 more units and 64 bytes at from are readable.
template <typename T>
void widenAscii(const unsigned char* from, std::ptrdiff_t count, T*& out) {
    widenSixteen(from, out);
    widenSixteen(from + 16, out + 16);
    if (count > 32) {
        widenSixteen(from + 32, out + 32);
        widenSixteen(from + 48, out + 48);
    }
    out += count;
}

// Decodes 64-byte looks into out while at least 128 bytes remain and out has
// room for a step; returns the new input position. A mask of a look's non-ASCII
// bytes gives the next sequence's position at once, and the ASCII before it is
// widened 32 bytes at a time, so no branch depends on the length of an ASCII
// run: on mixed text those lengths vary too much to be predicted. A run of
// sequences (as in CJK text) is decoded without going back to the mask, and a
// look after a sequence that crosses its end starts where that sequence ends.
// A look writes at most 67 units and 64 spare ones past them, within the room
// a block keeps for a step.
template <typename T>
const unsigned char* decodeLooks(const unsigned char* p, const unsigned char* end, T*& out,
                                 const T* full) {
    while (end - p >= 128 && out <= full) {
        if (asciiLook(p)) {
            widenAscii(p, 64, out);
            p += 64;
            continue;
        }
        const unsigned char* from = p;  // after the last sequence decoded
        for (std::uint64_t pending = nonAsciiBytes(p); pending != 0;) {
            const unsigned char* const sequence = p + std::countr_zero(pending);
            widenAscii(from, sequence - from, out);
            from = decodeSequence(sequence, end, out);
            while (*from >= 0x80 && from < p + 64) {
                from = decodeSequence(from, end, out);
            }
            const std::ptrdiff_t done = from - p;
            pending = done < 64 ? pending & (~0ULL << done) : 0;
        }
        if (from < p + 64) {
            widenAscii(from, p + 64 - from, out);
            from = p + 64;
        }
        p = from;
    }
    return p;
}

// Decodes into out while at least 16 bytes remain and out has room for a step.
// Sixteen bytes are widened at once; where they hold a non-ASCII byte, only the
// ASCII bytes before it are kept, and the run of non-ASCII sequences from there
// is decoded one sequence at a time.
template <typename T>
const unsigned char* decodeBulk(const unsigned char* p, const unsigned char* end, T*& out,
                                const T* full) {
    while (end - p >= 16 && out <= full) {
        if (widenSixteen(p, out)) {
            p += 16;
            out += 16;
            continue;
        }
        const int ascii = leadingAscii(p);
        p += ascii;
        out += ascii;
        while (p != end && *p >= 0x80 && out <= full) {
            p = decodeSequence(p, end, out);
        }
    }
    return p;
}

}  // namespace

template <typename T>
std::basic_string<T> fromUtf8(std::string_view text) {
    const auto* const begin = reinterpret_cast<const unsigned char*>(text.data());
    const auto* const end = begin + text.size();
    // One unit per byte is exact for ASCII and never too little; a text that
    // came out much shorter gives the spare room back.
    auto result = convertInBlocks<T>(
        begin, end, text.size(),
        [end](const unsigned char* p, T*& out, const T* full) {
            p = decodeLooks(p, end, out, full);
            return decodeBulk(p, end, out, full);
        },
        [end](const unsigned char* p, T*& out) { return decodeSequence(p, end, out); });
    if (result.capacity() > 2 * result.size()) {
        result.shrink_to_fit();
    }
    return result;
}

template std::basic_string<char16_t> fromUtf8<char16_t>(std::string_view);
template std::basic_string<wchar_t> fromUtf8<wchar_t>(std::string_view);

}  // namespace StringUtils::Utf16Codec

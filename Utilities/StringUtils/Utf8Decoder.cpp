// UTF-8 -> UTF-16 half of the transcoder.
#include <cstdint>
#include <cstring>

#include "StringUtils/Utf16Codec.h"
#include "StringUtils/Utf16CodecWords.h"

namespace StringUtils::Utf16Codec {

namespace {

bool isContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// Code units that well-formed UTF-8 text decodes to: one per byte that is no
// continuation byte, and a second one for each four-byte lead. Used only to size
// the result; malformed text is rejected while decoding.
size_t countUnits(const unsigned char* p, const unsigned char* end) {
    typedef std::uint8_t Bytes __attribute__((vector_size(16)));
    size_t count = 0;
    while (end - p >= 16) {
        // Per-lane byte counters, emptied before they can overflow.
        Bytes lanes = {};
        for (int round = 0; round < 127 && end - p >= 16; ++round, p += 16) {
            Bytes bytes;
            std::memcpy(&bytes, p, sizeof bytes);
            // A true comparison is all ones, so subtracting it adds one.
            lanes -= (bytes & 0xC0) != 0x80;
            lanes -= bytes >= 0xF0;
        }
        for (int i = 0; i < 16; ++i) {
            count += lanes[i];
        }
    }
    for (; p != end; ++p) {
        count += static_cast<size_t>(!isContinuation(*p)) + static_cast<size_t>(*p >= 0xF0);
    }
    return count;
}

// Decodes the one UTF-8 sequence at p (p < end) into out; returns the position
// after it.
template <typename T>
const unsigned char* decodeSequence(const unsigned char* p, const unsigned char* end, T*& out) {
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
    return convertInBlocks<T>(
        begin, end, countUnits(begin, end),
        [end](const unsigned char* p, T*& out, const T* full) {
            return decodeBulk(p, end, out, full);
        },
        [end](const unsigned char* p, T*& out) { return decodeSequence(p, end, out); });
}

template std::basic_string<char16_t> fromUtf8<char16_t>(std::string_view);
template std::basic_string<wchar_t> fromUtf8<wchar_t>(std::string_view);

}  // namespace StringUtils::Utf16Codec

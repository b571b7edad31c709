// UTF-8 -> UTF-16 half of the transcoder.
#include <cstdint>
#include <cstring>

#include "StringUtils/Utf16Codec.h"
#include "StringUtils/Utf16CodecWords.h"

namespace StringUtils::Utf16Codec {

namespace {

bool isContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

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
    // One unit per byte is exact for ASCII and never too little; a text that
    // came out much shorter gives the spare room back.
    auto result = convertInBlocks<T>(
        begin, end, text.size(),
        [end](const unsigned char* p, T*& out, const T* full) {
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

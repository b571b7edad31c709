#include "StringUtils/Utf16Codec.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <type_traits>

namespace StringUtils::Utf16Codec {

namespace {

// Output is produced in blocks of this many elements in a local buffer and then
// appended, so the result is written once and never zero-filled first.
constexpr size_t kBlock = 2048;
// Room kept free in a block for the largest single step of either direction.
constexpr size_t kStepRoom = 16;

constexpr std::uint64_t kHighBits = 0x8080808080808080ULL;

[[noreturn]] void throwFromBytesError() {
    throw std::range_error("wstring_convert: from_bytes error");
}

[[noreturn]] void throwToBytesError() { throw std::range_error("wstring_convert: to_bytes error"); }

std::uint64_t load64(const unsigned char* p) {
    std::uint64_t word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

bool isContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// Code units that well-formed UTF-8 text decodes to: one per byte that is no
// continuation byte, and a second one for each four-byte lead. Used only to size
// the result; malformed text is rejected while decoding.
size_t countUtf16Units(const unsigned char* p, const unsigned char* end) {
    size_t count = 0;
    for (; end - p >= 8; p += 8) {
        const std::uint64_t word = load64(p);
        const std::uint64_t continuation = word & ~(word << 1) & kHighBits;
        const std::uint64_t fourByteLead =
            word & (word << 1) & (word << 2) & (word << 3) & kHighBits;
        count += 8 - static_cast<size_t>(std::popcount(continuation)) +
                 static_cast<size_t>(std::popcount(fourByteLead));
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

// Number of UTF-8 bytes that well-formed UTF-16 code units encode to. Used only
// to size the result; malformed input is rejected while encoding.
template <typename T>
size_t countUtf8Bytes(const T* p, const T* end) {
    size_t count = 0;
    for (; p != end; ++p) {
        const auto unit = static_cast<std::uint32_t>(*p);
        count += 1 + static_cast<size_t>(unit >= 0x80) + static_cast<size_t>(unit >= 0x800) +
                 static_cast<size_t>(unit >= 0x10000) - static_cast<size_t>(unit - 0xD800 < 0x800);
    }
    return count;
}

void putCodePoint(std::uint32_t code, char*& out) {
    if (code < 0x800) {
        out[0] = static_cast<char>(0xC0 | (code >> 6));
        out[1] = static_cast<char>(0x80 | (code & 0x3F));
        out += 2;
    } else if (code < 0x10000) {
        out[0] = static_cast<char>(0xE0 | (code >> 12));
        out[1] = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out[2] = static_cast<char>(0x80 | (code & 0x3F));
        out += 3;
    } else {
        out[0] = static_cast<char>(0xF0 | (code >> 18));
        out[1] = static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out[2] = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out[3] = static_cast<char>(0x80 | (code & 0x3F));
        out += 4;
    }
}

// Encodes the code point that starts at p (p < end), one unit or a surrogate
// pair, into out; returns the position after it.
template <typename T>
const T* encodeCodePoint(const T* p, const T* end, char*& out) {
    const auto unit = static_cast<std::uint32_t>(static_cast<std::make_unsigned_t<T>>(p[0]));
    if (unit < 0x80) {
        *out++ = static_cast<char>(unit);
        return p + 1;
    }
    if (unit - 0xD800 >= 0x800) {
        if (unit > 0x10FFFF) {
            throwToBytesError();
        }
        putCodePoint(unit, out);
        return p + 1;
    }
    if (unit >= 0xDC00 || end - p < 2) {
        throwToBytesError();
    }
    const auto low = static_cast<std::uint32_t>(static_cast<std::make_unsigned_t<T>>(p[1]));
    if (low - 0xDC00 >= 0x400) {
        throwToBytesError();
    }
    putCodePoint(0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00), out);
    return p + 2;
}

// True when the eight units at p are all ASCII.
template <typename T>
bool eightAscii(const T* p) {
    std::make_unsigned_t<T> bits = 0;
    for (int i = 0; i < 8; ++i) {
        bits |= static_cast<std::make_unsigned_t<T>>(p[i]);
    }
    return bits < 0x80;
}

}  // namespace

template <typename T>
std::basic_string<T> fromUtf8(std::string_view text) {
    const auto* p = reinterpret_cast<const unsigned char*>(text.data());
    const auto* const end = p + text.size();
    std::basic_string<T> result;
    result.reserve(countUtf16Units(p, end));
    T block[kBlock];
    while (p != end) {
        T* out = block;
        for (T* const full = block + kBlock - kStepRoom; p != end && out <= full;) {
            if (end - p >= 16 && ((load64(p) | load64(p + 8)) & kHighBits) == 0) {
                for (int i = 0; i < 16; ++i) {
                    out[i] = static_cast<T>(p[i]);
                }
                p += 16;
                out += 16;
            } else {
                p = decodeSequence(p, end, out);
            }
        }
        result.append(block, static_cast<size_t>(out - block));
    }
    return result;
}

template <typename T>
std::string toUtf8(std::basic_string_view<T> text) {
    const T* p = text.data();
    const T* const end = p + text.size();
    std::string result;
    result.reserve(countUtf8Bytes(p, end));
    char block[kBlock];
    while (p != end) {
        char* out = block;
        for (char* const full = block + kBlock - kStepRoom; p != end && out <= full;) {
            if (end - p >= 8 && eightAscii(p)) {
                for (int i = 0; i < 8; ++i) {
                    out[i] = static_cast<char>(p[i]);
                }
                p += 8;
                out += 8;
            } else {
                p = encodeCodePoint(p, end, out);
            }
        }
        result.append(block, static_cast<size_t>(out - block));
    }
    return result;
}

template std::basic_string<char16_t> fromUtf8<char16_t>(std::string_view);
template std::basic_string<wchar_t> fromUtf8<wchar_t>(std::string_view);
template std::string toUtf8<char16_t>(std::basic_string_view<char16_t>);
template std::string toUtf8<wchar_t>(std::basic_string_view<wchar_t>);

}  // namespace StringUtils::Utf16Codec

// UTF-16 -> UTF-8 half of the transcoder.
#include <cstdint>

#include "StringUtils/Utf16Codec.h"
#include "StringUtils/Utf16CodecWords.h"

namespace StringUtils::Utf16Codec {

namespace {

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
    const std::uint32_t unit = unitAt(p);
    if (unit < 0x80) {
        *out++ = static_cast<char>(unit);
        return p + 1;
    }
    if (unit - 0xD800 >= 0x800) {
        // A wide element beyond 0xFFFF is taken as the code point it holds.
        if (unit > 0x10FFFF) {
            throwToBytesError();
        }
        putCodePoint(unit, out);
        return p + 1;
    }
    if (unit >= 0xDC00 || end - p < 2) {
        throwToBytesError();
    }
    const std::uint32_t low = unitAt(p + 1);
    if (low - 0xDC00 >= 0x400) {
        throwToBytesError();
    }
    putCodePoint(0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00), out);
    return p + 2;
}

// Encodes the unit at p when it is a code point below U+10000 (no surrogate)
// without branching on its length: three bytes are always written and one to
// three of them kept. Returns false, writing nothing, for any other unit.
template <typename T>
bool encodeBasicUnit(const T* p, char*& out) {
    const std::uint32_t unit = unitAt(p);
    if (unit - 0xD800 < 0x800 || unit > 0xFFFF) {
        return false;
    }
    const bool one = unit < 0x80;
    const bool two = unit < 0x800;
    const std::uint32_t last = 0x80 | (unit & 0x3F);
    out[0] = static_cast<char>(one ? unit : two ? 0xC0 | (unit >> 6) : 0xE0 | (unit >> 12));
    out[1] = static_cast<char>(two ? last : 0x80 | ((unit >> 6) & 0x3F));
    out[2] = static_cast<char>(last);
    out += 3 - static_cast<int>(two) - static_cast<int>(one);
    return true;
}

// Encodes into out while at least 16 units remain and out has room for a step.
// Eight units are narrowed at once, sixteen in a long ASCII run; where they hold
// a non-ASCII unit, only the ASCII units before it are kept, and the run of
// non-ASCII units from there is encoded one code point at a time.
template <typename T>
const T* encodeBulk(const T* p, const T* end, char*& out, const char* full) {
    // A local copy: stores through a char pointer could otherwise change out.
    char* o = out;
    while (end - p >= 16 && o <= full) {
        const int ascii = eightAscii(p) ? 8 : leadingAsciiUnits(p);
        narrowEight(p, o);
        p += ascii;
        o += ascii;
        if (ascii == 8) {
            while (end - p >= 16 && o <= full && narrowSixteen(p, o)) {
                p += 16;
                o += 16;
            }
            continue;
        }
        while (p != end && unitAt(p) >= 0x80 && o <= full) {
            if (encodeBasicUnit(p, o)) {
                ++p;
            } else {
                p = encodeCodePoint(p, end, o);
            }
        }
    }
    out = o;
    return p;
}

}  // namespace

template <typename T>
std::string toUtf8(std::basic_string_view<T> text) {
    const T* const end = text.data() + text.size();
    return convertInBlocks<char>(
        // One byte per unit: exact for ASCII, and a first guess that the string
        // grows from otherwise (a counting pass costs more than that growth).
        text.data(), end, text.size(),
        [end](const T* p, char*& out, const char* full) { return encodeBulk(p, end, out, full); },
        [end](const T* p, char*& out) { return encodeCodePoint(p, end, out); });
}

template std::string toUtf8<char16_t>(std::basic_string_view<char16_t>);
template std::string toUtf8<wchar_t>(std::basic_string_view<wchar_t>);

}  // namespace StringUtils::Utf16Codec

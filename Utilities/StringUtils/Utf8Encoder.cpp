// UTF-16 -> UTF-8 half of the transcoder.
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

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

// The number of continuation bytes of a unit below 0x10000, indexed by the unit
// shifted right by 7; kSpecial for the surrogates.
constexpr std::uint8_t kSpecial = 3;
constexpr auto kContinuations = [] {
    std::array<std::uint8_t, 0x200> table{};
    for (size_t i = 0; i < table.size(); ++i) {
        table[i] = i == 0 ? 0 : i < 0x10 ? 1 : (i >> 4) == 0x1B ? kSpecial : 2;
    }
    return table;
}();

// Encodes the unit at p when it is a code point below U+10000 (no surrogate)
// without branching on its length. The word "lead group, middle group, low
// seven bits" (one byte each, in memory order) is shifted so that its last c + 1
// bytes remain, for c continuation bytes; the marks of that length are set and
// the bit below each continuation mark cleared. Four bytes are written and c + 1
// kept. Returns false, writing nothing, for any other unit.
template <typename T>
bool encodeBasicUnit(const T* p, char*& out) {
    const std::uint32_t unit = unitAt(p);
    if constexpr (sizeof(T) == 4) {
        if (unit > 0xFFFF) {
            return false;
        }
    }
    const std::uint32_t c = kContinuations[unit >> 7];
    if (c == kSpecial) {
        return false;
    }
    static constexpr std::uint32_t kMarks[] = {0x000000, 0x0080C0, 0x8080E0};
    static constexpr std::uint32_t kKept[] = {0x0000FF, 0x00BFFF, 0xBFFFFF};
    const std::uint32_t groups =
        (unit >> 12) | (((unit >> 6) & 0x3F) << 8) | ((unit & 0x7F) << 16);
    const std::uint32_t word = ((groups >> (16 - 8 * c)) | kMarks[c]) & kKept[c];
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(out, &word, sizeof word);
    } else {
        for (int i = 0; i < 3; ++i) {
            out[i] = static_cast<char>(word >> (8 * i));
        }
    }
    out += c + 1;
    return true;
}

// Encodes into out while at least 16 units remain and out has room for a step.
// Eight units are narrowed at once, sixteen in a long ASCII run; where they hold
// a non-ASCII unit, only the ASCII units before it are kept, and the run of
// non-ASCII units from there is encoded one code point at a time. The way for
// wide elements, whose 64-byte vectors cost too much in the masks of encodeRuns,
// and for the last units of a text.
template <typename T>
const T* encodeByWindows(const T* p, const T* end, char*& out, const char* full) {
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

// Units of the text looked at a time by encodeRuns.
constexpr int kRunUnits = 64;

// Encodes into out while at least 96 units remain and out has room for a step.
// A mask of the non-ASCII units among the next 64 gives the position of each
// unit to encode: the ASCII units before it are copied 32 at a time (a longer
// run takes a rarely used branch), and the unit is encoded without branching on
// its length. The next look starts after the last unit encoded. So the
// alternation of ASCII and non-ASCII text costs no mispredicted branch and no
// chain of dependent loads per unit; only the end of a look, a surrogate pair, a
// unit above 0xFFFF and a long ASCII run take a branch that may be mispredicted.
template <typename T>
const T* encodeRuns(const T* p, const T* end, char*& out, const char* full) {
    // A local copy: stores through a char pointer could otherwise change out.
    char* o = out;
    while (end - p >= kRunUnits + 32 && o <= full) {
        std::uint64_t stops = 0;
        for (int k = 0; k < kRunUnits / 16; ++k) {
            stops |= nonAsciiMask(p + 16 * k) << (16 * k);
        }
        if (stops == 0) {
            // A long ASCII run: on sixteen units at a time while they are ASCII.
            narrowUnits<kRunUnits>(p, o);
            p += kRunUnits;
            o += kRunUnits;
            while (end - p >= 16 && o <= full && narrowSixteen(p, o)) {
                p += 16;
                o += 16;
            }
            continue;
        }
        const T* copied = p;
        do {
            const int at = std::countr_zero(stops);
            stops &= stops - 1;
            const T* const unit = p + at;
            narrowUnits<32>(copied, o);
            while (unit - copied > 32) {
                copied += 32;
                o += 32;
                narrowUnits<32>(copied, o);
            }
            o += unit - copied;
            if (encodeBasicUnit(unit, o)) {
                copied = unit + 1;
            } else {
                copied = encodeCodePoint(unit, end, o);
                // The low half of a surrogate pair may be a stop.
                stops &= ~(2ULL << at);
            }
        } while (stops != 0);
        p = copied;
    }
    out = o;
    return p;
}

// Encodes into out the fast way while it can (see encodeRuns and encodeByWindows).
template <typename T>
const T* encodeBulk(const T* p, const T* end, char*& out, const char* full) {
    if constexpr (sizeof(T) == 2) {
        // The last units, fewer than encodeRuns looks at, go the other way.
        return encodeByWindows(encodeRuns(p, end, out, full), end, out, full);
    } else {
        return encodeByWindows(p, end, out, full);
    }
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

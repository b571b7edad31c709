// Word-at-a-time helpers shared by the two directions of the UTF-8 <-> UTF-16
// transcoder: several bytes or code units are tested, widened or narrowed at
// once in a 64-bit word or a small compiler vector. Internal to the transcoder.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace StringUtils::Utf16Codec {

// Output is produced in blocks of this many elements in a local buffer and then
// appended, so a result is written once and never zero-filled first.
inline constexpr size_t kBlock = 2048;

// Room kept free in a block for the largest single step of either direction
// (a run of 64 units written with their spare bytes).
inline constexpr size_t kStepRoom = 256;

[[noreturn]] inline void throwFromBytesError() {
    throw std::range_error("wstring_convert: from_bytes error");
}

[[noreturn]] inline void throwToBytesError() {
    throw std::range_error("wstring_convert: to_bytes error");
}

template <typename T>
using Unit = std::make_unsigned_t<T>;

template <typename T>
std::uint32_t unitAt(const T* p) {
    return static_cast<std::uint32_t>(static_cast<Unit<T>>(*p));
}

// A lane value repeated over a 64-bit word of laneBits-wide lanes.
constexpr std::uint64_t repeatLane(std::uint64_t lane, int laneBits) {
    std::uint64_t word = 0;
    for (int shift = 0; shift < 64; shift += laneBits) {
        word |= lane << shift;
    }
    return word;
}

// Index, in memory order, of the first non-zero laneBits-wide lane of a word
// loaded from memory; the lane count when all are zero.
template <int laneBits>
int firstFlaggedLane(std::uint64_t flags) {
    if constexpr (std::endian::native == std::endian::little) {
        return std::countr_zero(flags) / laneBits;
    } else {
        return std::countl_zero(flags) / laneBits;
    }
}

// Masks over a 64-bit word of units of type T: the bits that make a unit
// non-ASCII, all bits but the top one of each unit, and the top bits.
template <typename T>
struct UnitLanes {
    static constexpr int kBits = 8 * sizeof(T);
    static constexpr int kPerWord = 64 / kBits;
    static constexpr std::uint64_t kUnitMask = (1ULL << (kBits - 1) << 1) - 1;
    static constexpr std::uint64_t kNonAscii = repeatLane(kUnitMask & ~0x7FULL, kBits);
    static constexpr std::uint64_t kLow = repeatLane(kUnitMask >> 1, kBits);
    static constexpr std::uint64_t kTop = repeatLane(1ULL << (kBits - 1), kBits);
};

// The non-ASCII bits of the k-th 64-bit word of units at p.
template <typename T>
std::uint64_t nonAsciiBits(const T* p, int k) {
    std::uint64_t word;
    std::memcpy(&word, p + k * UnitLanes<T>::kPerWord, sizeof word);
    return word & UnitLanes<T>::kNonAscii;
}

// True when the eight units at p are all ASCII.
template <typename T>
bool eightAscii(const T* p) {
    std::uint64_t bits = 0;
    for (int k = 0; k < 8 / UnitLanes<T>::kPerWord; ++k) {
        bits |= nonAsciiBits(p, k);
    }
    return bits == 0;
}

// Number of leading ASCII units among the eight at p.
template <typename T>
int leadingAsciiUnits(const T* p) {
    using Lanes = UnitLanes<T>;
    int leading = 8;
    for (int k = 8 / Lanes::kPerWord - 1; k >= 0; --k) {
        // The top bit of a lane is set exactly when the lane holds a non-ASCII unit.
        const std::uint64_t high = nonAsciiBits(p, k);
        const std::uint64_t flags = (high | ((high & Lanes::kLow) + Lanes::kLow)) & Lanes::kTop;
        leading =
            flags != 0 ? k * Lanes::kPerWord + firstFlaggedLane<Lanes::kBits>(flags) : leading;
    }
    return leading;
}

// The eight units at p as eight bytes (meaningful for ASCII units). Wide units
// go through 16 bits, which keeps the narrowing in vector registers.
template <typename T>
void narrowEight(const T* p, char* out) {
    typedef Unit<T> Units __attribute__((vector_size(8 * sizeof(T))));
    typedef std::uint16_t Halves __attribute__((vector_size(16)));
    typedef std::uint8_t Bytes __attribute__((vector_size(8)));
    Units units;
    std::memcpy(&units, p, sizeof units);
    units &= 0xFF;
    const Bytes bytes = __builtin_convertvector(__builtin_convertvector(units, Halves), Bytes);
    std::memcpy(out, &bytes, sizeof bytes);
}

// Sixteen bytes and sixteen units as compiler vectors, which the compiler maps
// to the target's vector registers (or emulates where it has none).
typedef std::uint8_t Bytes16 __attribute__((vector_size(16)));
typedef std::uint16_t Halves16 __attribute__((vector_size(32)));
typedef std::uint64_t Words2 __attribute__((vector_size(16)));
typedef std::uint32_t Wides16 __attribute__((vector_size(64)));
template <typename T>
using Units16 = std::conditional_t<sizeof(T) == 2, Halves16, Wides16>;

// The top bits of a word's eight bytes gathered into its low byte, the top bit
// of its lowest byte as bit 0, by one multiplication.
inline std::uint32_t gatherTopBits(std::uint64_t word) {
    constexpr std::uint64_t kTops = 0x8080808080808080ULL;
    constexpr std::uint64_t kGather = 0x0002040810204081ULL;
    return static_cast<std::uint32_t>(((word & kTops) * kGather) >> 56);
}

// A 16-bit mask with bit i set when flag byte i (in memory order) is not zero.
// Branch-free where the target is little-endian: the top bit of each flag byte
// is set when the byte is not zero, then gathered.
inline std::uint32_t flagMask(const Bytes16& flags) {
    if constexpr (std::endian::native == std::endian::little) {
        const auto words = reinterpret_cast<Words2>((flags + 0x7F) | flags);
        return gatherTopBits(words[0]) | (gatherTopBits(words[1]) << 8);
    } else {
        std::uint32_t mask = 0;
        for (int i = 0; i < 16; ++i) {
            mask |= static_cast<std::uint32_t>(flags[i] != 0) << i;
        }
        return mask;
    }
}

// The number of leading elements whose flag byte is zero among sixteen flag
// bytes (16 when all are).
inline int leadingZeroFlags(const Bytes16& flags) {
    const auto words = reinterpret_cast<Words2>(flags);
    const int first = firstFlaggedLane<8>(words[0]);
    return first < 8 ? first : 8 + firstFlaggedLane<8>(words[1]);
}

// True when all the flag bytes are zero.
inline bool noFlags(const Bytes16& flags) {
    const auto words = reinterpret_cast<Words2>(flags);
    return (words[0] | words[1]) == 0;
}

// Widens the sixteen bytes at p to sixteen units at out (meaningful where they
// are ASCII); returns true when they are all ASCII. Wide units are reached
// through 16 bits, which the compiler keeps in vector registers.
template <typename T>
bool widenSixteen(const unsigned char* p, T* out) {
    Bytes16 bytes;
    std::memcpy(&bytes, p, sizeof bytes);
    const Units16<T> units =
        __builtin_convertvector(__builtin_convertvector(bytes, Halves16), Units16<T>);
    std::memcpy(out, &units, sizeof units);
    return noFlags(bytes & 0x80);
}

// The number of leading ASCII bytes among the sixteen at p.
inline int leadingAscii(const unsigned char* p) {
    Bytes16 bytes;
    std::memcpy(&bytes, p, sizeof bytes);
    return leadingZeroFlags(bytes & 0x80);
}

// Narrows the sixteen units at p to sixteen bytes at out (meaningful where they
// are ASCII); returns true when they are all ASCII.
template <typename T>
bool narrowSixteen(const T* p, char* out) {
    Units16<T> units;
    std::memcpy(&units, p, sizeof units);
    const Bytes16 bytes =
        __builtin_convertvector(__builtin_convertvector(units & 0xFF, Halves16), Bytes16);
    std::memcpy(out, &bytes, sizeof bytes);
    // Folded into one 16-byte vector, the units have a bit above ASCII set
    // exactly when one of them does.
    Words2 chunks[sizeof units / 16];
    std::memcpy(chunks, &units, sizeof units);
    Words2 any = chunks[0];
    for (const Words2& chunk : chunks) {
        any |= chunk;
    }
    constexpr std::uint64_t kAboveAscii =
        sizeof(T) == 2 ? 0xFF80FF80FF80FF80ULL : 0xFFFFFF80FFFFFF80ULL;
    return ((any[0] | any[1]) & kAboveAscii) == 0;
}

// Sixteen flag bytes for the sixteen units at p, each not zero exactly when its
// unit is not ASCII: the bits of a unit above ASCII are folded into its low byte.
template <typename T>
Bytes16 nonAsciiFlags(const T* p) {
    Units16<T> units;
    std::memcpy(&units, p, sizeof units);
    Units16<T> above = units >> 7;
    if constexpr (sizeof(T) == 4) {
        above |= above >> 16;
    }
    Halves16 folded = __builtin_convertvector(above, Halves16);
    folded |= folded >> 8;
    return __builtin_convertvector(folded, Bytes16);
}

// Narrows the count units at p to count bytes at out (meaningful where they are
// ASCII), sixteen bytes of units at a time; count is a multiple of eight.
template <int count, typename T>
void narrowUnits(const T* p, char* out) {
    constexpr int kPerChunk = 16 / sizeof(T);
    typedef Unit<T> Chunk __attribute__((vector_size(16)));
    typedef std::uint8_t Narrow __attribute__((vector_size(kPerChunk)));
    for (int i = 0; i < count; i += kPerChunk) {
        Chunk units;
        std::memcpy(&units, p + i, sizeof units);
        const Narrow bytes = __builtin_convertvector(units & 0xFF, Narrow);
        std::memcpy(out + i, &bytes, sizeof bytes);
    }
}

// A mask of the sixteen units at p with bit i set when unit i is not ASCII.
template <typename T>
std::uint64_t nonAsciiMask(const T* p) {
    return flagMask(nonAsciiFlags(p));
}

// The frame of both directions: a result reserved for size elements, filled
// block by block. bulk(p, out, full) converts the fast way while it can; step(p, out)
// converts one sequence or code point. Both return the new input position.
template <typename Out, typename In, typename Bulk, typename Step>
std::basic_string<Out> convertInBlocks(const In* p, const In* end, size_t size, Bulk bulk,
                                       Step step) {
    std::basic_string<Out> result;
    result.reserve(size);
    Out block[kBlock];
    while (p != end) {
        Out* out = block;
        const Out* const full = block + kBlock - kStepRoom;
        p = bulk(p, out, full);
        while (p != end && out <= full) {
            p = step(p, out);
        }
        result.append(block, static_cast<size_t>(out - block));
    }
    return result;
}

}  // namespace StringUtils::Utf16Codec

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
// (eight ASCII elements, then a run step writing past a short sequence).
inline constexpr size_t kStepRoom = 48;

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

// lane repeated over a 64-bit word of laneBits-wide lanes.
constexpr std::uint64_t repeatLane(std::uint64_t lane, int laneBits) {
    std::uint64_t word = 0;
    for (int shift = 0; shift < 64; shift += laneBits) {
        word |= lane << shift;
    }
    return word;
}

// Index, in memory order, of the first lane of flags (a word loaded from memory
// whose lanes are zero or have their top bit set) that is not zero; the lane
// count when none is.
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

// The eight bytes at p as eight units (meaningful for ASCII bytes). Copying
// them to a local first lets the compiler widen them in vector registers.
template <typename T>
void widenEight(const unsigned char* p, T* out) {
    unsigned char bytes[8];
    std::memcpy(bytes, p, sizeof bytes);
    for (int i = 0; i < 8; ++i) {
        out[i] = static_cast<T>(bytes[i]);
    }
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

// The frame of both directions: a result of exactly size elements, filled block
// by block. bulk(p, out, full) converts the fast way while it can; step(p, out)
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

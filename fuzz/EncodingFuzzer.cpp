// The UTF-8 <-> UTF-16 conversions against the Unicode well-formedness tables.
// Decoding and re-encoding are checked apart: a decoder that accepts what the
// tables reject (an encoded surrogate, an overlong form) fails here even when
// the re-encoding would throw. The bytes are read once as UTF-8 and once as
// UTF-16 code units (pairs); the identity conversions must copy them unchanged.
#include "FuzzCheck.h"
#include "WellFormed.h"
#include "StringUtils/Encoding.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <stdexcept>

using fuzzcheck::require;
using namespace StringUtils;

namespace {

// f()'s result, or nothing when it throws the documented std::range_error with
// the given message.
template <typename F>
auto unlessRangeError(F f, std::string_view message) -> std::optional<decltype(f())> {
    try {
        return f();
    } catch (const std::range_error& error) {
        require(message == error.what(), "the documented conversion error text");
        return std::nullopt;
    }
}

constexpr std::string_view kFromBytes = "wstring_convert: from_bytes error";
constexpr std::string_view kToBytes = "wstring_convert: to_bytes error";

void checkUtf8(const std::string& text) {
    const bool wellFormed = reference::isWellFormedUtf8(text);
    const auto wide = unlessRangeError([&] { return toWString(text); }, kFromBytes);
    const auto units = unlessRangeError([&] { return converter->from_bytes(text); }, kFromBytes);
    require(wide.has_value() == wellFormed && units.has_value() == wellFormed,
            "UTF-8 decodes exactly when it is well-formed");
    if (!wellFormed) {
        return;
    }
    require(reference::isWellFormedUtf16<wchar_t>(*wide) &&
                std::equal(wide->begin(), wide->end(), units->begin(), units->end()),
            "decoding gives well-formed UTF-16, wide and char16_t alike");
    require(toString(*wide) == text && toString(std::wstring_view(*wide)) == text &&
                converter->to_bytes(*units) == text,
            "re-encoding gives the bytes back");
}

void checkUtf16(const std::u16string& units, const std::wstring& wide) {
    const bool wellFormed = reference::isWellFormedUtf16<char16_t>(units);
    const auto bytes = unlessRangeError([&] { return converter->to_bytes(units); }, kToBytes);
    const auto wideBytes = unlessRangeError([&] { return toString(wide); }, kToBytes);
    require(bytes.has_value() == wellFormed && wideBytes == bytes,
            "UTF-16 encodes exactly when it is well-formed, wide and char16_t alike");
    if (!wellFormed) {
        return;
    }
    require(reference::isWellFormedUtf8(*bytes) && converter->from_bytes(*bytes) == units,
            "encoding gives well-formed UTF-8 that decodes back");
    // The pointer forms stop at the first zero unit.
    const std::u16string head = units.substr(0, units.find(u'\0'));
    if (reference::isWellFormedUtf16<char16_t>(head)) {
        require(fromUtf16String(units.c_str()) == converter->to_bytes(head) &&
                    toString(wide.c_str()) == fromUtf16String(units.c_str()),
                "the pointer forms convert up to the first zero unit");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = fuzzcheck::text(data, size);
    fuzzcheck::sameInEveryLocale(
        [&] {
            checkUtf8(text);
            return 0;
        },
        "conversions ignore the locale");

    std::u16string units;
    std::wstring wide;
    for (std::size_t i = 0; i + 1 < size; i += 2) {
        const auto unit = static_cast<char16_t>(data[i] | (data[i + 1] << 8));
        units += unit;
        wide += static_cast<wchar_t>(unit);
    }
    checkUtf16(units, wide);

    const std::u8string u8(text.begin(), text.end());
    std::string moved = text;
    require(toString(text) == text && fromQuillString(text) == text && toQuillString(text) == text &&
                fromU8string(text) == text && fromU8string(u8) == text &&
                fromU8string(std::move(moved)) == text && moved.empty(),
            "the identity conversions copy the bytes; the move leaves its argument empty");
    return 0;
}

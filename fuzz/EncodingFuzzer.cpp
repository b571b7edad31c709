// The UTF-8 <-> UTF-16 conversions: malformed input fails only with the
// documented std::range_error, and whatever converts converts back unchanged.
// The bytes are read once as UTF-8 and once as UTF-16 code units (pairs).
#include "FuzzCheck.h"
#include "StringUtils/Encoding.h"

#include <cstdint>
#include <stdexcept>

using fuzzcheck::require;
using namespace StringUtils;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = fuzzcheck::text(data, size);
    try {
        const std::wstring wide = toWString(text);
        require(toString(wide) == text, "UTF-8 -> wide -> UTF-8 is the identity");
        require(converter().to_bytes(converter().from_bytes(text)) == text,
                "UTF-8 -> UTF-16 -> UTF-8 is the identity");
    } catch (const std::range_error&) {
        // Malformed UTF-8: the documented failure.
    }

    std::u16string units;
    std::wstring wideUnits;
    for (std::size_t i = 0; i + 1 < size; i += 2) {
        const auto unit = static_cast<char16_t>(data[i] | (data[i + 1] << 8));
        units += unit;
        wideUnits += static_cast<wchar_t>(unit);
    }
    try {
        const std::string bytes = converter().to_bytes(units);
        require(converter().from_bytes(bytes) == units, "UTF-16 -> UTF-8 -> UTF-16 is the identity");
        require(toString(wideUnits) == bytes, "wide and UTF-16 units convert alike");
    } catch (const std::range_error&) {
        // Malformed UTF-16: the documented failure.
    }
    return 0;
}

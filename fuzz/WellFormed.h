// UTF-8 and UTF-16 well-formedness from the Unicode tables: the plain reference
// the fuzz targets hold the transcoder and the case functions to.
#pragma once

#include <cstddef>
#include <string_view>

namespace reference {

// Well-formed UTF-8 by the table of well-formed byte sequences: no overlong form,
// no encoded surrogate, nothing above U+10FFFF, no cut-off sequence.
inline bool isWellFormedUtf8(std::string_view text) {
    for (size_t i = 0; i < text.size();) {
        const auto byte = [&](size_t at) { return static_cast<unsigned char>(text[at]); };
        const unsigned lead = byte(i);
        size_t length = 0;
        unsigned low = 0x80, high = 0xBF;  // range of the second byte
        if (lead < 0x80) length = 1;
        else if (lead >= 0xC2 && lead <= 0xDF) length = 2;
        else if (lead >= 0xE0 && lead <= 0xEF) length = 3, low = lead == 0xE0 ? 0xA0 : 0x80,
                                                high = lead == 0xED ? 0x9F : 0xBF;
        else if (lead >= 0xF0 && lead <= 0xF4) length = 4, low = lead == 0xF0 ? 0x90 : 0x80,
                                                high = lead == 0xF4 ? 0x8F : 0xBF;
        else return false;
        if (text.size() - i < length) return false;
        for (size_t k = 1; k < length; ++k) {
            const unsigned b = byte(i + k);
            if (b < (k == 1 ? low : 0x80) || b > (k == 1 ? high : 0xBF)) return false;
        }
        i += length;
    }
    return true;
}

// Well-formed UTF-16: every high surrogate followed by a low one, no other low one.
template <typename Unit>
bool isWellFormedUtf16(std::basic_string_view<Unit> units) {
    for (size_t i = 0; i < units.size(); ++i) {
        const auto unit = static_cast<unsigned long>(units[i]);
        if (unit >= 0xD800 && unit <= 0xDBFF) {
            const auto next = i + 1 < units.size() ? static_cast<unsigned long>(units[i + 1]) : 0UL;
            if (next < 0xDC00 || next > 0xDFFF) return false;
            ++i;
        } else if (unit >= 0xDC00 && unit <= 0xDFFF) {
            return false;
        }
    }
    return true;
}

}  // namespace reference

// The number and boolean parsers on any text (no crash, no undefined
// behaviour), and the formatters read back by the parsers.
#include "FuzzCheck.h"
#include "StringUtils/Case.h"
#include "StringUtils/NumberFormatting.h"
#include "StringUtils/NumberParsing.h"

#include <cstdint>
#include <cstring>

using fuzzcheck::require;
using namespace StringUtils;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = fuzzcheck::text(data, size);
    double d = 0;
    long long ll = 0;
    long l = 0;
    int i = 0;
    unsigned long long ull = 0;
    unsigned short u16 = 0;
    unsigned char u8 = 0;
    toDouble(text, d);
    const bool isLongLong = toLongLongInteger(text, ll);
    toLongInteger(text, l);
    if (toInteger(text, i)) {
        require(isLongLong && ll == i, "an int is a long long of the same value");
    }
    toMsTime(text, l);
    toUnsignedLongLong(text, ull, 0);
    toUnsignedLongLong(text, ull, 16);
    toInteger16(text, u16);
    toInteger8(text, u8);
    stringViewToInteger(text, i);
    hexStringViewToInteger(text, i);
    require(toBool(text) == (text == "1" || toLower(text) == "true"), "only 1 and true are true");

    if (size >= sizeof(std::uint64_t)) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, data, sizeof bits);
        const auto value = static_cast<int>(bits);
        int parsed = 0;
        require(toInteger(toQuillString(value), parsed) && parsed == value, "an int reads back");
        unsigned long long parsedUnsigned = 0;
        require(
            toUnsignedLongLong(uint64ToQuillString(bits), parsedUnsigned) && parsedUnsigned == bits,
            "an unsigned 64-bit value reads back");
        float f = 0;
        std::memcpy(&f, data, sizeof f);
        floatToQuillString(f);
    }
    return 0;
}

// Number parsing and formatting, case mapping and trimming against Abseil.
#include <absl/strings/ascii.h>
#include <absl/strings/numbers.h>
#include <absl/strings/str_cat.h>

#include <memory>
#include <string>
#include <vector>

#include "PeerInputs.h"
#include "StringUtils/Case.h"
#include "StringUtils/NumberFormatting.h"
#include "StringUtils/NumberParsing.h"
#include "StringUtils/Trim.h"

namespace {

using PeerInputs::registerPair;

const std::vector<std::string> kIntegers = {"0", "42", "-17", "2147483647", "99", "123456"};
const std::vector<std::string> kLongs = {"0", "42", "-17", "9223372036854775807", "99",
                                         "1234567890123"};
const std::vector<std::string> kUnsigned = {"0", "42", "17", "18446744073709551615", "99",
                                            "1234567890123"};
const std::vector<std::string> kDoubles = {"0.5", "-3.25e10", "42", "1e-7", "6.02214076e23",
                                           "3.14159265358979"};

// Parses every text with parse, summing what it yields.
template <typename T, typename Parse>
auto parseEach(const std::vector<std::string>& texts, Parse parse) {
    return [&texts, parse] {
        T sum{};
        for (const std::string& text : texts) {
            T value{};
            sum += parse(text, value) ? value : T{};
        }
        return sum;
    };
}

void registerParsing() {
    registerPair(
        "toInteger (valid)", 0,
        parseEach<int>(kIntegers, [](const std::string& t, int& v) { return StringUtils::toInteger(t, v); }),
        parseEach<int>(kIntegers, [](const std::string& t, int& v) { return absl::SimpleAtoi(t, &v); }));
    registerPair("toLongLongInteger (valid)", 0,
                 parseEach<long long>(kLongs,
                                      [](const std::string& t, long long& v) {
                                          return StringUtils::toLongLongInteger(t, v);
                                      }),
                 parseEach<long long>(kLongs, [](const std::string& t, long long& v) {
                     return absl::SimpleAtoi(t, &v);
                 }));
    registerPair("toUnsignedLongLong (valid)", 0,
                 parseEach<unsigned long long>(kUnsigned,
                                               [](const std::string& t, unsigned long long& v) {
                                                   return StringUtils::toUnsignedLongLong(t, v, 10);
                                               }),
                 parseEach<unsigned long long>(kUnsigned,
                                               [](const std::string& t, unsigned long long& v) {
                                                   return absl::SimpleAtoi(t, &v);
                                               }));
    registerPair(
        "toDouble", 0,
        parseEach<double>(kDoubles,
                          [](const std::string& t, double& v) { return StringUtils::toDouble(t, v); }),
        parseEach<double>(kDoubles,
                          [](const std::string& t, double& v) { return absl::SimpleAtod(t, &v); }));
}

void registerFormatting() {
    static int small = 0;
    static unsigned long long big = 0;
    registerPair(
        "toQuillString(int) vs StrCat", 0,
        [] { return StringUtils::toQuillString(-123456 + (small++ & 0xFF)); },
        [] { return absl::StrCat(-123456 + (small++ & 0xFF)); });
    registerPair(
        "uint64ToQuillString vs StrCat", 0,
        [] { return StringUtils::uint64ToQuillString(18446744073709551ULL + (big++ & 0xFF)); },
        [] { return absl::StrCat(18446744073709551ULL + (big++ & 0xFF)); });
}

void registerCaseAndTrim() {
    for (const auto& [sizeName, size] : PeerInputs::kSizes) {
        const std::string suffix = std::string(" ") + sizeName;
        auto text = std::make_shared<const std::string>(PeerInputs::words(size));
        registerPair(
            "toLower" + suffix, size, [text] { return StringUtils::toLower(*text); },
            [text] { return absl::AsciiStrToLower(*text); });
        registerPair(
            "toUpper" + suffix, size, [text] { return StringUtils::toUpper(*text); },
            [text] { return absl::AsciiStrToUpper(*text); });
    }
    for (const size_t size : {size_t{32}, size_t{1} << 10, size_t{1} << 20}) {
        auto padded = std::make_shared<const std::string>(
            " \t " + PeerInputs::words(size - 6) + " \r\n");
        registerPair(
            "trim " + std::to_string(size) + "B", size, [padded] { return StringUtils::trim(*padded); },
            [padded] { return std::string(absl::StripAsciiWhitespace(*padded)); });
    }
}

const bool registered = [] {
    registerParsing();
    registerFormatting();
    registerCaseAndTrim();
    return true;
}();

}  // namespace

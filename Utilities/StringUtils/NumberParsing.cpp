#include "StringUtils/NumberParsing.h"

#include <charconv>
#include <stdexcept>

#include "StringUtils/AsciiClass.h"

namespace StringUtils {

namespace {

// Whether the parser zeroes its out-parameter before anything else, and what an
// empty text gives.
enum class Rule { zeroFirstEmptyFails, keepValueEmptyIsZero };

// Reads text with convert(text, &position) under rule: false for empty text (or
// true with 0), false with value as the rule left it when convert throws, else the
// number stored and true only when it consumed the whole text.
template <typename T, typename Convert>
bool parseWhole(const std::string& text, T& value, Rule rule, Convert convert) {
    if (rule == Rule::zeroFirstEmptyFails) {
        value = T{};
    }
    if (text.empty()) {
        if (rule == Rule::keepValueEmptyIsZero) {
            value = T{};
            return true;
        }
        return false;
    }
    size_t position = 0;
    try {
        value = static_cast<T>(convert(text, &position));
    } catch (const std::invalid_argument&) {
        return false;
    } catch (const std::out_of_range&) {
        return false;
    }
    return position == text.size();
}

// Reads an int in base with from_chars, ignoring what follows the number, and
// accepts it only when every character is a minus sign or one isAllowed lets
// through. The characters from_chars consumed are such characters already, so
// only the rest of the text is looked at.
template <typename IsAllowed>
bool viewToInteger(const std::string_view& text, int& value, int base, IsAllowed isAllowed) {
    const char* const last = text.data() + text.size();
    int parsed = 0;
    const auto [rest, error] = std::from_chars(text.data(), last, parsed, base);
    if (error != std::errc{}) {
        return false;
    }
    for (const char* p = rest; p != last; ++p) {
        if (*p != '-' && !isAllowed(*p)) {
            return false;
        }
    }
    value = parsed;
    return true;
}

// A base std::stoull can read: 0 (detected from the text) or 2 to 36. With any
// other one strtoull fails without telling where it stopped.
constexpr bool isUsableBase(int base) { return base == 0 || (base >= 2 && base <= 36); }

// toInteger, then the upper bound limit; the stored value keeps the low bits.
template <typename T>
bool toBoundedInteger(const std::string& text, T& value, int limit) {
    int parsed = 0;
    if (!toInteger(text, parsed) || parsed >= limit) {
        return false;
    }
    value = static_cast<T>(parsed);
    return true;
}

}  // namespace

bool toDouble(const std::string& text, double& value) {
    return parseWhole(
        text, value, Rule::zeroFirstEmptyFails,
        [](const std::string& s, size_t* position) { return std::stod(s, position); });
}

bool toLongLongInteger(const std::string& text, long long& value) {
    return parseWhole(text, value, Rule::zeroFirstEmptyFails,
                      [](const std::string& s, size_t* p) { return std::stoll(s, p, 10); });
}

bool toLongInteger(const std::string& text, long& value) {
    return parseWhole(text, value, Rule::zeroFirstEmptyFails,
                      [](const std::string& s, size_t* p) { return std::stol(s, p, 10); });
}

bool toInteger(const std::string& text, int& value) {
    return parseWhole(text, value, Rule::zeroFirstEmptyFails,
                      [](const std::string& s, size_t* p) { return std::stoi(s, p, 10); });
}

bool toMsTime(const std::string& text, long& value) {
    return parseWhole(text, value, Rule::keepValueEmptyIsZero,
                      [](const std::string& s, size_t* p) { return std::stoll(s, p, 10); });
}

bool toUnsignedLongLong(const std::string& text, unsigned long long& value, int base) {
    if (!isUsableBase(base)) {
        return false;
    }
    return parseWhole(text, value, Rule::keepValueEmptyIsZero,
                      [base](const std::string& s, size_t* p) { return std::stoull(s, p, base); });
}

bool toInteger16(const std::string& text, unsigned short& value) {
    return toBoundedInteger(text, value, 65536);
}

bool toInteger8(const std::string& text, unsigned char& value) {
    return toBoundedInteger(text, value, 256);
}

bool stringViewToInteger(const std::string_view& text, int& value) {
    return viewToInteger(text, value, 10, detail::isAsciiDigit);
}

bool hexStringViewToInteger(const std::string_view& text, int& value) {
    return viewToInteger(text, value, 16, detail::isHexDigit);
}

bool toBool(const std::string& text) {
    if (text.size() == 1) {
        return text[0] == '1';
    }
    if (text.size() != 4) {
        return false;
    }
    const char* const word = "true";
    for (size_t i = 0; i < 4; ++i) {
        if (detail::toAsciiLower(text[i]) != word[i]) {
            return false;
        }
    }
    return true;
}

bool toBool(const std::string& text, bool defaultValue) {
    return text.empty() ? defaultValue : toBool(text);
}

}  // namespace StringUtils

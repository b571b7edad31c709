// Splitting and joining: the fields of a split joined with the delimiter give
// the text back, string-delimiter splits agree with a split over
// std::string::find, wide splits with narrow ones, and fixed-length pieces put
// together give the text back. The
// first byte is the delimiter and chunk size; the next bytes up to the first
// zero byte are a string delimiter; the rest is the text.
#include "FuzzCheck.h"
#include "Reference.h"
#include "StringUtils/Split.h"
#include "Widen.h"

#include <algorithm>
#include <cstdint>

using fuzzcheck::require;
using namespace StringUtils;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const char delimiter = static_cast<char>(data[0]);
    const std::string rest = fuzzcheck::text(data + 1, size - 1);
    const auto end = std::min(rest.find('\0'), std::min<std::size_t>(rest.size(), 4));
    const std::string delimiters = rest.substr(0, end);
    const std::string text = rest.substr(std::min(end + 1, rest.size()));

    const std::string single(1, delimiter);
    require(join(split(text, delimiter, false), single) == text, "char fields join back");
    require(join(split(text, delimiters, false), delimiters) == text, "string fields join back");
    if (!delimiters.empty() && !text.empty()) {
        const auto fields = reference::splitAt(text, delimiters);
        require(split(text, delimiters, false) == fields &&
                    stringViewsToStrings(splitToViews(std::string_view(text), delimiters, false)) ==
                        fields,
                "string fields are the fields between std::string::find matches");
        require(split(widen(text), widen(delimiters), false) == widen(fields),
                "wide string fields are the narrow ones");
        size_t expected = 0;
        for (size_t at = 0; at < text.size() && (at = text.find(delimiters, at)) != text.npos;) {
            ++expected;
            at += delimiters.size() + 1;
        }
        require(SplitUtils::countWords(text, delimiters) == expected &&
                    SplitUtils::countWords(widen(text), widen(delimiters)) == expected,
                "countWords counts matches not right after another");
    }
    require(split(widen(text), static_cast<wchar_t>(delimiter), false) ==
                widen(split(text, delimiter, false)),
            "wide character fields are the narrow ones");
    require(join(widen(split(text, delimiter, false)), std::wstring(1, static_cast<wchar_t>(delimiter))) ==
                widen(text),
            "wide fields join back");
    const auto views = splitToViews(text, delimiter, true);
    require(std::none_of(views.begin(), views.end(), [](std::string_view v) { return v.empty(); }),
            "skipEmpty leaves no empty field");
    const auto stringViews = splitToViews(text, delimiters, true);
    require(std::none_of(stringViews.begin(), stringViews.end(),
                         [](std::string_view v) { return v.empty(); }),
            "skipEmpty leaves no empty field");

    const int chunk = static_cast<unsigned char>(delimiter) % 17;
    if (chunk > 0) {
        std::string whole;
        for (const std::string& piece : split(text, chunk, false)) {
            whole += piece;
        }
        require(whole == text, "chunks put together give the text");
    }
    split(text, chunk - 1, true);
    return 0;
}

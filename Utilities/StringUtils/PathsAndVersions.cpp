#include "StringUtils/PathsAndVersions.h"

#include <algorithm>

#include "StringUtils/NumberParsing.h"
#include "StringUtils/Split.h"

namespace StringUtils {

namespace {

template <typename CharT>
std::basic_string<CharT> substituteTextPrefix(const std::basic_string<CharT>& text,
                                              const std::basic_string<CharT>& prefix,
                                              const std::basic_string<CharT>& replacement) {
    if (text.size() < prefix.size() || text.compare(0, prefix.size(), prefix) != 0) {
        return text;
    }
    std::basic_string<CharT> result;
    result.reserve(replacement.size() + text.size() - prefix.size());
    result.append(replacement).append(text, prefix.size());
    return result;
}

}  // namespace

std::string removeFileExtension(const std::string& path) { return path.substr(0, path.rfind('.')); }

std::string replaceFileExtension(const std::string& path, const std::string& extension) {
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos) {
        return path;
    }
    return path.substr(0, dot + 1) + extension;
}

bool greaterVersion(const std::string& version, const std::string& other) {
    const auto fields = split(version, '.', false);
    const auto otherFields = split(other, '.', false);
    for (size_t i = 0; i < fields.size(); ++i) {
        if (i >= otherFields.size()) {
            return true;
        }
        int value = 0;
        int otherValue = 0;
        if (!toInteger(fields[i], value) || !toInteger(otherFields[i], otherValue)) {
            return false;
        }
        if (value != otherValue) {
            return value > otherValue;
        }
    }
    return false;
}

std::vector<std::pair<size_t, size_t>> getPairedDelimitersPositions(const std::string& text,
                                                                    char open, char close,
                                                                    bool sorted) {
    std::vector<size_t> openings;
    std::vector<std::pair<size_t, size_t>> pairs;
    bool lastWasOpening = false;
    for (size_t position = 0; position < text.size(); ++position) {
        const char c = text[position];
        if (c == open && (open != close || !lastWasOpening)) {
            openings.push_back(position);
            lastWasOpening = true;
        } else if (c == close) {
            if (openings.empty()) {
                return {};
            }
            pairs.emplace_back(openings.back(), position);
            openings.pop_back();
            lastWasOpening = false;
        }
    }
    if (!openings.empty()) {
        return {};
    }
    if (sorted) {
        std::sort(pairs.begin(), pairs.end(),
                  [](const auto& a, const auto& b) { return a.first < b.first; });
    }
    return pairs;
}

std::string substitutePrefix(const std::string& text, const std::string& prefix,
                             const std::string& replacement) {
    return substituteTextPrefix(text, prefix, replacement);
}

std::wstring substitutePrefix(const std::wstring& text, const std::wstring& prefix,
                              const std::wstring& replacement) {
    return substituteTextPrefix(text, prefix, replacement);
}

}  // namespace StringUtils

// File-name extensions, dotted version comparison, paired delimiters and prefix
// substitution. An extension is whatever follows the last '.' of the whole text;
// path separators are not considered.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace StringUtils {

// The text before its last dot, or the whole text without a dot. Never fails.
std::string removeFileExtension(const std::string& path);

// The text up to and including its last dot, followed by extension (given without
// its dot); the text unchanged without a dot. Never fails.
std::string replaceFileExtension(const std::string& path, const std::string& extension);

// True when version is greater than other, comparing "."-separated fields as
// integers from the left; when other runs out of fields first, version is
// greater. False when a compared field does not parse as an int.
bool greaterVersion(const std::string& version, const std::string& other);

// The (open, close) byte positions of every matched pair, in closing order (inner
// pairs first), or sorted by the opening position. When open equals close the
// delimiters alternate without nesting. Empty list when they do not balance.
std::vector<std::pair<size_t, size_t>> getPairedDelimitersPositions(const std::string& text,
                                                                    char open, char close,
                                                                    bool sorted);

// replacement followed by the rest of text when text begins with prefix (an empty
// prefix always does); text unchanged otherwise. Never fails.
std::string substitutePrefix(const std::string& text, const std::string& prefix,
                             const std::string& replacement);
std::wstring substitutePrefix(const std::wstring& text, const std::wstring& prefix,
                              const std::wstring& replacement);

}  // namespace StringUtils

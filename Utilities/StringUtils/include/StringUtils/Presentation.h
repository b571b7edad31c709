// Preparing text for display: wrapping into lines, binding the first and last
// words against widows and orphans, counting words and UTF-8 characters, and
// cutting UTF-8 text to a byte budget. Pure functions, safe from any thread.
// Malformed UTF-8 is never rejected, only measured or cut as described.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace StringUtils {

// The lines of text wrapped at width bytes. Words are the pieces between single
// spaces (empty pieces included, so runs of spaces inside a line stay); a word
// that does not fit on an empty line is cut to its first width UTF-8 characters
// and the rest is dropped. Empty list for width 0; one empty line for an empty
// text. Never fails.
std::vector<std::string> wordWrapString(const std::string& text, unsigned int width);

// text re-joined from its space-separated words with the first joinedWords words
// and the last joinedWords words each bound by "&nbsp;" (useHtmlEntity) or a
// UTF-8 no-break space, and single spaces elsewhere. text unchanged when
// joinedWords < 2, text is empty or it has fewer than 2 * joinedWords words.
// Never fails.
std::string controlWidowOrphanWords(const std::string& text, bool useHtmlEntity,
                                    std::size_t joinedWords);

// The number of spaces in text plus one; 0 for an empty text. Never fails.
std::size_t wordCount(const std::string& text);

// The characters of text up to its first zero byte, decoded leniently: first
// those with code points 0 to 255, second those from 256 to U+10FFFF (larger
// values count nowhere). (0, 0) for an empty text. Never fails.
std::pair<std::size_t, std::size_t> getUTF8toISO8859_1CharacterCounts(const std::string& text);

// The number of bytes of text that are not UTF-8 continuation bytes (0x80 to
// 0xBF), embedded zero bytes included. Never fails.
std::size_t getUTF8CharacterLength(const std::string& text);

// The first byte of text and every continuation byte directly after it; empty
// for an empty text. Never fails.
std::string firstUtf8CodePoint(const std::string& text);

// The longest prefix of text of at most maxBytes bytes that does not end inside a
// UTF-8 character; empty when maxBytes is 0 or when only continuation bytes
// precede the cut. Never fails.
std::string truncateBytes(const std::string& text, std::size_t maxBytes);

}  // namespace StringUtils

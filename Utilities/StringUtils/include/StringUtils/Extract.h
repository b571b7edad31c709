// Parts of a text by UTF-8 character positions or by markers, and bounded copies
// into NUL-terminated character buffers.
#pragma once

#include <string>

namespace StringUtils {

// count UTF-8 characters from character start (count == the largest unsigned
// long means to the end). Character lengths come from lead bytes only. Empty
// string when count is 0, start is past the last character, or the text holds a
// byte that cannot lead a character (a stray continuation byte, 0xF8-0xFF)
// anywhere.
std::string substr(const std::string& text, unsigned int start, unsigned long count);

// The text after the first startMarker (from 0 when it is empty) up to the next
// endMarker, or to the end when endMarker does not follow. Empty string when
// startMarker does not occur or endMarker is empty. Both markers are searched in
// time linear in the lengths of text and marker.
std::string substr(const std::string& text, const std::string& startMarker,
                   const std::string& endMarker);

// Copies source with its terminator into destination (size bytes, the rest
// NUL-filled). False, writing nothing, when either pointer is null, size is 0 or
// source does not fit with its terminator.
bool copy(char* destination, unsigned long size, const char* source);

// Copies at most size - 1 bytes of source and a terminator; returns the number of
// bytes copied. 0, writing nothing, when either pointer is null or size is 0.
unsigned long copyn(char* destination, unsigned long size, const char* source);

}  // namespace StringUtils

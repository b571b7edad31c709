#include "StringUtils/Extract.h"

#include <cstring>
#include <limits>

#include "StringUtils/TextSearch.h"

namespace StringUtils {

namespace {

// Length of the UTF-8 character that lead starts, or 0 when lead cannot start one.
size_t leadLength(unsigned char lead) {
    if (lead < 0x80) {
        return 1;
    }
    if ((lead & 0xE0) == 0xC0) {
        return 2;
    }
    if ((lead & 0xF0) == 0xE0) {
        return 3;
    }
    if ((lead & 0xF8) == 0xF0) {
        return 4;
    }
    return 0;
}

}  // namespace

std::string substr(const std::string& text, unsigned int start, unsigned long count) {
    if (count == 0 || text.empty()) {
        return {};
    }
    const bool toEnd = count == std::numeric_limits<unsigned long>::max();
    size_t startOffset = std::string::npos;
    size_t endOffset = text.size();
    size_t index = 0;
    // The whole text is walked, so a bad lead byte after the range still counts.
    for (size_t offset = 0; offset < text.size(); ++index) {
        if (index == start) {
            startOffset = offset;
        }
        if (!toEnd && startOffset != std::string::npos && index - start == count &&
            endOffset == text.size()) {
            endOffset = offset;
        }
        const size_t length = leadLength(static_cast<unsigned char>(text[offset]));
        if (length == 0) {
            return {};
        }
        offset += length;
    }
    if (startOffset == std::string::npos) {
        return {};
    }
    return text.substr(startOffset, endOffset - startOffset);
}

std::string substr(const std::string& text, const std::string& startMarker,
                   const std::string& endMarker) {
    size_t begin = 0;
    if (!startMarker.empty()) {
        const size_t found = detail::findPattern<char>(text, startMarker);
        if (found == std::string::npos) {
            return {};
        }
        begin = found + startMarker.size();
    }
    if (endMarker.empty()) {
        return {};
    }
    const size_t end = detail::findPattern<char>(text, endMarker, begin);
    return text.substr(begin, end == std::string::npos ? std::string::npos : end - begin);
}

bool copy(char* destination, unsigned long size, const char* source) {
    if (destination == nullptr || source == nullptr || size == 0) {
        return false;
    }
    const size_t length = strnlen(source, size);
    if (length >= size) {
        return false;
    }
    std::strncpy(destination, source, size);
    destination[length] = '\0';
    return true;
}

unsigned long copyn(char* destination, unsigned long size, const char* source) {
    if (destination == nullptr || source == nullptr || size == 0) {
        return 0;
    }
    const size_t length = strnlen(source, size - 1);
    std::strncpy(destination, source, length);
    destination[length] = '\0';
    return length;
}

}  // namespace StringUtils

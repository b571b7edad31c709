#include "Strand/SourceLocation.h"

#include <charconv>
#include <limits>
#include <ostream>
#include <string_view>

#include "StringUtils/HexAndFileName.h"

namespace quill::source {

namespace {

constexpr std::string_view kHintLabel = " externalInputHint=";

// The text after the last '/' or '\\' of file; empty for a null file.
std::string_view fileName(const char* file) {
    if (file == nullptr) {
        return {};
    }
    return StringUtils::lastPathComponent(file);
}

std::string_view functionName(const char* function) {
    return function == nullptr ? std::string_view() : std::string_view(function);
}

}  // namespace

location location::current(const char* file, int line, const char* function) noexcept {
    location record;
    record.file = file;
    record.function = function;
    record.line = static_cast<std::uint32_t>(line);
    record.externalInputHint = external_input::hint::getExternalInputHint();
    // Read in place rather than through getStore(): copying a weak reference
    // costs two atomic operations even when there is nothing to carry. An
    // expired reference is only carried next to a hint.
    const auto& store = external_input::context_store::threadContextStore;
    if (record.externalInputHint || !store.expired()) {
        record.contextStore = store;
    }
    return record;
}

std::string location::to_string() const {
    // Builds the text directly; the stream operator writes the same on a
    // default-formatted stream, at several times the cost.
    const std::string_view fileText = fileName(file);
    const std::string_view functionText = functionName(function);
    char digits[std::numeric_limits<std::uint32_t>::digits10 + 1];
    const auto lineEnd = std::to_chars(digits, digits + sizeof digits, line).ptr;
    const external_input::hint* named =
        externalInputHint && !externalInputHint->name.empty() ? externalInputHint.get() : nullptr;

    std::string text;
    text.reserve(fileText.size() + functionText.size() + 2 + sizeof digits +
                 (named ? kHintLabel.size() + named->name.size() + 1 + named->id.size() : 0));
    text.append(fileText)
        .append(1, ':')
        .append(digits, lineEnd)
        .append(1, ':')
        .append(functionText);
    if (named != nullptr) {
        text.append(kHintLabel).append(named->name).append(1, ' ').append(named->id);
    }
    return text;
}

std::ostream& operator<<(std::ostream& os, const location& loc) {
    os << fileName(loc.file) << ':' << loc.line << ':' << functionName(loc.function);
    if (loc.externalInputHint && !loc.externalInputHint->getHintName().empty()) {
        os << kHintLabel << *loc.externalInputHint;
    }
    return os;
}

}  // namespace quill::source

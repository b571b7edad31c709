// UTF-16 <-> UTF-8 transcoding of mixed text against ICU's u_strToUTF8 and
// u_strFromUTF8, each writing into a string sized for the worst case and then
// cut to the length written (ICU converts into a caller's buffer).
#include <unicode/ustring.h>

#include <memory>
#include <string>

#include "PeerInputs.h"
#include "StringUtils/SharedConverters.h"

namespace {

using PeerInputs::registerPair;

std::string icuToUtf8(const std::u16string& text) {
    std::string result(3 * text.size(), '\0');
    int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8(result.data(), static_cast<int32_t>(result.size()), &length, text.data(),
                static_cast<int32_t>(text.size()), &status);
    result.resize(U_SUCCESS(status) ? static_cast<size_t>(length) : 0);
    return result;
}

std::u16string icuFromUtf8(const std::string& text) {
    std::u16string result(text.size(), u'\0');
    int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(result.data(), static_cast<int32_t>(result.size()), &length, text.data(),
                  static_cast<int32_t>(text.size()), &status);
    result.resize(U_SUCCESS(status) ? static_cast<size_t>(length) : 0);
    return result;
}

const bool registered = [] {
    for (const auto& [sizeName, size] : PeerInputs::kSizes) {
        const std::string suffix = std::string(", mixed ") + sizeName;
        auto utf8 = std::make_shared<const std::string>(PeerInputs::mixedUtf8(size));
        auto utf16 = std::make_shared<const std::u16string>(icuFromUtf8(*utf8));
        registerPair(
            "UTF-16 -> UTF-8" + suffix, utf8->size(),
            [utf16] { return StringUtils::utf16Converter().to_bytes(*utf16); },
            [utf16] { return icuToUtf8(*utf16); });
        registerPair(
            "UTF-8 -> UTF-16" + suffix, utf8->size(),
            [utf8] { return StringUtils::utf16Converter().from_bytes(*utf8); },
            [utf8] { return icuFromUtf8(*utf8); });
    }
    return true;
}();

}  // namespace

// Used from static initialisers, linked ahead of the library so they run before any of its own.
#include <gtest/gtest.h>

#include "StringUtils/Encoding.h"
#include "StringUtils/NumberFormatting.h"
#include "StringUtils/Sanitizing.h"

namespace {

const std::wstring gWide = StringUtils::toWString("x\xF0\x9F\x98\x80");
const std::string gNarrow = StringUtils::toString(gWide);
const std::string gFromUtf16 = StringUtils::fromUtf16String(u"\u00e9");
const std::string gOthers = StringUtils::trueValue() + StringUtils::falseValue() +
                            StringUtils::getHtmlErrorTemplate();

}  // namespace

TEST(StaticInit, ConversionsWorkBeforeTheLibraryIsInitialised) {
    EXPECT_EQ(gWide, (std::wstring{L'x', 0xD83D, 0xDE00}));
    EXPECT_EQ(gNarrow, "x\xF0\x9F\x98\x80");
    EXPECT_EQ(gFromUtf16, "\xC3\xA9");
    EXPECT_EQ(gOthers, "TrueFalse<html><title>%1</title><p>%2</p></html>");
}

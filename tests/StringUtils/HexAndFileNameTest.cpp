#include "StringUtils/HexAndFileName.h"

#include <gtest/gtest.h>

#include <climits>

using namespace StringUtils;

TEST(HexAndFileName, ToHexStringAndFilenameFromPath) {
    EXPECT_EQ(toHexString(0) + toHexString(255) + toHexString(INT_MAX) + toHexString(-16),
              "0x00xff0x7fffffff0xfffffff0");
    EXPECT_EQ(toHexString(-1) + toHexString(INT_MIN), "0xffffffff0x80000000");
    // clang-format off
    const std::pair<std::string, std::string> cases[] = {
        {"/usr/src/lib/main.cpp", "main.cpp"}, {"dir\\sub\\file.cpp", "file.cpp"}, {"a\\b/c", "c"},
        {"a/b\\c", "c"}, {"main.cpp", "main.cpp"}, {"", ""}, {"logs/", ""}, {"logs\\", ""},
        {"d:file.cpp", "d:file.cpp"}, {std::string("a\0/b", 4), "b"}};
    // clang-format on
    for (const auto& [path, name] : cases) EXPECT_EQ(filenameFromPath(path), name);
}

// Test helper: the narrow tables drive the wide overloads too, widening their ASCII texts.
#pragma once

#include <string>
#include <string_view>
#include <vector>

inline std::wstring widen(std::string_view text) { return {text.begin(), text.end()}; }

inline std::vector<std::wstring> widen(const std::vector<std::string>& texts) {
    std::vector<std::wstring> wide;
    for (const auto& text : texts) wide.push_back(widen(text));
    return wide;
}

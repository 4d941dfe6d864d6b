#pragma once

#include "foundation/text/String.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qorl {

inline String inWidth(std::string_view text, bool isWide) {
    String string(text);
    if (isWide)
        string.toWide();
    return string;
}

/// The texts of a test in each pair of widths.
inline std::vector<std::pair<String, String>> inAllWidths(const char* a, const char* b) {
    std::vector<std::pair<String, String>> pairs;
    for (int widths = 0; widths < 4; ++widths)
        pairs.emplace_back(inWidth(a, widths & 1), inWidth(b, widths & 2));
    return pairs;
}

inline std::string shown(const ConstString& text) {
    return text.toUtf8() + (text.isWide() ? " wide" : " narrow");
}

} // namespace qorl

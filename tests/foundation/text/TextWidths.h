#pragma once

#include "foundation/text/String.h"

#include <string>
#include <utility>
#include <vector>

namespace qorl {

/// The texts of a test in each pair of widths.
inline std::vector<std::pair<String, String>> inAllWidths(const char* a, const char* b) {
    std::vector<std::pair<String, String>> pairs;
    for (int widths = 0; widths < 4; ++widths) {
        auto& [first, second] = pairs.emplace_back(String(a), String(b));
        if (widths & 1)
            first.toWide();
        if (widths & 2)
            second.toWide();
    }
    return pairs;
}

inline std::string shown(const ConstString& text) {
    return text.toUtf8() + (text.isWide() ? " wide" : " narrow");
}

} // namespace qorl

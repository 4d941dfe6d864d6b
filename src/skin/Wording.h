#pragma once

#include "skin/SkinType.h"

#include <string>
#include <string_view>

/// How diagnostics write down parts of documents.
namespace qorl::Wording {

/// Texts of documents are shortened to this many bytes.
inline constexpr size_t shownBytes = 80;

inline std::string quoted(std::string_view text) {
    return "'" + std::string(text.substr(0, shownBytes)) + "'";
}

inline std::string tag(std::string_view name) {
    return "<" + std::string(name.substr(0, shownBytes)) + ">";
}

inline std::string tag(SkinType type) {
    return tag(nameOf(type));
}

} // namespace qorl::Wording

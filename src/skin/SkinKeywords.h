#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace qorl {

/// A word of the skin vocabulary and what reaches the object for it.
struct Keyword {
    std::string_view word;
    int64_t value;
};

/// The words that an attribute understands. Of `choice` the first one in table order counts, of the others
/// all.
struct KeywordSet {
    std::span<const Keyword> choice = {};
    std::span<const Keyword> flags = {};
    std::span<const Keyword> moreFlags = {};
    std::span<const Keyword> furtherFlags = {};
};

struct KeywordValue {
    int64_t value = 0;
    bool hasUnknown = false; ///< Some word of the text is in none of the tables.
};

/// Reads an attribute of keywords. Words are runs of letters, digits and `-`; anything else divides them.
KeywordValue parseKeywords(const KeywordSet& set, std::string_view text);

/// Whether `word` is in one of the tables of `set`.
bool hasKeyword(const KeywordSet& set, std::string_view word);

/// The next word of `text` from `position` on, which moves behind it; empty at the end.
std::string_view nextKeyword(std::string_view text, size_t& position);

} // namespace qorl

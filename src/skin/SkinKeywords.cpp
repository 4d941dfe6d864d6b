#include "skin/SkinKeywords.h"

#include <algorithm>

namespace qorl {

namespace {

constexpr bool isWordCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
}

const Keyword* findKeyword(std::span<const Keyword> table, std::string_view word) {
    const auto found = std::ranges::find(table, word, &Keyword::word);
    return found == table.end() ? nullptr : &*found;
}

} // namespace

std::string_view nextKeyword(std::string_view text, size_t& position) {
    while (position < text.size() && !isWordCharacter(text[position]))
        ++position;
    const size_t start = position;
    while (position < text.size() && isWordCharacter(text[position]))
        ++position;
    return text.substr(start, position - start);
}

KeywordValue parseKeywords(const KeywordSet& set, std::string_view text) {
    KeywordValue result;
    const Keyword* choice = nullptr;
    size_t position = 0;
    for (auto word = nextKeyword(text, position); !word.empty(); word = nextKeyword(text, position)) {
        bool known = false;
        if (const Keyword* found = findKeyword(set.choice, word)) {
            if (!choice || found < choice)
                choice = found;
            known = true;
        }
        for (const auto& table : {set.flags, set.moreFlags, set.furtherFlags})
            for (const Keyword& keyword : table)
                if (keyword.word == word) {
                    result.value |= keyword.value;
                    known = true;
                }
        result.hasUnknown |= !known;
    }
    if (choice)
        result.value |= choice->value;
    return result;
}

bool hasKeyword(const KeywordSet& set, std::string_view word) {
    return findKeyword(set.choice, word) || findKeyword(set.flags, word) ||
           findKeyword(set.moreFlags, word) || findKeyword(set.furtherFlags, word);
}

} // namespace qorl

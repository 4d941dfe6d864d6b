#include "foundation/text/CmTokens.h"

#include "foundation/Cast.h"

#include <algorithm>
#include <string_view>

namespace qorl {

QORL_REGISTER(CmTokens, "CmTokens", CmObject, 0)

namespace {

bool isIn(const char16_t* set, char16_t character) {
    while (*set && *set != character)
        ++set;
    return *set != 0;
}

} // namespace

const CmString& CmTokens::next(const char16_t* delimiters) {
    // Whoever asked the source for 8-bit text has moved its characters.
    const char16_t* text = source_.text16();
    const std::u16string_view characters(text, source_.string().isWide() ? source_.string().size() : 0);
    const size_t cursor = std::min(static_cast<size_t>(position_), characters.size());
    if (cursor == characters.size()) {
        token_.string().clear();
        lastDelimiter_ = 0;
        return token_;
    }
    const char16_t* set = delimiters ? delimiters : u"";
    size_t start = cursor;
    while (start < characters.size() && isIn(set, characters[start]))
        ++start;
    size_t end = start;
    while (end < characters.size() && !isIn(set, characters[end]))
        ++end;
    if (!token_.string().assign16(characters.data() + start, static_cast<int32_t>(end - start))) {
        token_.string().clear();
        return token_;
    }
    // Delimiters at the very end leave the last delimiter as it is.
    if (end != start)
        lastDelimiter_ = end < characters.size() ? characters[end] : u'\0';
    position_ = static_cast<int32_t>(end);
    return token_;
}

bool CmTokens::isEqual(const CmObject* other) const {
    const auto* tokens = cast<CmTokens>(other);
    return tokens ? source_.isEqual(&tokens->source_) : CmObject::isEqual(other);
}

int32_t CmTokens::compare(const CmObject* other) const {
    const auto* tokens = cast<CmTokens>(other);
    return tokens ? source_.compare(&tokens->source_) : CmObject::compare(other);
}

} // namespace qorl

#include "foundation/text/CmTokens.h"

#include "foundation/Cast.h"

namespace qorl {

QORL_REGISTER(CmTokens, "CmTokens", CmObject, 0)

namespace {

bool isIn(const char16_t* set, char16_t character) {
    while (*set && *set != character)
        ++set;
    return *set != 0;
}

} // namespace

CmTokens::CmTokens(const ConstString& source) : source_(source), cursor_(source_.text16()) {}

CmTokens::CmTokens(const CmTokens& other)
    : CmObject(other), source_(other.source_), cursor_(source_.text16() + other.position_),
      position_(other.position_), token_(other.token_), lastDelimiter_(other.lastDelimiter_) {}

CmTokens& CmTokens::operator=(const CmTokens& other) {
    source_ = other.source_;
    position_ = other.position_;
    cursor_ = source_.text16() + position_;
    token_ = other.token_;
    lastDelimiter_ = other.lastDelimiter_;
    return *this;
}

const CmString& CmTokens::next(const char16_t* delimiters) {
    if (*cursor_ == 0) {
        token_.string().clear();
        lastDelimiter_ = 0;
        return token_;
    }
    const char16_t* start = cursor_;
    while (*start && isIn(delimiters, *start))
        ++start;
    const char16_t* end = start;
    while (*end && !isIn(delimiters, *end))
        ++end;
    // Delimiters at the very end leave the last delimiter as it is.
    if (end != start)
        lastDelimiter_ = *end;
    token_.string().assign16(start, static_cast<int32_t>(end - start));
    position_ += static_cast<int32_t>(end - cursor_);
    cursor_ = end;
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

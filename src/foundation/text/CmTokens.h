#pragma once

#include "foundation/text/CmString.h"

namespace qorl {

/// Cuts a text into the pieces between delimiters, one `next` at a time.
class CmTokens : public CmObject {
    QORL_CLASS(CmTokens, CmObject)
    QORL_CLONE(CmTokens)
    QORL_RECORD(CmTokens)

public:
    CmTokens() = default;
    /// Copies `source`.
    explicit CmTokens(const ConstString& source) : source_(source) {}

    /// Goes to the next run of characters that are not in the terminated set `delimiters`; null is an empty
    /// set. The token, which is empty at the end of the text, and when memory ran out: the cursor then stays.
    const CmString& next(const char16_t* delimiters);
    const CmString& token() const { return token_; }
    const CmString& source() const { return source_; }
    /// Where the cursor stands in the 16-bit characters: on the delimiter behind the token.
    int32_t position() const { return position_; }
    /// The character that ended the token, 0 when the text did; a line feed before the first `next`.
    char16_t lastDelimiter() const { return lastDelimiter_; }

    /// As the source texts do.
    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;

private:
    CmString source_;
    int32_t position_ = 0;
    CmString token_;
    char16_t lastDelimiter_ = u'\n';
};

} // namespace qorl

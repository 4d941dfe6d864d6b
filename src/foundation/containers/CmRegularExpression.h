#pragma once

#include "foundation/CmObject.h"
#include "foundation/text/CmString.h"

#include <string_view>

namespace qorl {

/// A pattern with wildcards for names and the like; no regular expression, despite its name.
///
/// | In the pattern | Matches |
/// |---|---|
/// | `*` | any run of characters, also an empty one |
/// | `?` | one character, or none |
/// | `\` and a character | that character; at the end of the pattern the backslash itself |
/// | anything else | itself |
///
/// A pattern with two stars in a row, the first of them not behind a backslash, is no pattern: it matches
/// the text that it spells out. The whole text must match. Characters are UTF-16 units; without regard to
/// case they are compared in lower case.
class CmRegularExpression : public CmObject {
    QORL_CLASS(CmRegularExpression, CmObject)
    QORL_CLONE(CmRegularExpression)
    QORL_RECORD(CmRegularExpression)

public:
    enum class Case : uint8_t { ignored, sensitive };

    CmRegularExpression() = default;
    explicit CmRegularExpression(const ConstString& pattern, Case sensitivity = Case::sensitive)
        : pattern_(pattern), sensitivity_(sensitivity) {}

    const CmString& getPattern() const { return pattern_; }
    void setPattern(const ConstString& pattern) { pattern_.string() = pattern; }
    Case getCase() const { return sensitivity_; }
    void setCase(Case sensitivity) { sensitivity_ = sensitivity; }

    /// Whether `text` matches. The time grows at most with the product of both lengths, whatever the
    /// pattern. False when memory ran out, or the bytes of an 8-bit text are none.
    bool match(const ConstString& text) const;

    /// A string and one byte, 0 or 1.
    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;
    /// "Expression" and "CaseSensitive".
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;

private:
    CmString pattern_;
    Case sensitivity_ = Case::sensitive;
};

} // namespace qorl

#pragma once

#include "foundation/CmObject.h"
#include "foundation/text/TextExchange.h"

namespace qorl {

/// A text as an object: what containers, attributes and messages carry, and what other modules read and set.
///
/// Compared and hashed by contents, case counts. Stored under the attribute key "s". One that is made of a
/// text, or copied, throws `std::bad_alloc` when it finds no memory for it.
class CmString : public CmObject, public TextExchange {
    QORL_CLASS(CmString, CmObject)
    QORL_CLONE(CmString)
    QORL_RECORD(CmString)
    QORL_FACES(CmString, CmObject, IStringExchange, IStringSink)

public:
    CmString() = default;
    CmString(const ConstString& text) : TextExchange(text) {}
    CmString(String&& text) noexcept : TextExchange(std::move(text)) {}
    CmString(const char* text, int32_t length = ConstString::all) : TextExchange(ConstString(text, length)) {}
    CmString(const char16_t* text, int32_t length = ConstString::all)
        : TextExchange(ConstString(text, length)) {}

    operator const String&() const { return string_; }

    const char* text8() const { return string_.text8(); }
    const char16_t* text16() const { return string_.text16(); }
    int32_t length() const { return string_.size(); }
    bool isEmpty() const { return string_.isEmpty(); }

    /// By contents for any other `CmString`, by address otherwise.
    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    uint32_t hashCode(uint32_t size) const override;
    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;
};

} // namespace qorl

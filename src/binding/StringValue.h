#pragma once

#include "binding/Value.h"
#include "foundation/text/CmString.h"

namespace qorl::Binding {

/// A text. As a number it is 1 when it holds something, else 0.
class StringValue : public Value {
    QORL_CLASS_NAMED(StringValue, Value, "Binding::StringValue")
    QORL_CLONE(StringValue)
    QORL_RECORD(StringValue)

public:
    StringValue() = default;
    explicit StringValue(const ConstString& text);

    /// In a stream: the text. Reading it performs the update, and always signals.
    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;
    int32_t getValue() override;
    /// Takes the text of another `StringValue`; from any other value nothing happens.
    void assign(Value* other) override;
    void toString(String& text) override;

    virtual const CmString& getText() { return text_; }

    /// Stores the text, signals if it differs (case counts), and performs the update in any case.
    void setString(const ConstString& text);
    void setValueText(const char16_t* text) override;

private:
    CmString text_;
};

} // namespace qorl::Binding

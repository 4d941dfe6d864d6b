#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/FObject.h"
#include "foundation/text/String.h"

#include <qorl/IStringExchange.h>

namespace qorl {

/// The text that goes across an interface: a caller hands one in to be filled, or gets one back.
class StringObject : public FObject, public IStringExchange {
    QORL_CLASS(StringObject, FObject)
    QORL_FACES(StringObject, FObject, IStringExchange, IStringSink)

public:
    StringObject() = default;
    /// Keeps the width of `text`.
    explicit StringObject(const ConstString& text) : string_(text) {}

    String& string() { return string_; }
    const String& string() const { return string_; }

    void set8(const char* text) override;
    void set16(const char16_t* text) override;
    const char* get8() override;
    const char16_t* get16() override;
    void take(void* buffer, bool isWide) override;
    bool isWideString() override;

private:
    String string_;
};

} // namespace qorl

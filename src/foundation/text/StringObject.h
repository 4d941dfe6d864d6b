#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/FObject.h"
#include "foundation/text/TextExchange.h"

namespace qorl {

/// The text that goes across an interface: a caller hands one in to be filled, or gets one back.
class StringObject : public FObject, public TextExchange {
    QORL_CLASS(StringObject, FObject)
    QORL_FACES(StringObject, FObject, IStringExchange, IStringSink)

public:
    StringObject() = default;
    /// Keeps the width of `text`. Throws `std::bad_alloc`.
    explicit StringObject(const ConstString& text) : TextExchange(text) {}
};

} // namespace qorl

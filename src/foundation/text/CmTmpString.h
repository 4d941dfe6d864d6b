#pragma once

#include "foundation/text/CmString.h"

namespace qorl {

/// A text for a short-lived value: a key to look something up with, an argument of one call.
class CmTmpString : public CmString {
    QORL_CLASS(CmTmpString, CmString)
    QORL_CLONE(CmTmpString)

public:
    explicit CmTmpString(const char* text) : CmString(text) {}
    explicit CmTmpString(const char16_t* text) : CmString(text) {}
};

} // namespace qorl

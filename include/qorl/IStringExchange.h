#pragma once

#include <qorl/FInterface.h>

namespace qorl {

/// A text that another module may set.
class IStringSink : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{550798BC-8720-49DB-8492-0A153B50B7A8}");

    /// Copies zero-terminated 8-bit text in the system's encoding (UTF-8). Null empties the text.
    virtual void set8(const char* text) = 0;
};

/// A text that another module may set and read in either width.
///
/// Reading in the width that the text is not stored in converts it in place. A text that was read stays good
/// until the next call. Threading: one thread at a time, readers included.
class IStringExchange : public IStringSink {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{F99DB7A3-0FC1-4821-800B-0CF98E348EDF}");

    /// Copies zero-terminated UTF-16. Null empties the text.
    virtual void set16(const char16_t* text) = 0;
    /// Never null; empty when the text has no 8-bit form.
    virtual const char* get8() = 0;
    /// Never null; empty when the bytes are no valid text.
    virtual const char16_t* get16() = 0;
    /// Takes over a zero-terminated block from `malloc`; with `isWide` of UTF-16, else of bytes.
    virtual void take(void* buffer, bool isWide) = 0;
    virtual bool isWideString() = 0;
};

} // namespace qorl

#pragma once

#include <qorl/FInterface.h>

#include <cstdint>

namespace qorl {

/// A fraction as it crosses an interface. Threading: one thread at a time.
class IRational : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{AEB4EAD5-CDBB-4B34-BBB0-14862B668F65}");

    virtual int64_t getNumerator() = 0;
    virtual int64_t getDenominator() = 0;
    virtual void setFraction(int64_t numerator, int64_t denominator) = 0;
};

} // namespace qorl

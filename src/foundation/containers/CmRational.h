#pragma once

#include "foundation/CmObject.h"

#include <qorl/IRational.h>

namespace qorl {

/// A fraction, kept as it was given: 2/4 isn't made 1/2.
///
/// Compared by its quotient as a double, where the fields differ; so 1/2 and 2/4 are equal. A fraction over 0
/// counts as infinite, 0/0 as 0.
class CmRational : public CmObject, public IRational {
    QORL_CLASS(CmRational, CmObject)
    QORL_CLONE(CmRational)
    QORL_RECORD(CmRational)
    QORL_FACES(CmRational, CmObject, IRational)

public:
    CmRational() = default;
    CmRational(int64_t numerator, int64_t denominator) : numerator_(numerator), denominator_(denominator) {}

    int64_t numerator() const { return numerator_; }
    int64_t denominator() const { return denominator_; }
    double quotient() const;

    /// By value for any other fraction, by address otherwise.
    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    uint32_t hashCode(uint32_t size) const override;

    /// Numerator and denominator, in 64 bits each.
    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;
    /// "Numerator" and "Denominator".
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;

    int64_t getNumerator() override { return numerator_; }
    int64_t getDenominator() override { return denominator_; }
    void setFraction(int64_t numerator, int64_t denominator) override;

private:
    int64_t numerator_ = 0;
    int64_t denominator_ = 1;
};

} // namespace qorl

#include "foundation/containers/CmRational.h"

#include "foundation/Cast.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FStream.h"

#include <bit>
#include <limits>

namespace qorl {

QORL_REGISTER(CmRational, "CmRational", CmObject, 0)

double CmRational::quotient() const {
    if (numerator_ == 0)
        return 0;
    if (denominator_ == 0)
        return numerator_ > 0 ? std::numeric_limits<double>::infinity()
                              : -std::numeric_limits<double>::infinity();
    return static_cast<double>(numerator_) / static_cast<double>(denominator_);
}

bool CmRational::isEqual(const CmObject* other) const {
    return cast<CmRational>(other) ? compare(other) == 0 : CmObject::isEqual(other);
}

int32_t CmRational::compare(const CmObject* other) const {
    const auto* fraction = cast<CmRational>(other);
    if (!fraction)
        return CmObject::compare(other);
    if (numerator_ == fraction->numerator_ && denominator_ == fraction->denominator_)
        return 0;
    const double a = quotient();
    const double b = fraction->quotient();
    return a < b ? -1 : a > b ? 1 : 0;
}

uint32_t CmRational::hashCode(uint32_t size) const {
    const auto bits = std::bit_cast<uint64_t>(quotient());
    return static_cast<uint32_t>((bits ^ bits >> 32) % size);
}

bool CmRational::writeTo(FObjectArchive* archive) {
    return archive->stream().writeInt64(numerator_) && archive->stream().writeInt64(denominator_);
}

bool CmRational::readFrom(FObjectArchive* archive) {
    int64_t numerator = 0;
    int64_t denominator = 0;
    if (!archive->stream().readInt64(numerator) || !archive->stream().readInt64(denominator))
        return false;
    setFraction(numerator, denominator);
    return true;
}

bool CmRational::storeAttributes(FAttributes* attributes) {
    attributes->setInteger("Numerator", numerator_);
    attributes->setInteger("Denominator", denominator_);
    return true;
}

bool CmRational::restoreAttributes(FAttributes* attributes) {
    setFraction(attributes->getInteger("Numerator", 0), attributes->getInteger("Denominator", 1));
    return true;
}

void CmRational::setFraction(int64_t numerator, int64_t denominator) {
    numerator_ = numerator;
    denominator_ = denominator;
}

} // namespace qorl

#include "graphics/UBrush.h"

#include "foundation/Cast.h"

namespace qorl {

QORL_REGISTER(UBrush, "UBrush", CmObject, 2)

bool UBrush::isEqual(const CmObject* other) const {
    const auto* brush = cast<UBrush>(other);
    return brush && *this == *brush;
}

uint32_t UBrush::hashCode(uint32_t size) const {
    return color_.hashCode(size);
}

} // namespace qorl

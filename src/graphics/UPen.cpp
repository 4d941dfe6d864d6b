#include "graphics/UPen.h"

#include "foundation/Cast.h"

#include <utility>

namespace qorl {

QORL_REGISTER(UPen, "UPen", CmObject, 0)

const LineStyle& LineStyle::solid() {
    static constexpr LineStyle style{.cap = LineCap::square};
    return style;
}

const LineStyle& LineStyle::dotted() {
    // Lines run through pixel centres: half a dash of offset puts the dashes on whole pixels.
    static constexpr LineStyle style{
        .cap = LineCap::butt, .dashOffset = 0.5, .dashCount = 2, .dashLengths = {1.0, 1.0}};
    return style;
}

void UPen::setLineStyle(std::shared_ptr<const LineStyle> style) {
    kind_ = style ? Kind::styled : Kind::solid;
    lineStyle_ = std::move(style);
}

const LineStyle& UPen::effectiveLineStyle() const {
    if (kind_ == Kind::styled && lineStyle_)
        return *lineStyle_;
    return kind_ == Kind::dotted ? LineStyle::dotted() : LineStyle::solid();
}

bool UPen::isEqual(const CmObject* other) const {
    const auto* pen = cast<UPen>(other);
    return pen && *this == *pen;
}

uint32_t UPen::hashCode(uint32_t size) const {
    return (color_.packed() * 31 + static_cast<uint32_t>(width_)) % size;
}

} // namespace qorl

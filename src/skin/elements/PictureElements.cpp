#include "graphics/UBitmap.h"
#include "skin/ElementBuilders.h"
#include "skin/ViewBuilder.h"
#include "views/controls/UFrame.h"
#include "views/controls/UImage.h"

// Elements that only draw.
namespace qorl {

Ref<UView> ElementBuilders::buildImage(ElementInput& input) {
    return make<UImage>(input.rect, input.builder.bitmap(input.element, SkinAttribute::bitmap),
                        input.style());
}

Ref<UView> ElementBuilders::buildDecor(ElementInput& input) {
    constexpr int32_t standardPen = 1;
    UColor color = scheme().getColor(SchemeColor::frame);
    input.builder.color(input.element, SkinAttribute::bgcolor, color);
    return make<UFrame>(input.rect, input.builder.title(input.element), static_cast<int32_t>(input.style()),
                        color, input.element.integer(SkinAttribute::radius),
                        input.element.integer(SkinAttribute::penWidth, standardPen));
}

} // namespace qorl

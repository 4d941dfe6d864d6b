#include "graphics/UBitmap.h"
#include "skin/ElementBuilders.h"
#include "skin/ViewBuilder.h"
#include "views/controls/ControlStyle.h"
#include "views/controls/USlider.h"

namespace qorl {

Ref<UView> ElementBuilders::buildSlider(const ElementInput& input) {
    const bool isVertical = input.style() & SliderStyle::anyVertical;
    const CmRect rect = isVertical ? input.rectOr(SchemeMetric::scrollbarwidth, SchemeMetric::datafieldwidth)
                                   : input.rectOr(SchemeMetric::datafieldwidth, SchemeMetric::scrollbarwidth);
    Ref<UBitmap> track = input.builder.bitmap(input.element, SkinAttribute::background);
    Ref<UBitmap> handle = input.builder.bitmap(input.element, SkinAttribute::handle);
    if (!track && !handle) {
        UControl* slider =
            scheme().createControl(ControlKind::slider, rect, static_cast<int32_t>(input.style()),
                                   input.value, input.builder.title(input.element));
        return Ref<UView>::adopt(slider);
    }
    auto slider = make<UBitmapSlider>(rect, input.builder.title(input.element), input.value, input.style());
    slider->setBitmaps(std::move(track), std::move(handle));
    return slider;
}

} // namespace qorl

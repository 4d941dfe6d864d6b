#include "binding/UColorValue.h"
#include "foundation/Cast.h"
#include "graphics/UBitmap.h"
#include "skin/ElementBuilders.h"
#include "skin/ViewBuilder.h"
#include "views/controls/ControlStyle.h"
#include "views/controls/UBitmapSlider.h"

namespace qorl {

namespace {

Ref<UView> createSlider(const ElementInput& input, const CmRect& rect) {
    Ref<UBitmap> track = input.builder.bitmap(input.element, SkinAttribute::background);
    Ref<UBitmap> handle = input.builder.bitmap(input.element, SkinAttribute::handle);
    const String title = input.builder.title(input.element);
    if (!track && !handle)
        return Ref<UView>::adopt(ElementBuilders::scheme().createControl(
            ControlKind::slider, rect, static_cast<int32_t>(input.style()), input.value, title));
    auto slider = make<UBitmapSlider>(rect, title, input.value, input.style());
    slider->setBitmaps(std::move(track), std::move(handle));
    return slider;
}

void applyColor(const ElementInput& input, USlider& slider, SkinAttribute attribute, SliderPart part) {
    UColor color;
    if (input.builder.color(input.element, attribute, color))
        slider.setPartColor(part, color);
}

void applySliderLook(const ElementInput& input, USlider& slider) {
    for (const AttributeValue& value : input.element.attributes()) {
        switch (value.attribute) {
        case SkinAttribute::bgcolor: applyColor(input, slider, value.attribute, SliderPart::track); break;
        case SkinAttribute::fgcolor: applyColor(input, slider, value.attribute, SliderPart::filled); break;
        case SkinAttribute::stripcolor: applyColor(input, slider, value.attribute, SliderPart::strip); break;
        case SkinAttribute::handlecolor:
            applyColor(input, slider, value.attribute, SliderPart::handle);
            break;
        case SkinAttribute::colorValue:
            if (const auto color = input.builder.colorValue(input.element, value.view(), input.controller))
                slider.setSecondValue(color.get());
            break;
        case SkinAttribute::handlesize: {
            const CmPoint size = input.element.point(SkinAttribute::handlesize);
            slider.setHandleSize({size.x, size.y});
            break;
        }
        default: break;
        }
    }
}

} // namespace

Ref<UView> ElementBuilders::buildSlider(ElementInput& input) {
    const bool isVertical = input.style() & SliderStyle::anyVertical;
    const CmRect rect = isVertical ? input.rectOr(SchemeMetric::scrollbarwidth, SchemeMetric::datafieldwidth)
                                   : input.rectOr(SchemeMetric::datafieldwidth, SchemeMetric::scrollbarwidth);
    Ref<UView> view = createSlider(input, rect);
    if (auto* slider = cast<USlider>(view))
        applySliderLook(input, *slider);
    return view;
}

} // namespace qorl

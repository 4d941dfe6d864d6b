#include "foundation/Cast.h"
#include "graphics/UBitmap.h"
#include "skin/ElementBuilders.h"
#include "skin/ViewBuilder.h"
#include "views/controls/USwitch.h"
#include "views/controls/UTextButton.h"

// Elements that are pressed.
namespace qorl {

namespace {

Ref<UView> createPlain(const ElementInput& input, ControlKind::Kind kind, const CmRect& rect) {
    UControl* control = ElementBuilders::scheme().createControl(
        kind, rect, static_cast<int32_t>(input.style()), input.value, input.builder.title(input.element));
    return Ref<UView>::adopt(control);
}

} // namespace

Ref<UView> ElementBuilders::buildButton(ElementInput& input) {
    Ref<UView> view = createPlain(input, ControlKind::button,
                                  input.rectOr(SchemeMetric::buttonwidth, SchemeMetric::buttonheight));
    auto* button = cast<UTextButton>(view.get());
    if (button && button->hasStyle(UTextButton::isDefault))
        button->setDefaultControl(true);
    return view;
}

Ref<UView> ElementBuilders::buildCheckBox(ElementInput& input) {
    return createPlain(input, ControlKind::checkBox,
                       input.rectOr(SchemeMetric::buttonwidth, SchemeMetric::checkboxheight));
}

Ref<UView> ElementBuilders::buildSwitch(ElementInput& input) {
    Ref<UBitmap> bitmap = input.builder.bitmap(input.element, SkinAttribute::bitmap);
    const CmRect rect =
        bitmap ? input.rect : input.rectOr(SchemeMetric::buttonwidth, SchemeMetric::buttonheight);
    auto view = make<USwitch>(rect, input.builder.title(input.element), input.value, input.style());
    if (bitmap) {
        view->setBitmap(std::move(bitmap));
        view->resizeToFit(rect.width() > 0 ? -1 : 0, rect.height() > 0 ? -1 : 0);
        input.keepsSize = true;
    }
    view->setJust(input.just());
    return view;
}

} // namespace qorl

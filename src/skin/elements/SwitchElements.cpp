#include "foundation/Cast.h"
#include "graphics/UBitmap.h"
#include "skin/ElementBuilders.h"
#include "skin/ViewBuilder.h"
#include "views/controls/UCheckBoxBase.h"
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

Ref<UView> ElementBuilders::buildButton(const ElementInput& input) {
    Ref<UView> view = createPlain(input, ControlKind::button,
                                  input.rectOr(SchemeMetric::buttonwidth, SchemeMetric::buttonheight));
    auto* button = cast<UTextButton>(view.get());
    if (button && button->hasStyle(UTextButton::isDefault))
        button->setDefaultControl(true);
    return view;
}

Ref<UView> ElementBuilders::buildCheckBox(const ElementInput& input) {
    Ref<UView> view = createPlain(input, ControlKind::checkBox,
                                  input.rectOr(SchemeMetric::buttonwidth, SchemeMetric::checkboxheight));
    auto* box = cast<UCheckBoxBase>(view.get());
    if (box && input.builder.font())
        box->setFont(*input.builder.font());
    return view;
}

Ref<UView> ElementBuilders::buildSwitch(const ElementInput& input) {
    auto view = make<USwitch>(input.rect, input.builder.title(input.element), input.value, input.style());
    if (Ref<UBitmap> bitmap = input.builder.bitmap(input.element, SkinAttribute::bitmap))
        view->setBitmap(std::move(bitmap));
    view->setJust(input.just());
    return view;
}

} // namespace qorl

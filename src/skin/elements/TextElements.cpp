#include "binding/UColorValue.h"
#include "skin/ElementBuilders.h"
#include "skin/ViewBuilder.h"
#include "views/controls/ControlStyle.h"
#include "views/controls/ULabel.h"
#include "views/controls/UTextEdit.h"

// Elements that show text.
namespace qorl {

namespace {

/// A colour, or else the name of a value that is one.
void applyBackground(const ElementInput& input, UTextDisplay& text, std::string_view background) {
    if (background.empty())
        return;
    if (UColor color; input.builder.wizard().findColor(background, color))
        text.setBackground(color);
    else if (const auto value = input.builder.colorValue(input.element, background, input.controller))
        text.setSecondValue(value.get());
}

void applyTextLook(const ElementInput& input, UTextDisplay& text) {
    for (const AttributeValue& value : input.element.attributes()) {
        switch (value.attribute) {
        case SkinAttribute::bgcolor: applyBackground(input, text, value.view()); break;
        case SkinAttribute::titlecolor:
            if (UColor color; input.builder.color(input.element, SkinAttribute::titlecolor, color))
                text.setTitleColor(color);
            break;
        case SkinAttribute::units:
            text.setUnits(input.builder.translated(input.element, value.view()));
            break;
        case SkinAttribute::placeholder:
            text.setHint(input.builder.translated(input.element, value.view()));
            break;
        case SkinAttribute::offset: text.setTextOffset(input.element.point(SkinAttribute::offset)); break;
        default: break;
        }
    }
}

} // namespace

Ref<UView> ElementBuilders::buildLabel(ElementInput& input) {
    return make<ULabel>(input.rect, input.builder.title(input.element), input.just(), input.style());
}

Ref<UView> ElementBuilders::buildText(ElementInput& input) {
    const CmRect rect = input.rectOr(SchemeMetric::datafieldwidth, SchemeMetric::datafieldheight);
    const bool isEdit = input.element.type() == SkinType::edit || (input.style() & ControlStyle::edit);
    const String title = input.builder.title(input.element);
    Ref<UTextDisplay> text;
    if (isEdit)
        text = make<UTextEdit>(rect, title, input.value, input.style());
    else
        text = make<UTextDisplay>(rect, title, input.value, input.style());
    text->setJust(input.just());
    applyTextLook(input, *text);
    return text;
}

} // namespace qorl

#include "skin/ElementBuilders.h"
#include "skin/ViewBuilder.h"
#include "views/controls/ControlStyle.h"
#include "views/controls/ULabel.h"
#include "views/controls/UTextEdit.h"

// Elements that show text.
namespace qorl {

Ref<UView> ElementBuilders::buildLabel(const ElementInput& input) {
    auto label = make<ULabel>(input.rect, input.builder.title(input.element), input.just(), input.style());
    if (const UFont* font = input.builder.font())
        label->setFont(*font);
    label->applyAutoSize();
    return label;
}

Ref<UView> ElementBuilders::buildText(const ElementInput& input) {
    const CmRect rect = input.rectOr(SchemeMetric::datafieldwidth, SchemeMetric::datafieldheight);
    const bool isEdit = input.element.type() == SkinType::edit || (input.style() & ControlStyle::edit);
    const String title = input.builder.title(input.element);
    Ref<UTextDisplay> text;
    if (isEdit)
        text = make<UTextEdit>(rect, title, input.value, input.style());
    else
        text = make<UTextDisplay>(rect, title, input.value, input.style());
    text->setJust(input.just());
    if (const UFont* font = input.builder.font())
        text->setFont(*font);
    const std::string_view background = input.element.text(SkinAttribute::bgcolor);
    if (background.empty())
        return text;
    if (UColor color; input.builder.wizard().findColor(background, color))
        text->setBackground(color);
    else if (const auto value = input.builder.wizard().findValue(background, input.controller))
        text->setSecondValue(value.get());
    else
        input.builder.warn(input.element,
                           "'" + std::string(background) + "' is neither a colour nor a value");
    return text;
}

} // namespace qorl

#include "foundation/Cast.h"
#include "skin/ElementBuilders.h"
#include "skin/SkinKeywords.h"
#include "skin/UViewClass.h"
#include "skin/ViewBuilder.h"
#include "views/UView.h"
#include "views/containers/UContainer.h"
#include "views/containers/URowColumn.h"
#include "views/controls/UCheckBoxBase.h"
#include "views/controls/ULabel.h"
#include "views/controls/UTextDisplay.h"

// Elements that stand for views as such: by template, by class, by controller, and those that hold others.
namespace qorl {

namespace {

Ref<UView> askController(const ElementInput& input) {
    UView* view =
        input.controller ? input.controller->createView(&input.element, &input.builder.document()) : nullptr;
    return Ref<UView>::adopt(view);
}

/// The element's extents go before those of the template where they are given.
Ref<UView> buildByTemplate(ElementInput& input, const ViewElement& element) {
    const Ref<IController> controller = input.builder.dataController(input.element, input.controller);
    Ref<UView> view = input.builder.buildTemplate(element, controller.get(), nullptr);
    if (!view)
        return nullptr;
    const CmSize size = view->getFrameSize();
    const CmRect& rect = input.rect;
    const SizeFields place{rect.left, rect.top, rect.width() >= 1 ? rect.width() : size.width,
                           rect.height() >= 1 ? rect.height() : size.height};
    view->setFrame(place.rect(), false);
    input.keepsSize = !view->getFrameRect().isEmpty();
    return view;
}

/// A label takes its size by its font, the enclosing one or its own.
void applyFont(const UFont* font, UView& view) {
    if (auto* label = cast<ULabel>(&view))
        font ? label->setFont(*font) : label->applyAutoSize();
    else if (!font)
        return;
    else if (auto* text = cast<UTextDisplay>(&view))
        text->setFont(*font);
    else if (auto* box = cast<UCheckBoxBase>(&view))
        box->setFont(*font);
}

/// What a `control` element says of a control of any class.
void applyControlLook(const ElementInput& input, UControl& control) {
    if (UColor color; input.builder.color(input.element, SkinAttribute::bgcolor, color)) {
        if (auto* text = cast<UTextDisplay>(&control))
            text->setBackground(color);
        else
            control.setContentColor(color.packed());
    }
    constexpr Keyword defaultWord[] = {{"default", 1}};
    if (parseKeywords({{}, defaultWord}, input.element.text(SkinAttribute::style)).value != 0)
        control.setDefaultControl(true);
}

} // namespace

void ElementBuilders::applyLook(const ElementInput& input, UView& view) {
    applyFont(input.builder.font(), view);
    if (input.element.type() != SkinType::control)
        return;
    if (auto* control = cast<UControl>(&view))
        applyControlLook(input, *control);
}

Ref<UView> ElementBuilders::buildView(ElementInput& input) {
    if (Ref<UView> view = askController(input))
        return view;
    const std::string name(input.builder.wizard().substitute(input.element.name()));
    if (const ViewElement* found = input.builder.document().findTemplate(name))
        return buildByTemplate(input, *found);
    if (const ViewFactory factory = UViewClass::find(name))
        return Ref<UView>::adopt(factory(input.element, input.controller));
    if (!name.empty())
        input.builder.warn(input.element, "no template or view class '" + name + "'");
    return make<UView>(input.rect, input.builder.title(input.element));
}

Ref<UView> ElementBuilders::buildControl(ElementInput& input) {
    if (Ref<UView> view = askController(input))
        return view;
    const std::string name(input.builder.text(input.element, SkinAttribute::class_));
    for (const ViewFactory factory : {UControlClass::find(name), UControlClass::fallback()})
        if (UView* view = factory ? factory(input.element, input.controller) : nullptr)
            return Ref<UView>::adopt(view);
    input.builder.warn(input.element, "no control class '" + name + "'");
    return nullptr;
}

Ref<UView> ElementBuilders::buildContainer(ElementInput& input) {
    return make<UContainer>(input.rect, input.builder.title(input.element));
}

Ref<UView> ElementBuilders::buildRowColumn(ElementInput& input) {
    auto row = make<URowColumn>(input.rect, input.style());
    if (input.element.has(SkinAttribute::title) || input.element.has(SkinAttribute::titleNT))
        row->setTitle(input.builder.title(input.element));
    RowColumnLayout& layout = row->getRowColumnLayout();
    int32_t spacing[4] = {};
    parseInts(input.element.text(SkinAttribute::spacing), spacing, 4);
    layout.marginX = spacing[0];
    layout.marginY = spacing[1];
    layout.spacingX = spacing[2];
    layout.spacingY = spacing[3];
    layout.rowPitch = input.element.integer(
        layout.isHorizontal() ? SkinAttribute::colwidth : SkinAttribute::rowheight, layout.rowPitch);
    return row;
}

} // namespace qorl

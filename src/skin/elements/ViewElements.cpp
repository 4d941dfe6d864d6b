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
Ref<UView> buildByTemplate(const ElementInput& input, const ViewElement& element) {
    IController* controller = input.controller;
    const std::string data(input.builder.text(input.element, SkinAttribute::data));
    if (!data.empty() && controller)
        if (IController* inner = controller->getSubController(data.c_str()))
            controller = inner;
    Ref<UView> view = input.builder.buildTemplate(element, controller, nullptr);
    if (!view)
        return nullptr;
    CmSize size = view->getFrameSize();
    if (input.rect.width() >= 1)
        size.width = input.rect.width();
    if (input.rect.height() >= 1)
        size.height = input.rect.height();
    view->setFrame(CmRect::ofSize(input.rect.origin(), size), false);
    return view;
}

/// What the skin says of a control of any class.
void applyLook(const ElementInput& input, UControl& control) {
    auto* text = cast<UTextDisplay>(&control);
    if (const UFont* font = input.builder.font()) {
        if (text)
            text->setFont(*font);
        else if (auto* box = cast<UCheckBoxBase>(&control))
            box->setFont(*font);
    }
    if (UColor color; input.builder.color(input.element, SkinAttribute::bgcolor, color)) {
        if (text)
            text->setBackground(color);
        else
            control.setContentColor(color.packed());
    }
    constexpr Keyword defaultWord[] = {{"default", 1}};
    if (parseKeywords({{}, defaultWord}, input.element.text(SkinAttribute::style)).value != 0)
        control.setDefaultControl(true);
}

} // namespace

Ref<UView> ElementBuilders::buildView(const ElementInput& input) {
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

Ref<UView> ElementBuilders::buildControl(const ElementInput& input) {
    if (Ref<UView> view = askController(input))
        return view;
    const std::string name(input.builder.text(input.element, SkinAttribute::class_));
    ViewFactory factory = UControlClass::find(name);
    if (!factory)
        factory = UControlClass::fallback();
    Ref<UView> view = Ref<UView>::adopt(factory ? factory(input.element, input.controller) : nullptr);
    if (!view)
        input.builder.warn(input.element, "no control class '" + name + "'");
    if (auto* control = cast<UControl>(view))
        applyLook(input, *control);
    else if (auto* label = cast<ULabel>(view); label && input.builder.font())
        label->setFont(*input.builder.font());
    return view;
}

Ref<UView> ElementBuilders::buildContainer(const ElementInput& input) {
    return make<UContainer>(input.rect, input.builder.title(input.element));
}

Ref<UView> ElementBuilders::buildRowColumn(const ElementInput& input) {
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

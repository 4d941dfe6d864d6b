#pragma once

#include "binding/Value.h"
#include "schemes/GlobalSchemes.h"
#include "skin/ViewElement.h"
#include "views/UView.h"

#include <qorl/Ref.h>

namespace qorl {

class IController;
class ViewBuilder;

/// What an element's view is made from.
struct ElementInput {
    ViewBuilder& builder;
    const ViewElement& element;
    IController* controller;
    CmRect rect;           ///< As the element says; empty extents take the default of the kind.
    Binding::Value* value; ///< By the element's name; null if there is none, or the kind asks for none.
    /// The view has its size from elsewhere than the element: from a template, a bitmap, the scheme.
    bool keepsSize = false;

    uint32_t style() const { return static_cast<uint32_t>(element.keywords(SkinAttribute::style)); }
    uint32_t just() const { return static_cast<uint32_t>(element.keywords(SkinAttribute::just)); }
    /// The rect with metrics of the scheme for extents that are not given. The view is to keep that size.
    CmRect rectOr(int32_t widthMetric, int32_t heightMetric);
    /// Whether the view is to be as large as what it holds.
    bool takesSizeOfContent() const { return element.rect().isEmpty() && !keepsSize; }
};

/// How a kind of element becomes a view.
struct ElementBuilder {
    using Build = Ref<UView> (*)(ElementInput& input);

    Build build = nullptr;  ///< Null for a kind that no view class stands for.
    bool takesValue = true; ///< The element's name is the name of its value.
};

const ElementBuilder& elementBuilderOf(SkinType type);

/// The builders by family.
namespace ElementBuilders {

/// The scheme of the build.
UScheme& scheme();

/// What the element, and the `font` around it, say of the view's look, whoever made the view.
void applyLook(const ElementInput& input, UView& view);

Ref<UView> buildView(ElementInput& input);
Ref<UView> buildControl(ElementInput& input);
Ref<UView> buildContainer(ElementInput& input);
Ref<UView> buildRowColumn(ElementInput& input);
Ref<UView> buildLabel(ElementInput& input);
/// `text` and `edit`.
Ref<UView> buildText(ElementInput& input);
Ref<UView> buildImage(ElementInput& input);
Ref<UView> buildDecor(ElementInput& input);
Ref<UView> buildButton(ElementInput& input);
Ref<UView> buildCheckBox(ElementInput& input);
Ref<UView> buildSwitch(ElementInput& input);
Ref<UView> buildSlider(ElementInput& input);

} // namespace ElementBuilders

} // namespace qorl

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

    uint32_t style() const { return static_cast<uint32_t>(element.keywords(SkinAttribute::style)); }
    uint32_t just() const { return static_cast<uint32_t>(element.keywords(SkinAttribute::just)); }
    /// The rect with metrics of the scheme for extents that are not given.
    CmRect rectOr(int32_t widthMetric, int32_t heightMetric) const;
};

/// How a kind of element becomes a view.
struct ElementBuilder {
    using Build = Ref<UView> (*)(const ElementInput& input);

    Build build = nullptr;  ///< Null for a kind that no view class stands for.
    bool takesValue = true; ///< The element's name is the name of its value.
};

const ElementBuilder& elementBuilderOf(SkinType type);

/// The builders by family.
namespace ElementBuilders {

/// The scheme of the build.
UScheme& scheme();

Ref<UView> buildView(const ElementInput& input);
Ref<UView> buildControl(const ElementInput& input);
Ref<UView> buildContainer(const ElementInput& input);
Ref<UView> buildRowColumn(const ElementInput& input);
Ref<UView> buildLabel(const ElementInput& input);
/// `text` and `edit`.
Ref<UView> buildText(const ElementInput& input);
Ref<UView> buildImage(const ElementInput& input);
Ref<UView> buildDecor(const ElementInput& input);
Ref<UView> buildButton(const ElementInput& input);
Ref<UView> buildCheckBox(const ElementInput& input);
Ref<UView> buildSwitch(const ElementInput& input);
Ref<UView> buildSlider(const ElementInput& input);

} // namespace ElementBuilders

} // namespace qorl

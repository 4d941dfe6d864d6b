#include "skin/ElementBuilders.h"

#include <array>

namespace qorl {

namespace {

constexpr auto table = [] {
    using T = SkinType;
    std::array<ElementBuilder, skinTypeCount> builders{};
    const auto set = [&builders](SkinType type, ElementBuilder::Build build, bool takesValue = true) {
        builders[static_cast<size_t>(type)] = {build, takesValue};
    };
    for (const T type : {T::view,           T::control,       T::align,
                         T::relativeattach, T::helpbutton,    T::rowcol,
                         T::decor,          T::graphics,      T::a,
                         T::customview,     T::sizehandle,    T::popupoverlaygadget,
                         T::texture,        T::painted,       T::render,
                         T::dragpad,        T::viewlist,      T::windowcomposerview,
                         T::keycommandmemo, T::plainzoneview, T::tabzoneview,
                         T::container})
        set(type, nullptr, false);
    set(T::view, ElementBuilders::buildView, false);
    set(T::control, ElementBuilders::buildControl, false);
    set(T::container, ElementBuilders::buildContainer, false);
    set(T::rowcol, ElementBuilders::buildRowColumn, false);
    set(T::decor, ElementBuilders::buildDecor, false);
    set(T::label, ElementBuilders::buildLabel);
    set(T::text, ElementBuilders::buildText);
    set(T::edit, ElementBuilders::buildText);
    set(T::image, ElementBuilders::buildImage);
    set(T::button, ElementBuilders::buildButton);
    set(T::checkbox, ElementBuilders::buildCheckBox);
    set(T::switch_, ElementBuilders::buildSwitch);
    set(T::slider, ElementBuilders::buildSlider);
    return builders;
}();

} // namespace

const ElementBuilder& elementBuilderOf(SkinType type) {
    return table[static_cast<size_t>(type)];
}

CmRect ElementInput::rectOr(int32_t widthMetric, int32_t heightMetric) {
    CmRect result = rect;
    const UScheme& scheme = ElementBuilders::scheme();
    if (result.width() <= 0)
        result.right = limitToInt32(int64_t{result.left} + scheme.getMetric(widthMetric));
    if (result.height() <= 0)
        result.bottom = limitToInt32(int64_t{result.top} + scheme.getMetric(heightMetric));
    keepsSize = !result.isEmpty();
    return result;
}

UScheme& ElementBuilders::scheme() {
    return *GlobalSchemes::currentScheme(GlobalSchemes::main());
}

} // namespace qorl

#include "views/controls/UCheckBoxBase.h"

#include "schemes/UScheme.h"
#include "views/ViewDevice.h"
#include "views/controls/ControlText.h"

#include <algorithm>

namespace qorl {

namespace {

/// Between the mark and its title.
constexpr int32_t titleGap = 6;
constexpr int32_t markExtent = 14;

template <uint32_t extraStyle>
UControl* createCheckBox(const CmRect& rect, int32_t style, Binding::Value* value, const ConstString& title) {
    return new UCustomCheckBox(rect, title, value, static_cast<uint32_t>(style) | extraStyle);
}

const bool checkBoxRegistered =
    (ControlTable::add(ControlLook::drawn, ControlKind::checkBox, &createCheckBox<0>),
     ControlTable::add(ControlLook::drawn, ControlKind::radioButton, &createCheckBox<CheckBoxStyle::radio>),
     true);

} // namespace

SwitchBehaviour UCheckBoxBase::pressBehaviour() const {
    if (hasStyle(CheckBoxStyle::push))
        return SwitchBehaviour::push;
    return isRadio() ? SwitchBehaviour::on : SwitchBehaviour::onOff;
}

AccessibleRole UCheckBoxBase::getAccessibleRole() const {
    return isRadio() ? AccessibleRole::radioButton : AccessibleRole::checkBox;
}

void UCheckBoxBase::setFont(const UFont& font) {
    font_ = std::make_unique<UFont>(font);
    update();
}

UFont UCheckBoxBase::titleFont() const {
    const UScheme* scheme = getScheme();
    UFont font = font_ ? *font_ : scheme->getFont(SchemeFont::label);
    if (!isEnabled())
        font.setColor(scheme->getColor(SchemeColor::labelcolorinactive));
    else if (!font_)
        font.setColor(scheme->getColor(SchemeColor::labelcolor));
    return font;
}

CmRect UCheckBoxBase::markRect() const {
    const CmSize mark = getMarkSize();
    return CmRect::ofSize({0, (getClientSize().height - mark.height) / 2}, mark);
}

bool UCheckBoxBase::drawContent(const CmRect& rect) {
    ViewDevice device(*this, rect);
    const CmRect mark = markRect();
    drawMark(device, mark);
    if (!hasTitle())
        return true;
    device.setFont(titleFont());
    CmRect text = getClientBounds();
    text.left = mark.right + titleGap;
    drawControlText(device, getTitle(), text, TextJust::left);
    return true;
}

void UCheckBoxBase::resizeToFit(int32_t extraWidth, int32_t extraHeight) {
    const CmSize mark = getMarkSize();
    const CmSize text = measureControlText(titleFont(), getTitle());
    const int32_t least = getScheme()->getMetric(SchemeMetric::checkboxheight);
    const int32_t width = mark.width + (hasTitle() ? titleGap + text.width : 0);
    fitTo({width, std::max({mark.height, text.height, least})}, extraWidth, extraHeight);
}

void UCustomCheckBox::drawMark(UDrawDevice& device, const CmRect& mark) {
    if (isRadio())
        getScheme()->drawRadioMark(device, mark, getMarks());
    else
        getScheme()->drawCheckMark(device, mark,
                                   getMarks() | (hasStyle(CheckBoxStyle::cross) ? MarkState::cross : 0));
}

CmSize UCustomCheckBox::getMarkSize() const {
    return {markExtent, markExtent};
}

} // namespace qorl

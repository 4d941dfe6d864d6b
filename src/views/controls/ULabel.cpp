#include "views/controls/ULabel.h"

#include "schemes/UScheme.h"
#include "views/ViewDevice.h"
#include "views/controls/ControlStyle.h"
#include "views/controls/ControlText.h"

namespace qorl {

ULabel::ULabel(const CmRect& frame, const ConstString& title, uint32_t just, uint32_t style)
    : UView(frame, title), just_(static_cast<uint16_t>(just)), style_(static_cast<uint16_t>(style)) {}

ULabel::~ULabel() = default;

void ULabel::setTitle(const ConstString& title) {
    UView::setTitle(title);
    invalidateAll();
    applyAutoSize();
}

void ULabel::setFont(const UFont& font) {
    font_ = std::make_unique<UFont>(font);
    invalidateAll();
    applyAutoSize();
}

const UFont& ULabel::measureFont() const {
    return font_ ? *font_ : getScheme()->getFont(SchemeFont::label);
}

void ULabel::applyAutoSize() {
    if (style_ != 0)
        resizeToFit(style_ & autoWidth ? 0 : -1, style_ & autoHeight ? 0 : -1);
}

bool ULabel::drawContent(const CmRect& rect) {
    if (!hasTitle())
        return true;
    ViewDevice device(*this, rect);
    const UScheme* scheme = getScheme();
    device.setFont(measureFont());
    if (!isEnabled())
        device.setFontColor(scheme->getColor(SchemeColor::labelcolorinactive));
    else if (!font_)
        device.setFontColor(scheme->getColor(SchemeColor::labelcolor));
    drawControlText(device, getTitle(), getClientBounds(), just_);
    return true;
}

void ULabel::resizeToFit(int32_t extraWidth, int32_t extraHeight) {
    const bool wraps = (just_ & TextJust::wordWrap) && extraWidth < 0;
    const CmSize text = measureControlText(measureFont(), getTitle(), wraps ? getFrameRect().width() : 0);
    fitTo(text, extraWidth, extraHeight);
}

} // namespace qorl

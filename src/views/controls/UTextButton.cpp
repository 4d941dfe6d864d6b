#include "views/controls/UTextButton.h"

#include "schemes/UScheme.h"
#include "views/ViewDevice.h"
#include "views/controls/ControlText.h"

namespace qorl {

namespace {

UControl* createTextButton(const CmRect& rect, int32_t style, Binding::Value* value,
                           const ConstString& title) {
    return new UTextButton(rect, title, value, static_cast<uint32_t>(style));
}

const bool buttonRegistered =
    (ControlTable::add(ControlLook::drawn, ControlKind::button, &createTextButton), true);

} // namespace

UTextButton::UTextButton(const CmRect& frame, const ConstString& title, Binding::Value* value, uint32_t style)
    : USwitchBase(frame, title, value, style) {
    if (style & isDefault)
        setDefaultControl(true);
}

bool UTextButton::drawContent(const CmRect& rect) {
    ViewDevice device(*this, rect);
    UScheme* scheme = getScheme();
    const CmRect bounds = getClientBounds();
    const bool down = isPressed();
    device.setBrush(scheme->getBrush(SchemeColor::buttonface));
    device.fillRect(bounds);
    const CmRect frame = isDefaultControl() ? bounds.grown(-1, -1) : bounds;
    if (isDefaultControl())
        scheme->drawBevelLine(device, bounds);
    if (down)
        scheme->drawPressedFrame(device, frame, ConstString(), false);
    else
        scheme->drawButtonFrame(device, frame, ConstString());
    UFont font = scheme->getFont(SchemeFont::label);
    font.setColor(scheme->getColor(isEnabled() ? SchemeColor::labelcolor : SchemeColor::labelcolorinactive));
    device.setFont(font);
    drawControlText(device, getTitle(), down ? bounds.moved(1, 1) : bounds, 0);
    return true;
}

void UTextButton::resizeToFit(int32_t extraWidth, int32_t extraHeight) {
    const UScheme* scheme = getScheme();
    const int32_t margin = scheme->getMetric(SchemeMetric::margin);
    const CmSize text = measureControlText(scheme->getFont(SchemeFont::label), getTitle());
    fitTo({text.width + 2 * margin, scheme->getMetric(SchemeMetric::buttonheight)}, extraWidth, extraHeight);
}

} // namespace qorl

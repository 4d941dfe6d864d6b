#include "views/controls/USwitch.h"

#include "foundation/Cast.h"
#include "graphics/UBitmapFamily.h"
#include "schemes/UScheme.h"
#include "views/ViewDevice.h"
#include "views/controls/ControlText.h"

#include <algorithm>
#include <cmath>

namespace qorl {

USwitch::~USwitch() = default;

void USwitch::setBitmap(Ref<UBitmap> bitmap) {
    bitmap_ = std::move(bitmap);
    frames_ = cast<UFilmStrip>(bitmap_);
    update();
}

int32_t USwitch::getFrameIndex(int32_t frameCount) const {
    const int64_t states = std::max<int64_t>(2, int64_t{getControlMax()} - getControlMin() + 1);
    int64_t state = int64_t{getControlValue()} - getControlMin();
    if (hasStyle(ControlStyle::invert))
        state = states - 1 - state;
    if (frameCount >= 2 * states)
        return static_cast<int32_t>(2 * state + (isPressed() ? 1 : 0));
    // While the mouse holds a two-state switch, the look of the other state tells what the release will do.
    if (states == 2 && frameCount == 2 && isPressed())
        state = 1;
    const double place = static_cast<double>(state) / static_cast<double>(states - 1);
    return static_cast<int32_t>(std::lround(place * (frameCount - 1)));
}

CmSize USwitch::getBitmapSize() const {
    return frames_ ? frames_->getFrameSize() : bitmap_->getSize();
}

bool USwitch::drawContent(const CmRect& rect) {
    if (hasStyle(ControlStyle::noDraw) || (hasStyle(ControlStyle::hideInactive) && !isEnabled()))
        return true;
    ViewDevice device(*this, rect);
    if (!bitmap_) {
        drawButtonLook(device);
        return true;
    }
    const CmSize size = getBitmapSize();
    const CmSize client = getClientSize();
    const CmRect source =
        frames_ ? frames_->getFrameRect(getFrameIndex(frames_->getFrameCount())) : CmRect::ofSize({}, size);
    const CmPoint place{(client.width - size.width) / 2, (client.height - size.height) / 2};
    const double alpha = isEnabled() ? 1.0 : 0.5;
    device.drawBitmapAlpha(bitmap_.get(), source, CmRect::ofSize(place, size), alpha);
    return true;
}

void USwitch::drawButtonLook(UDrawDevice& device) {
    UScheme* scheme = getScheme();
    const CmRect bounds = getClientBounds();
    const bool down = isPressed() || isOn();
    const bool lit = isOn() && isEnabled();
    device.setBrush(scheme->getBrush(lit ? SchemeColor::select : SchemeColor::buttonface));
    device.fillRect(bounds);
    if (down)
        scheme->drawPressedFrame(device, bounds, ConstString(), isOn());
    else
        scheme->drawButtonFrame(device, bounds, ConstString());
    UFont font = scheme->getFont(SchemeFont::label);
    font.setColor(scheme->getColor(!isEnabled() ? SchemeColor::labelcolorinactive
                                   : lit        ? SchemeColor::textselect
                                                : SchemeColor::labelcolor));
    device.setFont(font);
    drawControlText(device, getTitle(), isPressed() ? bounds.moved(1, 1) : bounds, just_);
}

void USwitch::resizeToFit(int32_t extraWidth, int32_t extraHeight) {
    const UScheme* scheme = getScheme();
    CmSize own;
    if (bitmap_) {
        own = getBitmapSize();
    } else {
        const CmSize text = measureControlText(scheme->getFont(SchemeFont::label), getTitle());
        own = {text.width + 2 * scheme->getMetric(SchemeMetric::margin),
               scheme->getMetric(SchemeMetric::buttonheight)};
    }
    fitTo(own, extraWidth, extraHeight);
}

} // namespace qorl

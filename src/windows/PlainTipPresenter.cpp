#include "windows/PlainTipPresenter.h"

#include "graphics/UFont.h"
#include "platform/Platform.h"
#include "schemes/SchemeKeys.h"
#include "schemes/UScheme.h"
#include "views/ViewDevice.h"

#include <algorithm>

namespace qorl {

namespace {

constexpr int32_t marginX = 6;
constexpr int32_t marginY = 3;
/// From the tip of the pointer to the top of the popup.
constexpr int32_t belowMouse = 20;
constexpr int32_t tipLifetime = 30000; // milliseconds

UFont tipFont(const UScheme& scheme) {
    UFont font = scheme.getFont(SchemeFont::message);
    font.setColor(scheme.getColor(SchemeColor::tooltipfore));
    return font;
}

class TipView final : public UView {
    QORL_CLASS(TipView, UView)

public:
    TipView(const CmRect& frame, const ConstString& text) : UView(frame, text) {}

    bool drawContent(const CmRect& rect) override {
        ViewDevice device(*this, rect);
        UScheme* scheme = getScheme();
        scheme->drawToolTipFrame(device, getClientBounds());
        device.setFont(tipFont(*scheme));
        device.drawString(getTitle(), getClientBounds(), Justify::left | Justify::verticalCenter, marginX);
        return true;
    }
};

CmSize sizeOf(const ConstString& text, const UView& view) {
    UDrawDevice measure;
    measure.setFont(tipFont(*view.getScheme()));
    CmRect extent;
    measure.getStringRect(text, extent);
    return {extent.width() + 2 * marginX, extent.height() + 2 * marginY};
}

/// Below the mouse; where that leaves the work area, further left or above the tipped part.
CmPoint placeOf(CmSize size, CmPoint mouse, int32_t top) {
    const platform::DesktopServices& desktop = *platform::desktop();
    CmPoint place = mouse.moved(0, belowMouse);
    CmRect area;
    if (!desktop.getMonitorRect(desktop.monitorAt(mouse), platform::MonitorArea::work, area))
        return place;
    if (place.x + size.width > area.right)
        place.x = std::max(area.left, area.right - size.width - 1);
    if (place.y + size.height > area.bottom)
        place.y = std::min(top, mouse.y) - size.height - marginY;
    return place;
}

} // namespace

void PlainTipPresenter::showTip(platform::PlatformWindow& window, const CmRect& rect,
                                std::u16string_view text, CmPoint mouse) {
    hideTip();
    const ConstString shown(text);
    auto popup = make<UPopupWindow>(CmRect{}, styleNoActivate | styleNoErase, shown);
    const CmSize size = sizeOf(shown, *popup);
    CmPoint corner = rect.origin();
    window.clientToScreen(corner);
    popup->setSizeLimits({1, 1}, {});
    popup->setFrame(CmRect::ofSize(placeOf(size, mouse, corner.y), size), false);
    popup->addSubView(make<TipView>(CmRect::ofSize({}, size), shown));
    popup->setWindowFlag(UPopupWindow::toolTipPopup, true);
    popup_ = popup;
    popup->setLifetime(tipLifetime);
    popup->show();
}

void PlainTipPresenter::hideTip() {
    if (const Ref<UPopupWindow> popup = std::exchange(popup_, {}))
        popup->willClose(false);
}

} // namespace qorl

#include "platform/headless/HeadlessWindow.h"

#include "platform/headless/HeadlessDesktop.h"

#include <cmath>
#include <utility>

namespace qorl::platform {

HeadlessWindow::HeadlessWindow(HeadlessDesktop& desktop, const WindowDescription& description,
                               PlatformWindowClient& client)
    : WindowBase(desktop, description, client), headless_(desktop) {
    startWithScale(desktop.getScaleAt(getRect()));
}

Region HeadlessWindow::takePresented() {
    return std::exchange(presented_, Region());
}

CmPoint HeadlessWindow::toDevice(CmPoint screen) const {
    screenToClient(screen);
    constexpr double slack = 0.001;
    return {static_cast<int32_t>(std::ceil(screen.x * getScaleFactor() - slack)),
            static_cast<int32_t>(std::ceil(screen.y * getScaleFactor() - slack))};
}

void HeadlessWindow::place(const CmRect& rect) {
    const Ref<WindowBase> self = retain<WindowBase>(this);
    reportGeometry(rect.origin(), rect.size(), toDeviceSize(rect.size()));
    updateScale();
}

void HeadlessWindow::updateScale() {
    if (isClosed())
        return;
    const double scale = headless_.getScaleAt(getRect());
    if (scale == getScaleFactor())
        return;
    const CmRect device = scaledOutward({0, 0, getSize().width, getSize().height}, scale);
    reportScale(scale, device.size());
}

void HeadlessWindow::nativeShow(ShowState state, uint32_t flags) {
    const Ref<WindowBase> self = retain<WindowBase>(this);
    if (state != getShowState())
        nativeSetShowState(state);
    if (!(flags & showWithoutActivation) && getShowState() != ShowState::minimized)
        nativeActivate();
}

void HeadlessWindow::nativeMove(CmPoint position, CmSize size) {
    if (getShowState() == ShowState::normal)
        place(CmRect::ofSize(position, size));
}

void HeadlessWindow::nativeActivate() {
    if (isVisible())
        headless_.activateWindow(this);
}

void HeadlessWindow::nativeSetShowState(ShowState state) {
    const Ref<WindowBase> self = retain<WindowBase>(this);
    const CmRect restored = getRestoredRect();
    if (state == ShowState::maximized) {
        CmRect work;
        headless_.getMonitorRect(headless_.monitorAt(getPosition()), MonitorArea::work, work);
        place(work);
    } else if (state == ShowState::normal) {
        place(restored);
    }
    // The rect of the moment of maximizing stays the one to come back to.
    setRestoredRect(restored);
    reportShowState(state);
    if (state == ShowState::minimized)
        headless_.windowMinimized(*this);
}

void HeadlessWindow::pressClose() {
    if (getClient() && isEnabled())
        getClient()->closePressed();
}

void HeadlessWindow::sizeByUser(CmSize size) {
    const Ref<WindowBase> self = retain<WindowBase>(this);
    if (getClient())
        getClient()->sizeTrackingStarted();
    if (!isClosed())
        place(CmRect::ofSize(getPosition(), withinLimits(size)));
    if (getClient())
        getClient()->sizeTrackingEnded();
}

void HeadlessWindow::moveByUser(CmPoint position) {
    place(CmRect::ofSize(position, getSize()));
}

} // namespace qorl::platform

#include "windows/WindowPlatformSide.h"

#include "windows/UWindow.h"
#include "windows/WindowCore.h"

namespace qorl {

void WindowPlatformSide::paint(const platform::PixelSurface& surface, const platform::Region& region,
                               platform::Region& drawn) {
    const Ref<UWindow> keep = retain(&window_);
    window_.paint(surface, region, &drawn);
}

bool WindowPlatformSide::mouse(const platform::MouseEvent& event) {
    return window_.mouseEvent(event);
}

bool WindowPlatformSide::key(const platform::KeyEvent& event) {
    return window_.keyEvent(event);
}

void WindowPlatformSide::moved(CmPoint position) {
    const Ref<UWindow> keep = retain(&window_);
    window_.sized(CmRect::ofSize(position, window_.getFrameSize()));
}

void WindowPlatformSide::sized(CmSize size) {
    const Ref<UWindow> keep = retain(&window_);
    window_.sized(CmRect::ofSize(window_.getFrameRect().origin(), size));
}

void WindowPlatformSide::sizeTrackingStarted() {
    const Ref<UWindow> keep = retain(&window_);
    window_.sizeTracking(UWindow::SizeTracking::started);
}

void WindowPlatformSide::sizeTrackingEnded() {
    const Ref<UWindow> keep = retain(&window_);
    window_.sizeTracking(UWindow::SizeTracking::ended);
}

void WindowPlatformSide::activated(MainWindow main) {
    const Ref<UWindow> keep = retain(&window_);
    window_.activationChanged(UWindow::Activation::gained, main);
}

void WindowPlatformSide::deactivated(MainWindow main) {
    const Ref<UWindow> keep = retain(&window_);
    window_.activationChanged(UWindow::Activation::lost, main);
}

void WindowPlatformSide::closePressed() {
    // A dialog that keeps input from this window keeps it from its frame too.
    if (!window_.isInputBlocked())
        window_.closeDeferred();
}

void WindowPlatformSide::minimized() {
    const Ref<UWindow> keep = retain(&window_);
    window_.stateChangedTo(WindowState::minimized);
}

void WindowPlatformSide::maximized() {
    const Ref<UWindow> keep = retain(&window_);
    window_.stateChangedTo(WindowState::maximized);
}

void WindowPlatformSide::restored() {
    const Ref<UWindow> keep = retain(&window_);
    window_.stateChangedTo(WindowState::normal);
}

void WindowPlatformSide::colorSchemeChanged() {
    const Ref<UWindow> keep = retain(&window_);
    window_.userColorsChanged();
}

bool WindowPlatformSide::wheel(const platform::WheelEvent& event) {
    return window_.wheelEvent(event);
}

void WindowPlatformSide::scaleFactorChanged(double) {
    window_.invalidateAll();
}

void WindowPlatformSide::captureLost() {
    const Ref<UWindow> keep = retain(&window_);
    window_.captureLost();
}

void WindowPlatformSide::ownerClosed() {
    window_.willClose(false);
}

} // namespace qorl

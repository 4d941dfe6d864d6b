#include "windows/UWindow.h"
#include "windows/WindowCore.h"

#include <utility>

namespace qorl {

void UWindow::captureMouse(UView* view) {
    if (view && view->getWindow() != this)
        return;
    const Ref<UView> earlier = retain(std::exchange(core_->captureView, view));
    if (earlier && earlier != view)
        earlier->mouseCaptureLost();
}

void UWindow::releaseMouse(UView* view) {
    if (core_->captureView == view)
        core_->captureView = nullptr;
}

void UWindow::captureLost() {
    core_->clickTracker.cancel();
    setWindowFlag(clientDragged, false);
    captureMouse(nullptr);
}

UView* UWindow::getMouseCapture() const {
    return core_->captureView;
}

} // namespace qorl

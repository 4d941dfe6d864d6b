#include "windows/UWindow.h"
#include "windows/WindowCore.h"

namespace qorl {

void UWindow::captureMouse(UView* view) {
    core_->captureView = view;
}

void UWindow::releaseMouse(UView* view) {
    if (core_->captureView == view)
        core_->captureView = nullptr;
}

void UWindow::captureLost() {
    core_->clickTracker.cancel();
    setWindowFlag(clientDragged, false);
    if (const Ref<UView> holder = retain(std::exchange(core_->captureView, nullptr)))
        holder->mouseCaptureLost();
}

UView* UWindow::getMouseCapture() const {
    return core_->captureView;
}

} // namespace qorl

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

UView* UWindow::getMouseCapture() const {
    return core_->captureView;
}

} // namespace qorl

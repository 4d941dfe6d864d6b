#include "windows/UModalDialog.h"

#include "windows/UDesktop.h"

namespace qorl {

UModalDialog::UModalDialog(const CmRect& frame, uint32_t style, const ConstString& title)
    : UWindow(frame, style | styleModalDialog, title) {
    setWindowFlag(firstFrontList | secondFrontList, true);
    center();
}

bool UModalDialog::keyDown(const UKeyCode& key) {
    const bool isPlain = key.modifiers == 0;
    if (isPlain && key.virtualKey == Key::escape) {
        closeDeferred(CloseReason::canceled);
        return true;
    }
    return UWindow::keyDown(key);
}

void UModalDialog::endModal(int32_t result) {
    modalResult_ = result;
    closeDeferred();
}

AccessibleRole UModalDialog::getAccessibleRole() const {
    return AccessibleRole::dialog;
}

} // namespace qorl

#include "windows/UModalDialog.h"

#include "foundation/Cast.h"
#include "views/FocusPolicy.h"
#include "views/controls/UControl.h"
#include "windows/UDesktop.h"

namespace qorl {

UModalDialog::UModalDialog(const CmRect& frame, uint32_t style, const ConstString& title)
    : UWindow(frame, style | styleModalDialog, title) {
    setWindowFlag(firstFrontList | secondFrontList, true);
    center();
}

bool UModalDialog::show() {
    if (!defaultControl_)
        defaultControl_ = cast<UControl>(findSubView(viewsWhere([](UView* view) {
            const auto* control = cast<UControl>(view);
            return control && control->isDefaultControl();
        })));
    return UWindow::show();
}

UView* UModalDialog::findFirstFocus() {
    if (UView* first = UWindow::findFirstFocus())
        return first;
    return defaultControl_ && canTakeFocus(defaultControl_) ? defaultControl_ : nullptr;
}

bool UModalDialog::keyDown(const UKeyCode& key) {
    const bool isPlain = key.modifiers == 0;
    if (isPlain && key.isEnter() && pressDefaultControl())
        return true;
    if (isPlain && key.virtualKey == Key::escape) {
        modalResult_ = canceledResult;
        closeDeferred(CloseReason::canceled);
        return true;
    }
    return UWindow::keyDown(key);
}

bool UModalDialog::pressDefaultControl() {
    if (!defaultControl_ || !defaultControl_->isEnabled())
        return false;
    const Ref<Binding::Value> value = retain(defaultControl_->getValueObject());
    Binding::IBoundValue* bound = value->bound();
    if (!bound->isEnabled())
        return false;
    const int32_t before = bound->getValue();
    bound->setValueAndPerform(bound->getMax());
    bound->setValueAndPerform(before);
    return true;
}

void UModalDialog::viewClosing(UView* view) {
    if (view == defaultControl_ || view->isDescendant(defaultControl_))
        defaultControl_ = nullptr;
    UWindow::viewClosing(view);
}

void UModalDialog::endModal(int32_t result) {
    modalResult_ = result;
    closeDeferred();
}

bool UModalDialog::mayClose() {
    if (UWindow::mayClose())
        return true;
    // The answer went with the close that was refused.
    modalResult_ = canceledResult;
    return false;
}

AccessibleRole UModalDialog::getAccessibleRole() const {
    return AccessibleRole::dialog;
}

} // namespace qorl

#include "windows/UPopupWindow.h"

#include "foundation/messages/FMessage.h"
#include "schemes/SchemeKeys.h"
#include "schemes/UScheme.h"
#include "windows/UDesktop.h"
#include "windows/WindowCore.h"

namespace qorl {

UPopupWindow::UPopupWindow(const CmRect& frame, uint32_t style, const ConstString& title)
    : UWindow(frame, style, title), lifetimeTimer_(this) {
    setWindowFlag(firstFrontList | secondFrontList, false);
}

UColor UPopupWindow::getBackgroundColor(const UView* forView) const {
    const UScheme* scheme = getScheme();
    if (hasWindowFlag(ownBackground) || !scheme)
        return UWindow::getBackgroundColor(forView);
    return scheme->getColor(SchemeColor::panelback);
}

bool UPopupWindow::show() {
    UDesktop* desktop = UDesktop::instance();
    if (desktop && hasWindowFlag(replacesOpenPopup)) {
        setWindowFlag(closesOnOutsideClick, true);
        previousPopup_ = retain(desktop->getOpenPopup());
        if (previousPopup_ && previousPopup_->hasStyle(styleClientMovable))
            previousPopup_->setStyle(previousPopup_->getStyle() & ~styleClientMovable);
        else
            previousPopup_.reset();
    }
    if (!UWindow::show())
        return false;
    if (hasWindowFlag(closesOnSecondPress))
        setStyle(getStyle() | styleClientMovable);
    if (desktop && hasWindowFlag(closesOnOutsideClick))
        desktop->setOpenPopup(this);
    return true;
}

bool UPopupWindow::hide() {
    if (hasStyle(styleClientMovable)) {
        closeDeferred();
        return true;
    }
    const Ref<UPopupWindow> keep = retain(this);
    // Presses elsewhere have nothing to close while it doesn't show.
    if (UDesktop* desktop = UDesktop::instance(); desktop && desktop->getOpenPopup() == this)
        desktop->setOpenPopup(nullptr);
    return UWindow::hide();
}

bool UPopupWindow::mayClose() {
    if (UWindow::mayClose())
        return true;
    // Whoever asked the desktop to close the popups took it for gone.
    UDesktop* desktop = UDesktop::instance();
    if (desktop && hasWindowFlag(closesOnOutsideClick) && isVisible() && !desktop->getOpenPopup())
        desktop->setOpenPopup(this);
    return false;
}

void UPopupWindow::willClose(bool canceled) {
    // The desktop may hold the last reference, and gives it up in the base's close.
    const Ref<UPopupWindow> keep = retain(this);
    lifetimeTimer_.stop();
    UWindow::willClose(canceled);
    UDesktop* desktop = UDesktop::instance();
    if (desktop && previousPopup_ && previousPopup_->isOpen() && !desktop->getOpenPopup())
        desktop->setOpenPopup(previousPopup_.get());
    previousPopup_.reset();
}

bool UPopupWindow::mouseDown(CmPoint point) {
    lastClickInside_ = getClientBounds().contains(point);
    if (hasWindowFlag(closesOnOutsideClick) && !lastClickInside_) {
        core().pressIsSpent = true;
        if (UDesktop* desktop = UDesktop::instance())
            desktop->closePopups();
        return true;
    }
    if (hasWindowFlag(closesOnAnyClick)) {
        core().pressIsSpent = true;
        closeDeferred();
        return true;
    }
    const Ref<UPopupWindow> keep = retain(this);
    const bool taken = UWindow::mouseDown(point);
    // The platform gives every press the mouse; what counts is whether the press began to track it.
    if (hasWindowFlag(closesAfterClick) && !getMouseCapture() && !hasWindowFlag(clientDragged))
        closeDeferred();
    return taken;
}

int32_t UPopupWindow::handleMessage(FMessage* message) {
    if (!message->isNamed("Timer") || message->getObject("Timer") != &lifetimeTimer_)
        return UWindow::handleMessage(message);
    lifetimeTimer_.stop();
    setWindowFlag(lifetimeRunning, false);
    closeDeferred();
    return handled;
}

void UPopupWindow::setLifetime(int32_t milliseconds) {
    setWindowFlag(lifetimeRunning, milliseconds >= 1);
    if (milliseconds >= 1)
        lifetimeTimer_.start(milliseconds);
    else
        lifetimeTimer_.stop();
}

} // namespace qorl

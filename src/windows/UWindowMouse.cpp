#include "foundation/messages/FMessage.h"
#include "platform/DesktopServices.h"
#include "platform/Platform.h"
#include "views/GeometryAttributes.h"
#include "windows/UDesktop.h"
#include "windows/UPopupWindow.h"
#include "windows/UWindow.h"
#include "windows/WindowCore.h"

#include <cmath>

namespace qorl {

namespace {

CmPoint toLogical(CmPoint pixel, double factor) {
    if (factor == 1.0 || factor <= 0)
        return pixel;
    return {static_cast<int32_t>(std::floor(pixel.x / factor)),
            static_cast<int32_t>(std::floor(pixel.y / factor))};
}

bool belongsTo(const UWindow* window, const UWindow* popup) {
    for (; window; window = window->getParentWindow())
        if (window == popup)
            return true;
    return false;
}

/// Everything at the point, the deepest view in front last.
void collectViewsAt(UView& view, CmPoint point, std::vector<Ref<UView>>& found) {
    view.forEachSubView([&](UView& subView) {
        if (!subView.isShown() || !subView.getFrameRect().contains(point))
            return;
        found.push_back(retain(&subView));
        if (subView.hitsClient(subView.parentToFrame(point)))
            collectViewsAt(subView, subView.parentToClient(point), found);
    });
}

} // namespace

// Entry

bool UWindow::mouseEvent(const platform::MouseEvent& event) {
    const Ref<UWindow> keep = retain(this);
    const CmPoint point = toLogical(event.position, getScaleFactor());
    setPoint(getAttributes(), mouseLocationKey, point);
    switch (event.kind) {
    case platform::MouseKind::move: return mouseMoved(point);
    case platform::MouseKind::leave: mouseLeft(); return true;
    case platform::MouseKind::down: return mousePressed(point, event);
    case platform::MouseKind::up: return mouseReleased(point, event);
    case platform::MouseKind::enter: getAttributes().remove(mouseLocationKey); return true;
    }
    return false;
}

bool UWindow::mouseMoved(CmPoint point) {
    UDesktop* desktop = UDesktop::instance();
    if (desktop && desktop->windowUnderMouse() != this) {
        const Ref<UWindow> old = retain(desktop->windowUnderMouse());
        // Before the other hears that it was left: that may close this one.
        desktop->setWindowUnderMouse(this);
        if (old)
            old->mouseLeft();
    }
    if (hasWindowFlag(clientDragged)) {
        // By the screen: a window manager moves the window before it tells where it is.
        setPosition(platform::desktop()->getMousePosition() - core_->dragOffset);
        return true;
    }
    // A dialog that came up under a gesture ends it.
    if (core_->captureView && isInputBlocked())
        captureLost();
    if (const Ref<UView> holder = retain(core_->captureView))
        return holder->mouseOver(holder->windowToClient(point));
    updateHover(point);
    return true;
}

void UWindow::mouseLeft() {
    CmPoint point;
    if (getMouseLocation(point))
        getAttributes().remove(mouseLocationKey);
    if (UDesktop* desktop = UDesktop::instance())
        if (desktop->windowUnderMouse() == this)
            desktop->setWindowUnderMouse(nullptr);
    setHoverView(nullptr, point);
}

bool UWindow::mousePressed(CmPoint point, const platform::MouseEvent& event) {
    core_->clickTracker.press(point, event.buttons, event.time);
    if (core_->platformWindow)
        platform::desktop()->setCapture(*core_->platformWindow);
    if (UDesktop* desktop = UDesktop::instance(); desktop && hasWindowFlag(firstFrontList | secondFrontList))
        desktop->bringWindowToFront(this);
    core_->pressIsSpent = false;
    const uint32_t outer = std::exchange(core_->pressButtons, event.buttons);
    const bool taken = mouseDown(point);
    core_->pressButtons = outer;
    return taken;
}

bool UWindow::mouseReleased(CmPoint point, const platform::MouseEvent& event) {
    const bool isClick = core_->clickTracker.release(point);
    platform::DesktopServices* desktop = platform::desktop();
    const bool isLast = !desktop || desktop->eventMouseButtons() == platform::noButton;
    if (isInputBlocked())
        captureMouse(nullptr);
    if (isLast) {
        setWindowFlag(clientDragged, false);
        if (desktop && desktop->getCapture() == core_->platformWindow.get())
            desktop->releaseCapture();
    }
    if (isInputBlocked())
        return false;
    if (!isLast && core_->captureView)
        return true;
    if (core_->pressIsSpent) {
        updateHover(point);
        return true;
    }
    UView* holder = std::exchange(core_->captureView, nullptr);
    const Ref<UView> target = retain(holder ? holder : core_->hoverView ? core_->hoverView : this);
    const uint32_t outer = std::exchange(core_->pressButtons, event.buttons);
    bool taken = target->mouseUp(target->windowToClient(point));
    core_->pressButtons = outer;
    if (isClick && !hasWindowFlag(closed))
        taken = sendClick(point, event.modifiers) || taken;
    if (!hasWindowFlag(closed))
        updateHover(point);
    return taken;
}

bool UWindow::sendClick(CmPoint point, uint32_t modifiers) {
    UView* at = findViewAt(point, true);
    const Ref<UView> target = retain(at ? at : this);
    if (!target->isEnabled())
        return false;
    return target->click({{target.get(), target->getViewId()},
                          target->windowToClient(point),
                          modifiers,
                          core_->clickTracker.buttons(),
                          core_->clickTracker.isDoubleClick()});
}

bool UWindow::wheelEvent(const platform::WheelEvent& event) {
    const Ref<UWindow> keep = retain(this);
    if (isInputBlocked())
        return false;
    const CmPoint point = toLogical(event.position, getScaleFactor());
    UView* at = findViewAt(point, true);
    for (Ref<UView> view = retain(at ? at : this); view; view = retain(view->getParent())) {
        if (!view->isEnabled())
            continue;
        WheelEvent wheel;
        wheel.head = {view.get(), view->getViewId()};
        wheel.flags = event.flags;
        wheel.deltaX = event.deltaX;
        wheel.deltaY = event.deltaY;
        if (view->mouseWheel(wheel) == Result::ok)
            return true;
    }
    return false;
}

// Press

bool UWindow::isInputBlocked() const {
    return !isEnabled() ||
           (core_->platformWindow && platform::desktop()->isModalBlocking(*core_->platformWindow));
}

uint32_t UWindow::pressedButtons() const {
    if (core_->pressButtons != platform::noButton)
        return core_->pressButtons;
    return platform::desktop() ? platform::desktop()->eventMouseButtons() : platform::noButton;
}

bool UWindow::isDoubleClick() const {
    return core_->clickTracker.isDoubleClick();
}

bool UWindow::mouseDown(CmPoint point) {
    UDesktop* desktop = UDesktop::instance();
    if (desktop && desktop->tellMouseDown(this, point, pressedButtons())) {
        core_->pressIsSpent = true;
        return true;
    }
    if (isInputBlocked())
        return false;
    if (const Ref<UPopupWindow> popup = retain(desktop ? desktop->getOpenPopup() : nullptr);
        popup && !belongsTo(this, popup.get())) {
        desktop->closePopups();
        if (popup->hasWindowFlag(UPopupWindow::closesOnOutsideClick)) {
            core_->pressIsSpent = true;
            return true;
        }
    }
    if (pressedButtons() == platform::rightButton)
        return pressRight(point);
    if (UView::mouseDown(point))
        return true;
    if (!hasStyle(styleClientMovable) || !getClientBounds().contains(point) || hasWindowFlag(closed))
        return false;
    beginClientDrag(point);
    return true;
}

bool UWindow::pressRight(CmPoint point) {
    const Ref<UView> target = retain(findViewAt(point, true));
    for (UView* view = target.get(); view; view = view->getParent()) {
        if (!view->isFocusable())
            continue;
        if (UDesktop* desktop = UDesktop::instance())
            desktop->setFocus(view->getFocusView());
        break;
    }
    const Ref<FMessage> message = make<FMessage>(ConstString("RightMouseClick"));
    message->setObject("MouseView", target ? target.get() : this);
    setPoint(message->attributes(), "Position", point);
    return tellController(*message) != notHandled || UView::mouseDown(point);
}

void UWindow::beginClientDrag(CmPoint point) {
    setWindowFlag(clientDragged, true);
    core_->dragOffset = clientToScreen(point) - getPosition();
    if (core_->platformWindow)
        platform::desktop()->setCapture(*core_->platformWindow);
}

// Hover

UView* UWindow::getHoverView() const {
    return core_->hoverView;
}

void UWindow::refreshHover() {
    CmPoint point;
    if ((core_->stateFlags & WindowCore::inHoverRefresh) || !getMouseLocation(point))
        return;
    const Ref<UWindow> keep = retain(this);
    core_->setStateFlag(WindowCore::inHoverRefresh, true);
    updateHover(point);
    core_->setStateFlag(WindowCore::inHoverRefresh, false);
}

void UWindow::setHoverView(UView* view, CmPoint point) {
    const Ref<UView> old = retain(core_->hoverView);
    if (old == view)
        return;
    core_->hoverView = view;
    if (old) {
        UDesktop* desktop = UDesktop::instance();
        old->mouseLeave(old->windowToClient(point));
        if (desktop && desktop->getCursorOwner() == old.get())
            desktop->setCursor(nullptr, nullptr);
    }
    if (view && core_->hoverView == view)
        view->mouseEnter(view->windowToClient(point));
}

void UWindow::updateHover(CmPoint point) {
    const Ref<UWindow> keep = retain(this);
    if (UDesktop* desktop = UDesktop::instance())
        desktop->tellMouseMove(this, point);
    if (core_->hoverView && isStillHovered(point))
        return;
    if (isInputBlocked())
        return;
    if (mouseOver(point)) {
        setHoverView(this, point);
        return;
    }
    findHoverView(point);
}

bool UWindow::isStillHovered(CmPoint point) {
    const Ref<UView> view = retain(core_->hoverView);
    CmRect visible;
    const CmPoint inView = view->windowToClient(point);
    const bool isInside = view->isVisible() && !isInputBlocked() && view->getVisibleFrameRect(visible) &&
                          visible.contains(inView);
    if (isInside && view->mouseOver(inView) && core_->hoverView == view.get())
        return true;
    if (core_->hoverView == view.get())
        setHoverView(nullptr, point);
    return false;
}

void UWindow::findHoverView(CmPoint point) {
    std::vector<Ref<UView>> candidates;
    collectViewsAt(*this, point, candidates);
    while (!candidates.empty()) {
        const Ref<UView> view = std::move(candidates.back());
        candidates.pop_back();
        if (view->getWindow() != this || !view->isEnabled() || !view->mouseOver(view->windowToClient(point)))
            continue;
        // Whoever heard of the mouse may have taken the view away.
        if (view->getWindow() != this)
            continue;
        setHoverView(view.get(), point);
        return;
    }
    CmRect inner = getClientBounds();
    --inner.right;
    --inner.bottom;
    UDesktop* desktop = UDesktop::instance();
    if (desktop && inner.contains(point))
        desktop->setCursor(nullptr, nullptr);
}

bool UWindow::getMouseLocation(CmPoint& point) const {
    const FAttributes* attributes = peekAttributes();
    return attributes && getPoint(*attributes, mouseLocationKey, point);
}

bool UWindow::getMousePosition(CmPoint& point) const {
    if (getMouseLocation(point))
        return true;
    if (!platform::desktop())
        return false;
    point = screenToClient(platform::desktop()->getMousePosition());
    return true;
}

bool UWindow::isMouseDown() const {
    return platform::desktop() && platform::desktop()->eventMouseButtons() != platform::noButton;
}

} // namespace qorl

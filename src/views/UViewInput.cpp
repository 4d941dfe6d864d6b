#include "foundation/messages/FMessage.h"
#include "platform/DesktopServices.h"
#include "platform/Platform.h"
#include "views/FocusPolicy.h"
#include "views/UView.h"
#include "views/ViewRare.h"
#include "windows/UDesktop.h"
#include "windows/UWindow.h"

#include <cmath>
#include <limits>

namespace qorl {

namespace {

MouseEvent mouseEventFor(UView& view, CmPoint point) {
    MouseEvent event;
    event.head = {&view, view.getViewId()};
    event.clientWidth = view.getClientSize().width;
    event.clientHeight = view.getClientSize().height;
    event.position = point;
    if (const platform::DesktopServices* desktop = platform::desktop())
        event.modifiers = desktop->currentModifiers();
    if (const UWindow* window = view.getWindow()) {
        event.buttons = window->pressedButtons();
        event.isDoubleClick = window->isDoubleClick();
    }
    return event;
}

bool isRightPress(const UView& view) {
    const UWindow* window = view.getWindow();
    return window && (window->pressedButtons() & platform::rightButton) != 0;
}

bool isLeftPress(const UView& view) {
    const UWindow* window = view.getWindow();
    return !window || window->pressedButtons() == platform::noButton ||
           (window->pressedButtons() & platform::leftButton) != 0;
}

/// A press into the focus view itself leaves the focus where it is, although the view that is asked holds it.
bool pressHitsFocus(UView& subView, CmPoint frameInWindow, UView* focus) {
    if (!focus || !subView.isDescendant(focus) || focus->getWindow() != subView.getWindow())
        return false;
    return CmRect::ofSize(focus->frameToWindow({}), focus->getFrameSize()).contains(frameInWindow);
}

void focusOnPress(UView& subView, CmPoint pointInWindow) {
    UDesktop* desktop = UDesktop::instance();
    if (!desktop || !subView.wantsFocusOnClick() || !isLeftPress(subView))
        return;
    UView* focus = desktop->getFocus();
    if (focus == &subView || pressHitsFocus(subView, pointInWindow, focus))
        return;
    desktop->setFocus(subView.getFocusView());
}

bool tellWheel(UView& view, const WheelEvent& event, double distance, int32_t axis) {
    if (std::abs(distance) <= std::numeric_limits<double>::epsilon())
        return false;
    const Ref<FMessage> message = make<FMessage>(ConstString("Wheel"));
    message->setFloat("Distance", distance);
    message->setInt("Axis", axis);
    if (event.flags & WheelEvent::Flag::inverted)
        message->setInt("Inverted", 1);
    if (event.flags & WheelEvent::Flag::invertForHorizontalScroll)
        message->setInt("InvertDeltaForHScroll", 1);
    return view.handleMessage(message.get()) == CmObject::handled;
}

} // namespace

// Presses

bool UView::mouseDown(CmPoint point) {
    if (!isEnabled())
        return false;
    if (ViewRare* rare = peekRare(); rare && rare->mouseListeners) {
        const MouseEvent event = mouseEventFor(*this, point);
        rare->mouseListeners->tell([&](IViewMouseListener& listener) { listener.viewMouseDown(event); });
    }
    SubViewIterator walk(*this, SubViewIterator::Walk::reverse);
    while (UView* candidate = walk.next()) {
        if (!candidate->isShown() || candidate->hasFlag(viewDisabled) ||
            !candidate->getFrameRect().contains(point))
            continue;
        const Ref<UView> subView = retain(candidate);
        focusOnPress(*subView, clientToWindow(point));
        const bool isClient = subView->hitsClient(subView->parentToFrame(point));
        const bool isBaseOnly = isRightPress(*subView) && !subView->hasFlag(viewTakesRightClick);
        if (!isClient && isBaseOnly)
            return false;
        const bool taken = !isClient    ? subView->mouseDownInFrame(subView->parentToFrame(point))
                           : isBaseOnly ? subView->UView::mouseDown(subView->parentToClient(point))
                                        : subView->mouseDown(subView->parentToClient(point));
        // A press that took its view out of the window is spent.
        if (taken || !subView->isRealized())
            return true;
    }
    return false;
}

bool UView::mouseUp(CmPoint point) {
    if (!isEnabled())
        return false;
    if (ViewRare* rare = peekRare(); rare && rare->mouseListeners) {
        const MouseEvent event = mouseEventFor(*this, point);
        rare->mouseListeners->tell([&](IViewMouseListener& listener) { listener.viewMouseUp(event); });
    }
    SubViewIterator walk(*this, SubViewIterator::Walk::reverse);
    while (UView* candidate = walk.next()) {
        if (!candidate->isShown() || candidate->hasFlag(viewDisabled) ||
            !candidate->getFrameRect().contains(point))
            continue;
        const Ref<UView> subView = retain(candidate);
        if (!subView->hitsClient(subView->parentToFrame(point)))
            continue;
        if (subView->mouseUp(subView->parentToClient(point)) || !subView->isRealized())
            return true;
    }
    return false;
}

bool UView::mouseDownInFrame(CmPoint) {
    return false;
}

bool UView::click(const ClickEvent& event) {
    ViewRare* rare = peekRare();
    if (!rare || !rare->mouseListeners)
        return false;
    rare->mouseListeners->tell([&](IViewMouseListener& listener) { listener.viewClicked(event); });
    return false;
}

// Hover

bool UView::mouseEnter(CmPoint point) {
    ViewRare* rare = peekRare();
    if (!rare || !rare->moveListeners || rare->moveListeners->isEmpty())
        return false;
    const MouseEvent event = mouseEventFor(*this, point);
    rare->moveListeners->tell([&](IViewMoveListener& listener) { listener.viewMouseEnter(event); });
    return true;
}

bool UView::mouseOver(CmPoint point) {
    ViewRare* rare = peekRare();
    if (!rare || !rare->moveListeners || rare->moveListeners->isEmpty() || !isEnabled())
        return false;
    const MouseEvent event = mouseEventFor(*this, point);
    rare->moveListeners->tell([&](IViewMoveListener& listener) { listener.viewMouseOver(event); });
    return true;
}

bool UView::mouseLeave(CmPoint point) {
    ViewRare* rare = peekRare();
    if (!rare || !rare->moveListeners || rare->moveListeners->isEmpty())
        return false;
    const MouseEvent event = mouseEventFor(*this, point);
    rare->moveListeners->tell([&](IViewMoveListener& listener) { listener.viewMouseLeave(event); });
    return true;
}

bool UView::getMousePosition(CmPoint& point) const {
    const UWindow* window = getWindow();
    if (!window || !window->getMousePosition(point))
        return false;
    point = windowToClient(point);
    return true;
}

bool UView::isMouseDown() const {
    const UWindow* window = getWindow();
    return window && window->isMouseDown();
}

// Wheel

Result UView::wheelHook(WheelEvent&) {
    return Result::notImplemented;
}

Result UView::mouseWheel(WheelEvent& event) {
    const Ref<UView> keep = retain(this);
    if (ViewRare* rare = peekRare(); rare && rare->mouseListeners)
        rare->mouseListeners->tell([&](IViewMouseListener& listener) { listener.viewMouseWheel(event); });
    if (wheelHook(event) != Result::notImplemented)
        return Result::ok;
    if (tellWheel(*this, event, event.deltaX, 2))
        event.handled = true;
    if (tellWheel(*this, event, event.deltaY, 1))
        event.handled = true;
    return event.handled ? Result::ok : Result::notImplemented;
}

// Keys

bool UView::keyDown(const UKeyCode& key) {
    const Ref<UView> keep = retain(this);
    UDesktop* desktop = UDesktop::instance();
    UWindow* window = getWindow();
    if (desktop && desktop->getFocus() == this)
        if (IFocusDelegate* delegate = getFocusDelegate())
            if (delegate->handleKey(this, key))
                return true;
    if (desktop && !desktop->getFocus() && window)
        desktop->chooseFocus(window);
    UView* focus = desktop ? desktop->getFocus() : nullptr;
    if (navigateFocus(focus && focus->getWindow() == window ? focus : this, focusDirectionOf(key)))
        return true;
    if (ViewRare* rare = peekRare(); rare && rare->keyListeners)
        rare->keyListeners->tell([&](IViewKeyListener& listener) { listener.viewKeyDown(this, key); });
    const Ref<UView> parent = retain(getParent());
    return parent && parent->keyDown(key);
}

bool UView::keyUp(const UKeyCode& key) {
    const Ref<UView> keep = retain(this);
    if (ViewRare* rare = peekRare(); rare && rare->keyListeners)
        rare->keyListeners->tell([&](IViewKeyListener& listener) { listener.viewKeyUp(this, key); });
    const Ref<UView> parent = retain(getParent());
    return parent && parent->keyUp(key);
}

// Focus

bool UView::isFocusable() const {
    return hasFlag(viewFocusable);
}

UView* UView::getFocusView() {
    return this;
}

void UView::focusGained() {
    setFocusedLook(true);
    if (ViewRare* rare = peekRare(); rare && rare->lifecycleListeners)
        rare->lifecycleListeners->tell(
            [&](IViewLifecycleListener& listener) { listener.viewFocusGained(this); });
}

void UView::focusLost() {
    setFocusedLook(false);
    if (ViewRare* rare = peekRare(); rare && rare->lifecycleListeners)
        rare->lifecycleListeners->tell(
            [&](IViewLifecycleListener& listener) { listener.viewFocusLost(this); });
}

bool UView::wantsFocusOnClick() const {
    return isFocusable();
}

void UView::focusHook(int32_t) {}

// Drags

bool UView::dragEnter(CmPoint point, UDragPack* pack) {
    IDragHandler* handler = getDragHandler();
    return handler && handler->dragEnter(this, point, pack);
}

bool UView::dragLeave(CmPoint point, UDragPack* pack) {
    IDragHandler* handler = getDragHandler();
    return handler && handler->dragLeave(this, point, pack);
}

bool UView::dragInside(CmPoint point, UDragPack* pack) {
    IDragHandler* handler = getDragHandler();
    return !handler || handler->dragInside(this, point, pack);
}

bool UView::dragWouldAccept(CmPoint point, UDragPack* pack) {
    IDragHandler* handler = getDragHandler();
    return handler && handler->dragWouldAccept(this, point, pack);
}

int32_t UView::dragDrop(CmPoint point, UDragPack* pack) {
    IDragHandler* handler = getDragHandler();
    return handler ? handler->dragDrop(this, point, pack) : 0;
}

bool UView::acceptsDrop(UDragPack*, CmPoint) {
    return false;
}

} // namespace qorl

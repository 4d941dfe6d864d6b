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
        event.modifiers = desktop->eventModifiers();
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

using MouseCall = void (IViewMouseListener::*)(const MouseEvent&);
using MoveCall = void (IViewMoveListener::*)(const MouseEvent&);

void tellMouse(UView& view, CmPoint point, MouseCall call) {
    ViewRare* rare = view.peekRare();
    if (!rare || !rare->mouseListeners)
        return;
    const MouseEvent event = mouseEventFor(view, point);
    rare->mouseListeners->tell([&](IViewMouseListener& listener) { (listener.*call)(event); });
}

/// False when nobody listens.
bool tellMove(UView& view, CmPoint point, MoveCall call) {
    ViewRare* rare = view.peekRare();
    if (!rare || !rare->moveListeners || rare->moveListeners->isEmpty())
        return false;
    const MouseEvent event = mouseEventFor(view, point);
    rare->moveListeners->tell([&](IViewMoveListener& listener) { (listener.*call)(event); });
    return true;
}

/// What a subview makes of the mouse.
enum class Answer : uint8_t { taken, leftToNext, endsWalk };

/// Asks the shown and enabled subviews whose frames hold the point, from the front to the back, until one
/// takes it.
template <typename Ask>
bool askSubViewsAt(UView& view, CmPoint point, Ask&& ask) {
    SubViewIterator walk(view, SubViewIterator::Walk::reverse);
    while (UView* candidate = walk.next()) {
        if (!candidate->isShown() || candidate->hasFlag(viewDisabled) ||
            !candidate->getFrameRect().contains(point))
            continue;
        const Ref<UView> subView = retain(candidate);
        const Answer answer = ask(*subView);
        if (answer == Answer::endsWalk)
            return false;
        // A press that took its view out of the window is spent.
        if (answer == Answer::taken || !subView->isRealized())
            return true;
    }
    return false;
}

Answer answerOf(bool taken) {
    return taken ? Answer::taken : Answer::leftToNext;
}

} // namespace

// Presses

bool UView::mouseDown(CmPoint point) {
    if (!isEnabled())
        return false;
    tellMouse(*this, point, &IViewMouseListener::viewMouseDown);
    return askSubViewsAt(*this, point, [&](UView& subView) {
        const bool wasAttached = subView.isAttached();
        focusOnPress(subView, clientToWindow(point));
        // Whoever lost the focus may have taken the view away.
        if (wasAttached && !subView.isAttached())
            return Answer::taken;
        const bool isBaseOnly = isRightPress(subView) && !subView.hasFlag(viewTakesRightClick);
        if (!subView.hitsClient(subView.parentToFrame(point)))
            return isBaseOnly ? Answer::endsWalk
                              : answerOf(subView.mouseDownInFrame(subView.parentToFrame(point)));
        const CmPoint client = subView.parentToClient(point);
        return answerOf(isBaseOnly ? subView.UView::mouseDown(client) : subView.mouseDown(client));
    });
}

bool UView::mouseUp(CmPoint point) {
    if (!isEnabled())
        return false;
    tellMouse(*this, point, &IViewMouseListener::viewMouseUp);
    return askSubViewsAt(*this, point, [&](UView& subView) {
        const bool isBaseOnly = isRightPress(subView) && !subView.hasFlag(viewTakesRightClick);
        if (!subView.hitsClient(subView.parentToFrame(point)))
            return isBaseOnly ? Answer::endsWalk : Answer::leftToNext;
        const CmPoint client = subView.parentToClient(point);
        return answerOf(isBaseOnly ? subView.UView::mouseUp(client) : subView.mouseUp(client));
    });
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
    return tellMove(*this, point, &IViewMoveListener::viewMouseEnter);
}

bool UView::mouseOver(CmPoint point) {
    return isEnabled() && tellMove(*this, point, &IViewMoveListener::viewMouseOver);
}

bool UView::mouseLeave(CmPoint point) {
    return tellMove(*this, point, &IViewMoveListener::viewMouseLeave);
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
        if (const Ref<IFocusDelegate> delegate = retain(getFocusDelegate()))
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

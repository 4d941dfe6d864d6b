#include "windows/UDesktop.h"

#include "foundation/Cast.h"
#include "foundation/containers/CmStack.h"
#include "foundation/messages/EventLoop.h"
#include "persistence/attributes/FAttributes.h"
#include "platform/DesktopServices.h"
#include "platform/Platform.h"
#include "platform/Region.h"
#include "windows/PlainTipPresenter.h"
#include "windows/UModalDialog.h"
#include "windows/UPopupWindow.h"
#include "windows/UToolTipHandler.h"

#include <algorithm>

namespace qorl {

namespace {

constinit UDesktop* theDesktop = nullptr;
constinit UDesktop::DeactivationHook deactivationHook = nullptr;

constexpr std::string_view cursorStackKey = "cursorStack";

/// What `popCursor` goes back to.
class CursorRecord : public CmObject {
    QORL_CLASS(CursorRecord, CmObject)

public:
    CursorRecord(Ref<UCursor> newCursor, UView* newOwner) : cursor(std::move(newCursor)), owner(newOwner) {}

    Ref<UCursor> cursor;
    UView* owner;
};

void forgetOwner(const CmStack* cursors, const UView* owner) {
    if (!cursors)
        return;
    for (CmLinkedListIterator iterator(*cursors); !iterator.done();) {
        auto* record = static_cast<CursorRecord*>(iterator.next());
        if (record->owner == owner)
            record->owner = nullptr;
    }
}

struct NearestFocus {
    CmPoint point;
    UView* view = nullptr;
    int64_t distance = 0;
};

void findNearestFocus(UView& parent, NearestFocus& nearest) {
    parent.forEachSubView([&](UView& view) {
        if (!view.isShown() || view.hasFlag(viewDisabled))
            return;
        if (view.isFocusable() && !view.getClientSize().isEmpty()) {
            const CmRect frame = CmRect::ofSize(view.frameToWindow({}), view.getFrameSize());
            const int64_t distance = platform::squaredDistance(frame, nearest.point);
            if (!nearest.view || distance < nearest.distance) {
                nearest.view = &view;
                nearest.distance = distance;
            }
        }
        findNearestFocus(view, nearest);
    });
}

} // namespace

UDesktop::UDesktop() : UWindow({}, 0, {}), tipPresenter_(std::make_unique<PlainTipPresenter>()) {
    theDesktop = this;
    if (platform::desktop())
        platform::desktop()->setTipPresenter(tipPresenter_.get());
}

UDesktop::~UDesktop() {
    if (platform::desktop())
        platform::desktop()->setTipPresenter(nullptr);
    tipPresenter_.reset();
    while (!windows_.empty())
        windows_.back()->willClose(true);
    toolTips_.reset();
    if (platform::desktop())
        platform::desktop()->setCursor(nullptr);
    cursor_.reset();
    if (CmStack* stack = cursorStack())
        stack->removeAll();
    UCursor::releaseStandardCursors();
    theDesktop = nullptr;
}

UDesktop* UDesktop::instance() {
    return theDesktop;
}

UToolTipHandler& UDesktop::toolTips() {
    if (!toolTips_) {
        toolTips_ = std::make_unique<UToolTipHandler>();
        addMouseObserver(toolTips_.get());
    }
    return *toolTips_;
}

void UDesktop::update() {
    if (platform::desktop())
        platform::desktop()->flushAll();
}

// Cursor

void UDesktop::setCursorPosition(CmPoint screenPoint) {
    if (platform::desktop())
        platform::desktop()->setMousePosition(screenPoint);
}

void UDesktop::showPlatformCursor(UCursor* cursor) {
    if (platform::desktop())
        platform::desktop()->setCursor(cursor ? cursor->platformCursor() : nullptr);
}

void UDesktop::setCursor(UCursor* cursor, UView* owner) {
    if (reinterpret_cast<uintptr_t>(cursor) == UINTPTR_MAX)
        return;
    const Ref<UCursor> old = std::exchange(cursor_, retain(cursor));
    cursorOwner_ = owner;
    if (waitCursor_)
        return;
    if (cursor)
        showPlatformCursor(cursor);
    else if (old)
        showPlatformCursor(UCursor::standard(platform::CursorShape::arrow));
}

CmStack* UDesktop::cursorStack() const {
    FAttributes* attributes = peekAttributes();
    return attributes ? cast<CmStack>(attributes->getObject(cursorStackKey).get()) : nullptr;
}

void UDesktop::pushCursor(UCursor* cursor, UView* owner) {
    CmStack* stack = cursorStack();
    if (!stack) {
        stack = new CmStack(Ownership::adopt);
        getAttributes().setObject(cursorStackKey, stack, FAttributes::Hold::adopt);
    }
    Ref<CursorRecord> record = make<CursorRecord>(cursor_, cursorOwner_);
    if (stack->add(record.get()))
        static_cast<void>(record.detach());
    setCursor(cursor, owner);
}

bool UDesktop::popCursor() {
    CmStack* stack = cursorStack();
    const auto top = Ref<CmObject>::adopt(stack ? stack->takeFirst() : nullptr);
    if (!top)
        return false;
    const auto& record = *static_cast<CursorRecord*>(top.get());
    setCursor(record.cursor.get(), record.owner);
    return true;
}

void UDesktop::setWaitCursor(bool wait) {
    waitCursor_ = wait;
    refreshCursor();
}

void UDesktop::showCursor(bool visible) {
    using Visibility = platform::DesktopServices::CursorVisibility;
    if (platform::desktop())
        platform::desktop()->showCursor(visible ? Visibility::shown : Visibility::hidden);
}

void UDesktop::refreshCursor() {
    if (waitCursor_)
        showPlatformCursor(UCursor::standard(platform::CursorShape::wait));
    else if (cursor_)
        showPlatformCursor(cursor_.get());
    else
        showPlatformCursor(UCursor::standard(platform::CursorShape::arrow));
}

// Focus

bool UDesktop::setFocus(UView* view) {
    if (!view) {
        if (focusWindow_)
            focusWindow_->setFocusView(nullptr);
        return true;
    }
    const Ref<UWindow> window = retain(view->getWindow());
    if (!window)
        return false;
    window->setFocusView(view);
    if (window->getFocusView())
        chooseFocus(window.get());
    return true;
}

void UDesktop::chooseFocus(UWindow* window) {
    if (hasDesktopFlag(focusFrozen) || !window || window->getWindowType() == WindowType::none ||
        window->hasStyle(styleNoActivate))
        return;
    const Ref<UWindow> keep = retain(window);
    if (!window->getFocusView()) {
        // A window that had the keyboard before looks where that was.
        UView* view = window->focusPoint() == CmPoint{} ? window->findFirstFocus() : nullptr;
        if (!view) {
            NearestFocus nearest{window->focusPoint()};
            findNearestFocus(*window, nearest);
            view = nearest.view;
        }
        if (view)
            window->setFocusView(view->getFocusView());
        // Whoever heard of it may have closed the window.
        if (window->hasWindowFlag(closed))
            return;
    }
    focusWindow_ = window;
    if (UView* focus = getFocus())
        focus->invalidateFrame();
}

void UDesktop::takeFocusFrom(UWindow* window) {
    if (focusWindow_ != window)
        return;
    if (UView* focus = getFocus())
        focus->invalidateFrame();
    focusWindow_ = nullptr;
}

bool UDesktop::moveFocus(FocusDirection direction) {
    UView* focus = getFocus();
    return navigateFocus(focus ? focus : activeWindow_, direction);
}

// Windows

void UDesktop::registerWindow(UWindow* window) {
    if (std::find(windows_.begin(), windows_.end(), window) == windows_.end())
        windows_.push_back(retain(window));
}

void UDesktop::unregisterWindow(UWindow* window) {
    const Ref<UWindow> keep = retain(window);
    std::erase(windows_, keep);
    takeFocusFrom(window);
    forget(window);
}

void UDesktop::forget(const UView* window) {
    if (activeWindow_ == window)
        activeWindow_ = nullptr;
    if (windowUnderMouse_ == window)
        windowUnderMouse_ = nullptr;
    if (openPopup_ == window)
        openPopup_ = nullptr;
}

void UDesktop::bringWindowToFront(UWindow* window) {
    const auto found = std::find(windows_.begin(), windows_.end(), window);
    if (found != windows_.end())
        std::rotate(found, found + 1, windows_.end());
}

UWindow* UDesktop::frontWindow(WindowType type) const {
    const auto found = std::find_if(windows_.rbegin(), windows_.rend(), [&](const Ref<UWindow>& window) {
        return window->getWindowType() == type && window->isVisible();
    });
    return found == windows_.rend() ? nullptr : found->get();
}

UWindow* UDesktop::windowAt(CmPoint screenPoint) const {
    const auto found = std::find_if(windows_.rbegin(), windows_.rend(), [&](const Ref<UWindow>& window) {
        return window->isVisible() && window->getFrameRect().contains(screenPoint);
    });
    return found == windows_.rend() ? nullptr : found->get();
}

void UDesktop::windowActivated(UWindow* window, Activation activation) {
    if (activation == Activation::gained) {
        activeWindow_ = window;
        bringWindowToFront(window);
        chooseFocus(window);
        return;
    }
    if (deactivationHook)
        deactivationHook(window);
    if (activeWindow_ == window)
        activeWindow_ = nullptr;
    takeFocusFrom(window);
}

void UDesktop::setDeactivationHook(DeactivationHook hook) {
    deactivationHook = hook;
}

// Popups and modal dialogs

void UDesktop::closePopups() {
    if (UPopupWindow* popup = std::exchange(openPopup_, nullptr))
        popup->closeDeferred();
}

/// A press that leads to a dialog must not keep the mouse.
void UDesktop::releaseAllCaptures() {
    if (platform::desktop() && platform::desktop()->isCapturing())
        platform::desktop()->releaseCapture();
    const std::vector<Ref<UWindow>> windows = windows_;
    for (const Ref<UWindow>& window : windows)
        window->captureLost();
}

int32_t UDesktop::runModal(UModalDialog* dialog) {
    const Ref<UModalDialog> keep = retain(dialog);
    releaseAllCaptures();
    if (!dialog->show())
        return UModalDialog::canceledResult;
    modalStack_.push_back(keep);
    EventLoop* loop = EventLoop::current();
    while (dialog->isOpen() && loop && loop->step() != EventLoop::Step::ended) {}
    if (dialog->isOpen())
        dialog->willClose(true);
    std::erase(modalStack_, keep);
    return dialog->getModalResult();
}

// Observers

void UDesktop::addMouseObserver(GlobalMouseObserver* observer) {
    mouseObservers_.add(observer);
}

void UDesktop::removeMouseObserver(GlobalMouseObserver* observer) {
    mouseObservers_.remove(observer);
}

bool UDesktop::tellMouseDown(UWindow* window, CmPoint point, uint32_t buttons) {
    bool ended = false;
    mouseObservers_.tell(
        [&](GlobalMouseObserver& observer) { ended = ended || observer.mouseDown(window, point, buttons); });
    return ended;
}

void UDesktop::tellMouseMove(UWindow* window, CmPoint point) {
    mouseObservers_.tell([&](GlobalMouseObserver& observer) { observer.mouseMove(window, point); });
}

void UDesktop::viewGone(UView* view) {
    // Who heard that a window closes may have run the event loop, in which it was active once more.
    forget(view);
    if (focusWindow_ == view)
        focusWindow_ = nullptr;
    if (cursorOwner_ == view)
        setCursor(nullptr, nullptr);
    forgetOwner(cursorStack(), view);
    mouseObservers_.tell([&](GlobalMouseObserver& observer) { observer.viewGone(view); });
}

} // namespace qorl

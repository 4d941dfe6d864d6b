#include "foundation/Cast.h"
#include "foundation/messages/FMessage.h"
#include "platform/DesktopServices.h"
#include "platform/Platform.h"
#include "views/FocusPolicy.h"
#include "views/UBaseView.h"
#include "windows/UDesktop.h"
#include "windows/UWindow.h"
#include "windows/WindowCore.h"

#include <iterator>

namespace qorl {

namespace {

struct FocusCommand {
    std::string_view name;
    /// Sent to the focus view; null for a command that navigates.
    const char* message;
    /// What is pressed when the focus view doesn't take the message, or the key that navigates.
    UKeyCode key;
};

constexpr FocusCommand focusCommands[] = {
    {"Hit", "FocusHit", {0, Key::returnKey, 0}},
    {"Escape", "FocusEscape", {0, Key::escape, 0}},
    {"Fore", nullptr, {0, Key::tab, 0}},
    {"Back", nullptr, {0, Key::tab, UKeyCode::shift}},
    {"Left", nullptr, {0, Key::left, 0}},
    {"Right", nullptr, {0, Key::right, 0}},
    {"Up", nullptr, {0, Key::up, 0}},
    {"Down", nullptr, {0, Key::down, 0}},
};

UKeyCode keyOf(const platform::KeyEvent& event) {
    return {event.character, event.virtualKey, modifiersFromPlatform(event.modifiers)};
}

int32_t sendTo(UView& view, const char* name) {
    const Ref<UView> keep = retain(&view);
    return view.handleMessage(make<FMessage>(ConstString(name)).get());
}

// By value: whoever is asked may put another controller in its place.
bool askFocusController(Ref<CmObject> controller, UView& view, const UKeyCode& key) {
    Ref<IFocusDelegate> delegate;
    if (controller)
        controller->queryInterface(IFocusDelegate::iid, delegate.out());
    return delegate && delegate->handleKey(&view, key);
}

/// Where the keyboard looks for a neighbour once the view is gone: the centre, or near the top of a tall
/// view.
CmPoint focusPointOf(UView& view) {
    const CmRect frame = CmRect::ofSize(view.frameToWindow({}), view.getFrameSize());
    const int32_t x = frame.left + frame.width() / 2;
    return {x, frame.height() > frame.width() ? frame.top + 10 : frame.top + frame.height() / 2};
}

} // namespace

// Focus

UView* UWindow::getFocusView() {
    return core_->focusView;
}

UView* UWindow::findFirstFocus() {
    SubViewIterator walk(*this);
    while (UView* view = walk.next())
        if (auto* base = cast<UBaseView>(view))
            if (UView* first = base->findFirstFocus())
                return first;
    return nullptr;
}

CmPoint UWindow::focusPoint() const {
    return core_->focusPoint;
}

void UWindow::setFocusView(UView* view) {
    const Ref<UView> old = retain(core_->focusView);
    if (old == view || (view && view->getWindow() != this))
        return;
    const Ref<UView> fresh = retain(view);
    const Ref<UWindow> keep = retain(this);
    core_->focusView = view;
    if (view)
        core_->focusPoint = focusPointOf(*view);
    if (old) {
        old->focusLost();
        old->drawFocus(false);
        old->invalidateFrame();
    }
    // Whoever lost the focus may have passed it on.
    if (!view || core_->focusView != view)
        return;
    view->focusGained();
    view->drawFocus(true);
    view->invalidateFrame();
}

void UWindow::viewClosing(UView* view) {
    const auto goes = [view](const UView* other) {
        return other && (other == view || view->isDescendant(other));
    };
    const Ref<UWindow> keep = retain(this);
    if (goes(core_->focusView)) {
        const Ref<UView> focus = retain(std::exchange(core_->focusView, nullptr));
        focus->focusLost();
    }
    // Whoever heard of that may have given the focus, or the mouse, to what goes: it still stands here.
    if (goes(core_->focusView))
        core_->focusView = nullptr;
    if (goes(core_->hoverView))
        core_->hoverView = nullptr;
    if (goes(core_->captureView))
        releaseMouse(core_->captureView);
    if (UDesktop* desktop = UDesktop::instance())
        desktop->viewGone(view);
}

// Keys

bool UWindow::keyEvent(const platform::KeyEvent& event) {
    const Ref<UWindow> keep = retain(this);
    if (isInputBlocked())
        return false;
    const Ref<UView> target = retain(core_->focusView);
    const UKeyCode key = keyOf(event);
    if (event.kind == platform::KeyKind::up)
        return target ? target->keyUp(key) : keyUp(key);
    if (askFocusController(core_->focusController, target ? *target : *this, key) || closeByKey(key))
        return true;
    if (!target || target == this)
        return keyDown(key);
    const bool outer = std::exchange(core_->keyComesFromTree, true);
    const bool taken = target->keyDown(key);
    core_->keyComesFromTree = outer;
    return taken;
}

bool UWindow::keyDown(const UKeyCode& key) {
    const Ref<UWindow> keep = retain(this);
    if (closeByKey(key))
        return true;
    UView* content = contentView();
    if (!core_->keyComesFromTree && content) {
        core_->keyComesFromTree = true;
        const bool taken = content->keyDown(key);
        core_->keyComesFromTree = false;
        return taken;
    }
    if (!core_->focusHitIsAnswered && key.modifiers == 0 && (key.isEnter() || key.virtualKey == Key::space) &&
        core_->focusView && sendTo(*core_->focusView, "FocusHit") == handled)
        return true;
    return UView::keyDown(key);
}

bool UWindow::closeByKey(const UKeyCode& key) {
    const char* message = nullptr;
    if (hasStyle(styleCloseOnEscape) && key.virtualKey == Key::escape && key.modifiers == 0)
        message = "MsgCloseEscape";
    else if (hasStyle(styleCloseOnEnter) && key.isEnter() && key.modifiers == 0)
        message = "MsgCloseEnter";
    if (!message)
        return false;
    if (tellController(message) != handled)
        closeDeferred();
    return true;
}

bool UWindow::focusCommand(std::string_view command) {
    const Ref<UWindow> keep = retain(this);
    for (const FocusCommand& entry : focusCommands) {
        if (entry.name != command)
            continue;
        UView* focus = core_->focusView;
        if (!entry.message)
            return navigateFocus(focus ? focus : this, focusDirectionOf(entry.key));
        if (focus && sendTo(*focus, entry.message) == handled)
            return true;
        const bool outer = std::exchange(core_->focusHitIsAnswered, true);
        const bool taken = keyDown(entry.key);
        core_->focusHitIsAnswered = outer;
        return taken;
    }
    return false;
}

} // namespace qorl

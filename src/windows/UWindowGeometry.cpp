#include "foundation/messages/FMessage.h"
#include "foundation/messages/UpdateHandler.h"
#include "persistence/attributes/FAttributes.h"
#include "platform/DesktopServices.h"
#include "platform/Platform.h"
#include "views/GeometryAttributes.h"
#include "windows/UDesktop.h"
#include "windows/UWindow.h"
#include "windows/WindowCore.h"

#include <algorithm>
#include <utility>

namespace qorl {

namespace {

CmSize limited(CmSize size, CmSize smallest, CmSize largest) {
    return {std::clamp(size.width, smallest.width, std::max(smallest.width, largest.width)),
            std::clamp(size.height, smallest.height, std::max(smallest.height, largest.height))};
}

void takePositive(CmSize& limit, CmSize wanted) {
    if (wanted.width > 0)
        limit.width = wanted.width;
    if (wanted.height > 0)
        limit.height = wanted.height;
}

} // namespace

// Position and size

void UWindow::setPosition(CmPoint position) {
    core_->centerOnOpen = false;
    if (hasWindowFlag(collectingUpdates))
        setPoint(getAttributes(), collectedPositionKey, position);
    else
        setFrame(CmRect::ofSize(position, normalFrame().size()), true);
}

CmPoint UWindow::getPosition() const {
    CmPoint position = getFrameRect().origin();
    if (const FAttributes* attributes = peekAttributes())
        getPoint(*attributes, collectedPositionKey, position);
    return position;
}

void UWindow::setSize(CmSize clientSize) {
    clientSize = limited(clientSize, core_->minSize, core_->maxSize);
    if (hasWindowFlag(collectingUpdates))
        qorl::setSize(getAttributes(), collectedSizeKey, clientSize);
    else
        setFrame(CmRect::ofSize(normalFrame().origin(), clientSize), true);
}

CmSize UWindow::getSize() const {
    CmSize size = getFrameSize();
    if (const FAttributes* attributes = peekAttributes())
        qorl::getSize(*attributes, collectedSizeKey, size);
    return size;
}

void UWindow::setSizeLimits(CmSize smallest, CmSize largest) {
    takePositive(core_->minSize, smallest);
    takePositive(core_->maxSize, largest);
    if (!core_->platformWindow)
        return;
    core_->platformWindow->setLimits(platform::LimitKind::minimum, core_->minSize);
    core_->platformWindow->setLimits(platform::LimitKind::maximum, core_->maxSize);
}

void UWindow::getSizeLimits(CmSize& smallest, CmSize& largest) const {
    smallest = core_->minSize;
    largest = core_->maxSize;
}

void UWindow::beginCollectUpdates() {
    setWindowFlag(collectingUpdates, true);
}

void UWindow::endCollectUpdates() {
    if (!hasWindowFlag(collectingUpdates))
        return;
    setWindowFlag(collectingUpdates, false);
    FAttributes& attributes = getAttributes();
    const CmRect frame = normalFrame();
    CmPoint position = frame.origin();
    CmSize size = frame.size();
    getPoint(attributes, collectedPositionKey, position);
    qorl::getSize(attributes, collectedSizeKey, size);
    attributes.remove(collectedPositionKey);
    attributes.remove(collectedSizeKey);
    setFrame(CmRect::ofSize(position, size), true);
}

bool UWindow::applyFrameHook(const CmRect& rect, bool) {
    if (!core_->platformWindow || hasFlag(viewFrameFrozen))
        return false;
    if (hasFlag(viewResizeSuspended))
        core_->fittedSize = rect.size();
    core_->platformWindow->setPositionSize(rect.origin(), rect.size());
    return true;
}

bool UWindow::subViewFrameRequest(UView* child, const CmRect& rect, bool redraw) {
    if (!child || child != contentView())
        return UView::subViewFrameRequest(child, rect, redraw);
    if (core_->windowState == WindowState::maximized && child->getAttach() == viewAttachAll) {
        // It goes on filling the screen, and has its way when the window comes back.
        setSize({rect.right, rect.bottom});
        return false;
    }
    const Ref<UWindow> keep = retain(this);
    const bool result = UView::subViewFrameRequest(child, rect, redraw);
    resizeToFit(0, 0);
    return result;
}

void UWindow::sized(const CmRect& clientOnScreen) {
    const CmRect old = getFrameRect();
    if (clientOnScreen == old)
        return;
    if (core_->fittedSize && clientOnScreen.size() != old.size()) {
        // The views stand for that size, and follow what the desktop makes of it only.
        const CmSize fitted = *std::exchange(core_->fittedSize, {});
        const bool wasSuspended = hasFlag(viewResizeSuspended);
        setFlag(viewResizeSuspended, true);
        applyFrame(CmRect::ofSize(clientOnScreen.origin(), fitted), false);
        setFlag(viewResizeSuspended, false);
        applyFrame(clientOnScreen, false);
        setFlag(viewResizeSuspended, wasSuspended);
    } else {
        applyFrame(clientOnScreen, false);
    }
    if (clientOnScreen.size() == old.size())
        return;
    const CmSize oldSize = old.size();
    core_->windowListeners.tell([&](WindowListener& listener) { listener.windowSized(this, oldSize); });
    const Ref<FMessage> message = make<FMessage>(ConstString("MsgWindowSized"));
    qorl::setSize(message->attributes(), "OldSize", oldSize);
    tellController(*message);
}

void UWindow::sizeTracking(SizeTracking phase) {
    const bool started = phase == SizeTracking::started;
    setWindowFlag(inSizeTracking, started);
    tellController(started ? "MsgWindowSizeStart" : "MsgWindowSizeEnd");
}

void UWindow::center() {
    if (core_->platformWindow)
        core_->platformWindow->center();
    else
        core_->centerOnOpen = true;
}

bool UWindow::scrollRect(const CmRect& rect, CmPoint delta) {
    if (!core_->platformWindow || hasWindowFlag(opening))
        return false;
    core_->platformWindow->scrollRect(rect, delta);
    return true;
}

// Screen

CmPoint UWindow::clientToScreen(CmPoint point) const {
    if (core_->platformWindow)
        core_->platformWindow->clientToScreen(point);
    else
        point = point + getFrameRect().origin();
    return point;
}

CmPoint UWindow::screenToClient(CmPoint point) const {
    if (core_->platformWindow)
        core_->platformWindow->screenToClient(point);
    else
        point = point - getFrameRect().origin();
    return point;
}

CmPoint UWindow::frameToScreen(CmPoint point) const {
    return clientToScreen(point - getClientRect().origin());
}

// Minimized, maximized, active

void UWindow::setMinimized(bool minimized) {
    const bool isMinimized = core_->windowState == WindowState::minimized;
    if (minimized == isMinimized)
        return;
    const bool toMaximized = !minimized && (core_->stateFlags & WindowCore::wasMaximized) != 0;
    changeState(minimized     ? WindowState::minimized
                : toMaximized ? WindowState::maximized
                              : WindowState::normal);
}

void UWindow::setMaximized(bool maximized) {
    if (maximized == (core_->windowState == WindowState::maximized))
        return;
    changeState(maximized ? WindowState::maximized : WindowState::normal);
}

void UWindow::changeState(WindowState state) {
    const Ref<UWindow> keep = retain(this);
    if (core_->platformWindow)
        core_->platformWindow->setShowState(state);
    // Without a platform window, or when the platform answers later, the state stands at once.
    stateChangedTo(state);
}

void UWindow::stateChangedTo(WindowState state) {
    const WindowState old = core_->windowState;
    if (state == old)
        return;
    if (state == WindowState::minimized)
        core_->setStateFlag(WindowCore::wasMaximized, old == WindowState::maximized);
    core_->windowState = state;
    if (old == WindowState::minimized || state == WindowState::minimized)
        tellState("MsgWindowMinimized", state == WindowState::minimized);
    if (state == WindowState::maximized || (old == WindowState::maximized && state == WindowState::normal))
        tellState("MsgWindowMaximized", state == WindowState::maximized);
}

void UWindow::tellState(const char* name, bool on) {
    const Ref<FMessage> message = make<FMessage>(ConstString(name));
    message->setInt("State", on ? 1 : 0);
    tellController(*message);
}

void UWindow::activate() {
    if (core_->platformWindow)
        core_->platformWindow->activate();
}

bool UWindow::isActive() const {
    return core_->platformWindow &&
           core_->platformWindow->getActivationState() != platform::PlatformWindow::Activation::inactive;
}

void UWindow::activationChanged(Activation activation,
                                platform::PlatformWindowClient::MainWindow mainWindow) {
    using MainWindow = platform::PlatformWindowClient::MainWindow;
    const bool active = activation == Activation::gained;
    if (UDesktop* desktop = UDesktop::instance())
        desktop->windowActivated(this, activation);
    activate(active);
    tellState("MsgWindowOnActivate", active);
    if (mainWindow == MainWindow::changed && getWindowType() == WindowType::document) {
        tellState("MsgWindowMainWindowChange", active);
        followMainWindow(active);
    }
}

void UWindow::followMainWindow(bool isMain) {
    if (isMain) {
        // The main window has just got the keyboard, and keeps it.
        for (const Ref<UWindow>& child : std::exchange(core_->followersOfMain, {})) {
            if (child->core().parentWindow != this)
                continue;
            const int64_t before = child->getAttributes().getInteger(noActivateOnShowKey);
            child->getAttributes().setInteger(noActivateOnShowKey, 1);
            child->show();
            child->getAttributes().setInteger(noActivateOnShowKey, before);
        }
        return;
    }
    const std::vector<Ref<UWindow>> children = core_->childWindows;
    for (const Ref<UWindow>& child : children) {
        if (!child->hasStyle(styleFollowsMainWindow) || !child->isVisible())
            continue;
        core_->followersOfMain.push_back(child);
        child->hide();
    }
}

void UWindow::userColorsChanged() {
    if (const Ref<CmObject> controller = controller_)
        controller->handleMessage(make<FMessage>(ConstString("MsgWindowUserColorChange")).get());
    invalidateAll();
}

} // namespace qorl

#include "foundation/messages/FMessage.h"
#include "foundation/messages/FMessenger.h"
#include "persistence/attributes/FAttributes.h"
#include "platform/DesktopServices.h"
#include "platform/Platform.h"
#include "windows/UDesktop.h"
#include "windows/UWindow.h"
#include "windows/WindowCore.h"
#include "windows/WindowPlacement.h"
#include "windows/WindowPlatformSide.h"
#include "windows/WindowSurface.h"

namespace qorl {

namespace {

platform::PlatformWindow* ownerOf(UWindow* parent) {
    return parent ? parent->getPlatformWindow() : nullptr;
}

std::vector<CmRect> workAreas(const platform::DesktopServices& desktop) {
    std::vector<CmRect> areas;
    for (int32_t i = 0; i < desktop.monitorCount(); ++i) {
        CmRect area;
        if (desktop.getMonitorRect(i, platform::MonitorArea::work, area))
            areas.push_back(area);
    }
    return areas;
}

bool isAsked(const UWindow& window, const char* attribute) {
    const FAttributes* attributes = window.peekAttributes();
    return attributes && attributes->getInteger(attribute) != 0;
}

} // namespace

// Opening

bool UWindow::show() {
    if (hasWindowFlag(closed))
        return false;
    if (!core_->platformWindow)
        return open();
    const Ref<UWindow> keep = retain(this);
    showOnPlatform();
    return !hasWindowFlag(closed) && UView::show();
}

bool UWindow::hide() {
    const Ref<UWindow> keep = retain(this);
    if (core_->platformWindow)
        core_->platformWindow->hide();
    return UView::hide();
}

bool UWindow::open() {
    const Ref<UWindow> keep = retain(this);
    setWindowFlag(opening, true);
    const bool isReady = prepareToOpen();
    if (isReady)
        showOnPlatform();
    setWindowFlag(opening, false);
    if (!isReady || hasWindowFlag(closed))
        return false;
    setWindowFlag(opened, true);
    if (getWindowType() == WindowType::document && !hasStyle(styleNoActivate) &&
        !isAsked(*this, noActivateOnShowKey))
        activate();
    return true;
}

/// Each step tells somebody, who may close the window in answer.
bool UWindow::prepareToOpen() {
    if (!createPlatformWindow())
        return false;
    if (UDesktop* desktop = UDesktop::instance())
        desktop->registerWindow(this);
    restoreStoredState();
    if (hasWindowFlag(closed))
        return false;
    setWindowFlag(stateApplied, true);
    placeForOpening();
    if (hasWindowFlag(closed))
        return false;
    UView::show();
    if (!isAttached() && !hasWindowFlag(closed))
        attached(nullptr);
    if (hasWindowFlag(closed))
        return false;
    tellController("Before Open");
    return !hasWindowFlag(closed);
}

bool UWindow::createPlatformWindow() {
    platform::DesktopServices* desktop = platform::desktop();
    if (!desktop || getWindowType() == WindowType::none)
        return false;
    const std::u16string title = getTitle().toUtf16();
    platform::WindowDescription description;
    description.kind = getWindowType();
    description.style = core_->style;
    description.title = title;
    description.frame = getFrameRect();
    description.owner = ownerOf(core_->parentWindow);
    core_->platformWindow = desktop->createWindow(description, *core_->platformSide);
    if (!core_->platformWindow)
        return false;
    core_->surface = make<WindowSurface>(core_->platformWindow);
    core_->platformWindow->setLimits(platform::LimitKind::minimum, core_->minSize);
    core_->platformWindow->setLimits(platform::LimitKind::maximum, core_->maxSize);
    if (core_->opacity < 1.0F)
        core_->platformWindow->setOpacity(core_->opacity);
    if (!isEnabled())
        core_->platformWindow->enable(false);
    core_->platformWindow->setBackground(getBackgroundColor(this).packed());
    for (const Ref<UWindow>& child : core_->childWindows)
        if (child->core().platformWindow)
            child->core().platformWindow->setOwner(core_->platformWindow.get());
    return true;
}

void UWindow::placeForOpening() {
    const Ref<platform::PlatformWindow> window = core_->platformWindow;
    if (core_->centerOnOpen || isAsked(*this, centerOnCreateKey)) {
        window->center();
        if (hasWindowFlag(closed))
            return;
    }
    const std::vector<CmRect> areas = workAreas(*platform::desktop());
    const CmPoint wanted = getFrameRect().origin();
    const CmPoint corrected = correctedPosition(getFrameRect(), areas, window->getFrameInsets().top);
    if (corrected != wanted)
        setPosition(corrected);
}

void UWindow::showOnPlatform() {
    const UDesktop* desktop = UDesktop::instance();
    const bool isPutOff =
        desktop && desktop->hasDesktopFlag(UDesktop::focusFrozen | UDesktop::restoringLayout);
    WindowState state = core_->windowState;
    if (hasWindowFlag(restoreMaximized) && !isPutOff) {
        setWindowFlag(restoreMaximized, false);
        state = WindowState::maximized;
    }
    uint32_t flags = platform::showDefault;
    if (hasStyle(styleNoActivate) || isAsked(*this, noActivateOnShowKey))
        flags |= platform::showWithoutActivation;
    if (state == WindowState::maximized)
        flags |= platform::showMaximized;
    const Ref<platform::PlatformWindow> window = core_->platformWindow;
    window->show(state, flags);
    if (state == WindowState::maximized && !hasWindowFlag(closed))
        stateChangedTo(state);
}

// Closing

void UWindow::addCloseHook(std::function<void(UWindow*)> hook) {
    core_->closeHooks.push_back(std::move(hook));
}

void UWindow::closeDeferred(CloseReason reason) {
    core_->closeIsCancel = reason == CloseReason::canceled;
    UDesktop* desktop = UDesktop::instance();
    if (desktop && desktop->isModal() && getWindowType() != WindowType::popup)
        desktop->closePopups();
    if (FMessenger* messenger = FMessenger::instance())
        messenger->post(static_cast<CmObject*>(this), "closeWindow", FMessenger::Duplicates::drop);
}

bool UWindow::closeRequest() {
    if (hasWindowFlag(closed))
        return true;
    const bool canceled = std::exchange(core_->closeIsCancel, false);
    // Who is asked may ask the user in turn, who may press the button once more.
    if (closing_)
        return false;
    const Ref<UWindow> keep = retain(this);
    closing_ = true;
    const bool isAgreed = mayClose();
    closing_ = false;
    if (isAgreed)
        willClose(canceled);
    return isAgreed;
}

bool UWindow::mayClose() {
    const std::vector<Ref<UWindow>> children = core_->childWindows;
    for (const Ref<UWindow>& child : children)
        if (!child->closeRequest())
            return false;
    return tellController("MsgCloseRequest") <= 1 && canClose();
}

bool UWindow::canClose() {
    return true;
}

void UWindow::willClose(bool canceled) {
    if (hasWindowFlag(closed))
        return;
    const Ref<UWindow> keep = retain(this);
    setWindowFlag(closed, true);
    setWindowFlag(opened, false);
    core_->windowListeners.tell([&](WindowListener& listener) { listener.windowClosing(this); });
    if (UDesktop* desktop = UDesktop::instance())
        desktop->unregisterWindow(this);
    while (!core_->closeHooks.empty()) {
        const std::function<void(UWindow*)> hook = std::move(core_->closeHooks.front());
        core_->closeHooks.pop_front();
        hook(this);
    }
    storeStateAtClose();
    tellController(canceled ? "Window Canceled" : "Before Close");
    if (core_->parentWindow)
        core_->parentWindow->takeChildWindow(this);
    while (!core_->childWindows.empty()) {
        const Ref<UWindow> child = takeChildWindow(core_->childWindows.back().get());
        child->willClose(canceled);
    }
    if (isAttached())
        detached(nullptr);
    if (FMessenger* messenger = FMessenger::instance())
        messenger->cancel(static_cast<CmObject*>(this), nullptr);
    core_->placementRect = normalFrame();
    core_->setStateFlag(WindowCore::placementValid, true);
    if (const Ref<platform::PlatformWindow> window = std::exchange(core_->platformWindow, {}))
        window->close(platform::CloseMode::normal);
    core_->surface.reset();
}

} // namespace qorl

#include "windows/UWindow.h"

#include "foundation/messages/FMessage.h"
#include "foundation/messages/FMessenger.h"
#include "platform/DesktopServices.h"
#include "platform/Platform.h"
#include "schemes/UScheme.h"
#include "windows/UDesktop.h"
#include "windows/WindowCore.h"
#include "windows/WindowPlatformSide.h"
#include "windows/WindowSurface.h"

#include <algorithm>
#include <cmath>

namespace qorl {

UWindow::UWindow(const CmRect& frame, uint32_t style, const ConstString& title)
    : UView(frame, title), core_(std::make_unique<WindowCore>()) {
    isWindow_ = true;
    core_->owner = this;
    core_->style = style;
    core_->platformSide = std::make_unique<WindowPlatformSide>(*this);
}

UWindow::~UWindow() {
    if (core_->platformWindow)
        core_->platformWindow->close(platform::CloseMode::normal);
    if (FMessenger* messenger = FMessenger::instance())
        messenger->cancel(static_cast<CmObject*>(this), nullptr);
    for (const Ref<UWindow>& child : core_->childWindows)
        child->core().parentWindow = nullptr;
    while (!core_->directPaintViews.empty())
        unregisterDirectPaintView(core_->directPaintViews.back());
    // The views in this window look for it while they go.
    removeAllSubViews();
}

// Properties

WindowType UWindow::getWindowType() const {
    return WindowType::none;
}

void UWindow::getListTitle(String& title) const {
    title = getTitle();
}

bool UWindow::isListed() const {
    return getWindowType() == WindowType::document && !hasStyle(styleHiddenFromMenu);
}

uint32_t UWindow::getStyle() const {
    return core_->style;
}

void UWindow::setStyle(uint32_t style) {
    core_->style = style;
}

WindowState UWindow::getWindowState() const {
    return core_->windowState;
}

bool UWindow::isOpen() const {
    return hasWindowFlag(opened) && !hasWindowFlag(closed);
}

platform::PlatformWindow* UWindow::getPlatformWindow() const {
    return core_->platformWindow.get();
}

double UWindow::getScaleFactor() const {
    return core_->platformWindow ? core_->platformWindow->getScaleFactor() : 1.0;
}

float UWindow::getOpacity() const {
    return core_->opacity;
}

void UWindow::setOpacity(float opacity) {
    if (std::isnan(opacity))
        return;
    core_->opacity = std::clamp(opacity, 0.0F, 1.0F);
    if (core_->platformWindow)
        core_->platformWindow->setOpacity(core_->opacity);
}

void UWindow::setBackgroundColor(const UColor& color) {
    core_->backgroundColor = color;
    setWindowFlag(ownBackground, true);
    if (core_->platformWindow)
        core_->platformWindow->setBackground(color.packed());
    invalidateAll();
}

UColor UWindow::getBackgroundColor(const UView* forView) const {
    return hasWindowFlag(ownBackground) ? core_->backgroundColor : UView::getBackgroundColor(forView);
}

void UWindow::setScheme(UScheme* scheme) {
    core_->scheme = retain(scheme);
    invalidateAll();
}

UScheme* UWindow::getScheme() const {
    return core_->scheme ? core_->scheme.get() : UView::getScheme();
}

void UWindow::setHelpIdentifier(const ConstString& id) {
    core_->helpId = id.toUtf8();
}

const char* UWindow::getHelpIdentifier() const {
    return core_->helpId.empty() ? nullptr : core_->helpId.c_str();
}

void UWindow::setTitle(const ConstString& title) {
    if (getTitle() == title)
        return;
    UView::setTitle(title);
    if (core_->platformWindow)
        core_->platformWindow->setTitle(title.toUtf16());
    tellController("MsgWindowTitle");
}

AccessibleRole UWindow::getAccessibleRole() const {
    return AccessibleRole::window;
}

void UWindow::setStateName(const ConstString& name, int32_t version) {
    core_->stateName = name;
    core_->stateVersion = version;
}

// What a view asks its window

UWindow* UWindow::getWindow() const {
    return const_cast<UWindow*>(this);
}

bool UWindow::isRealized() const {
    return core_->platformWindow != nullptr;
}

bool UWindow::isVisible() const {
    return isShown() && isRealized();
}

void UWindow::getWindowOffset(CmPoint&) const {}

void UWindow::setEnabled(bool enabled) {
    const Ref<UWindow> keep = retain(this);
    UView::setEnabled(enabled);
    if (core_->platformWindow)
        core_->platformWindow->enable(enabled);
}

UView* UWindow::contentView() const {
    if (getSubViewCount() != 1)
        return nullptr;
    UView* view = getFirstSubView();
    return view->isTypeOf("UBaseView", true) ? view : nullptr;
}

// Relations

void UWindow::setController(CmObject* controller) {
    controller_ = retain(controller);
}

CmObject* UWindow::getFocusController() const {
    return core_->focusController.get();
}

void UWindow::setControllerFocus(CmObject* controller) {
    if (controller == controller_.get())
        controller = nullptr;
    if (controller == core_->focusController.get())
        return;
    const Ref<UWindow> keep = retain(this);
    const Ref<CmObject> old = std::exchange(core_->focusController, retain(controller));
    if (old)
        old->handleMessage(make<FMessage>(ConstString("ResetControllerFocus")).get());
    // Whoever lost it may have passed it on.
    if (controller && core_->focusController == controller)
        controller->handleMessage(make<FMessage>(ConstString("SetControllerFocus")).get());
}

UWindow* UWindow::getParentWindow() const {
    return core_->parentWindow;
}

void UWindow::addChildWindow(Ref<UWindow> child) {
    if (!child || child->core().parentWindow == this)
        return;
    for (const UWindow* window = this; window; window = window->getParentWindow())
        if (window == child.get())
            return;
    if (UWindow* parent = child->core().parentWindow)
        parent->takeChildWindow(child.get());
    child->core().parentWindow = this;
    if (child->core().platformWindow)
        child->core().platformWindow->setOwner(getPlatformWindow());
    core_->childWindows.push_back(std::move(child));
}

Ref<UWindow> UWindow::removeChildWindow(UWindow* child) {
    Ref<UWindow> removed = takeChildWindow(child);
    if (removed && removed->core().platformWindow)
        removed->core().platformWindow->setOwner(nullptr);
    return removed;
}

/// Leaves the platform as it is: an owner is also who gets the keyboard when its window closes.
Ref<UWindow> UWindow::takeChildWindow(UWindow* child) {
    auto& children = core_->childWindows;
    const auto found = std::find(children.begin(), children.end(), child);
    if (found == children.end())
        return {};
    Ref<UWindow> removed = std::move(*found);
    children.erase(found);
    removed->core().parentWindow = nullptr;
    return removed;
}

std::span<const Ref<UWindow>> UWindow::childWindows() const {
    return core_->childWindows;
}

void UWindow::addWindowListener(WindowListener* listener) {
    core_->windowListeners.add(listener);
}

void UWindow::removeWindowListener(WindowListener* listener) {
    core_->windowListeners.remove(listener);
}

void UWindow::addPaintListener(WindowPaintListener* listener) {
    core_->paintListeners.add(listener);
}

void UWindow::removePaintListener(WindowPaintListener* listener) {
    core_->paintListeners.remove(listener);
}

void UWindow::addPrePaintListener(WindowPaintListener* listener) {
    core_->prePaintListeners.add(listener);
}

void UWindow::removePrePaintListener(WindowPaintListener* listener) {
    core_->prePaintListeners.remove(listener);
}

void UWindow::registerDirectPaintView(UView* view) {
    core_->directPaintViews.push_back(view);
}

void UWindow::unregisterDirectPaintView(UView* view) {
    auto& views = core_->directPaintViews;
    const auto found = std::find(views.begin(), views.end(), view);
    if (found == views.end())
        return;
    *found = views.back();
    views.pop_back();
}

// Messages

int32_t UWindow::tellController(const char* name) {
    if (!controller_)
        return notHandled;
    const Ref<FMessage> message = make<FMessage>(ConstString(name));
    return tellController(*message);
}

int32_t UWindow::tellController(FMessage& message) {
    const Ref<CmObject> controller = controller_;
    if (!controller)
        return notHandled;
    message.setObject("Window", this);
    return controller->handleMessage(&message);
}

int32_t UWindow::handleMessage(FMessage* message) {
    const Ref<UWindow> keep = retain(this);
    if (message->isNamed("closeWindow")) {
        closeRequest();
        return handled;
    }
    if (message->isNamed("redrawWindow")) {
        update();
        return handled;
    }
    if (message->isNamed("Activate")) {
        activate();
        return handled;
    }
    if (message->isNamed("ContextMenu")) {
        UView* content = contentView();
        return content ? content->handleMessage(message) : notHandled;
    }
    return UView::handleMessage(message);
}

} // namespace qorl

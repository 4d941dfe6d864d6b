#include "views/UBaseView.h"

#include "foundation/messages/FMessage.h"
#include "persistence/defaults/FDefaultPool.h"
#include "schemes/UScheme.h"
#include "views/FocusPolicy.h"
#include "views/ViewNotices.h"
#include "windows/UDesktop.h"
#include "windows/UDocWindow.h"
#include "windows/UModalDialog.h"
#include "windows/UPanel.h"
#include "windows/UPopupWindow.h"

#include <algorithm>
#include <vector>

namespace qorl {

namespace {

constexpr const char* stateKey = "State";

std::vector<WindowizeHook>& windowizeHooks() {
    static std::vector<WindowizeHook> hooks;
    return hooks;
}

using WindowMaker = Ref<UWindow> (*)(const CmRect& frame, uint32_t style, const String& title);

template <typename Window>
Ref<UWindow> makeWindow(const CmRect& frame, uint32_t style, const String& title) {
    return make<Window>(frame, style, title);
}

struct WindowKind {
    BaseWindowType type;
    WindowMaker create;
};

constexpr WindowKind windowKinds[] = {
    {BaseWindowType::document, &makeWindow<UDocWindow>},
    {BaseWindowType::panel, &makeWindow<UPanel>},
    {BaseWindowType::popup, &makeWindow<UPopupWindow>},
    {BaseWindowType::modal, &makeWindow<UModalDialog>},
};

WindowMaker makerOf(BaseWindowType type) {
    for (const WindowKind& kind : windowKinds)
        if (kind.type == type)
            return kind.create;
    return nullptr;
}

int32_t clampedExtent(int32_t extent, int32_t smallest, int32_t largest) {
    if (largest != UBaseView::noLimit)
        extent = std::min(extent, largest);
    if (smallest != UBaseView::noLimit)
        extent = std::max(extent, smallest);
    return extent;
}

} // namespace

UBaseView::UBaseView(const UBaseView& other)
    : UView(other), windowStyle_(other.windowStyle_), firstFocus_(other.firstFocus_),
      helpIdentifier_(other.helpIdentifier_), stateName_(other.stateName_),
      stateVersion_(other.stateVersion_), windowTitle_(other.windowTitle_), controller_(other.controller_),
      viewContext_(other.viewContext_), menuName_(other.menuName_), sizeLimits_(other.sizeLimits_),
      backgroundColor_(other.backgroundColor_), baseFlags_(other.baseFlags_), scheme_(other.scheme_) {}

UBaseView::~UBaseView() {
    if (formerParent_)
        formerParent_->removeDependent(this);
}

// ---- What the window gets.

UView* UBaseView::findFirstFocus() {
    if (firstFocus_.empty())
        return nullptr;
    return findSubView(viewsWhere(
        [this](UView* view) { return view->getItem().name() == firstFocus_ && canTakeFocus(view); }));
}

void UBaseView::setHelpIdentifier(const ConstString& identifier) {
    helpIdentifier_ = identifier;
    helpIdentifier_.toNarrow();
    if (UWindow* window = getOwnWindow())
        window->setHelpIdentifier(identifier);
}

const char* UBaseView::getHelpIdentifier() const {
    return helpIdentifier_.isEmpty() ? nullptr : helpIdentifier_.text8();
}

void UBaseView::setStateName(const ConstString& name, int32_t version) {
    stateName_ = name;
    stateVersion_ = version;
    if (UWindow* window = getOwnWindow())
        window->setStateName(stateName_, version);
}

void UBaseView::setWindowTitle(const ConstString& title) {
    windowTitle_ = title;
    if (UWindow* window = getOwnWindow())
        window->setTitle(windowTitle_);
}

void UBaseView::setController(CmObject* controller) {
    controller_ = retain(controller);
    if (UWindow* window = getOwnWindow())
        window->setController(controller);
}

void UBaseView::setViewContext(CmObject* context) {
    viewContext_ = retain(context);
}

CmObject* UBaseView::getViewContext() const {
    return viewContext_ ? viewContext_.get() : UView::getViewContext();
}

void UBaseView::setWindowSizeLimits(const CmRect& limits) {
    sizeLimits_ = limits;
    if (UWindow* window = getOwnWindow())
        window->setSizeLimits({limits.left, limits.top}, {limits.right, limits.bottom});
}

void UBaseView::setBackgroundColor(const UColor& color) {
    backgroundColor_ = color;
    setBaseFlag(baseOwnBackground, true);
    if (UWindow* window = getOwnWindow())
        window->setBackgroundColor(color);
    invalidateAll();
}

UColor UBaseView::getBackgroundColor(const UView* forView) const {
    return hasBaseFlag(baseOwnBackground) ? backgroundColor_ : UView::getBackgroundColor(forView);
}

void UBaseView::setScheme(UScheme* scheme) {
    scheme_ = retain(scheme);
    invalidateAll();
}

UScheme* UBaseView::getScheme() const {
    return scheme_ ? scheme_.get() : UView::getScheme();
}

// ---- Windows.

void UBaseView::addWindowizeHook(WindowizeHook hook) {
    windowizeHooks().push_back(std::move(hook));
}

void UBaseView::clearWindowizeHooks() {
    windowizeHooks().clear();
}

UWindow* UBaseView::getOwnWindow() const {
    UWindow* window = getWindow();
    return window && getParent() == window && window->getSubViewCount() == 1 ? window : nullptr;
}

Ref<UWindow> UBaseView::windowize(const WindowizePlan& wanted) {
    const Ref<UView> keep = retain(static_cast<UView*>(this));
    WindowizePlan plan = wanted;
    // A hook may add one.
    const std::vector<WindowizeHook> hooks = windowizeHooks();
    for (const WindowizeHook& hook : hooks)
        hook(*this, plan);
    resolveStoredType(plan);
    if (plan.type != BaseWindowType::none && !makerOf(plan.type))
        return nullptr;

    windowType_ = plan.type;
    UDesktop* desktop = UDesktop::instance();
    UView* focus = desktop ? desktop->getFocus() : nullptr;
    const Ref<UView> focused = focus == this || isDescendant(focus) ? retain(focus) : nullptr;
    const Ref<UWindow> own = retain(getOwnWindow());
    // There is no window to dissolve: the view stays where it is.
    if (plan.type == BaseWindowType::none && !own && getParent())
        return nullptr;
    const Ref<UWindow> outer = retain(own ? own->getParentWindow() : getWindow());
    if (own)
        leaveWindow(*own, plan.type);
    else
        rememberPlace();
    if (plan.type == BaseWindowType::none) {
        returnToPlace();
        return nullptr;
    }

    Ref<UWindow> window = createWindow(plan);
    if (outer && plan.asChild == AsChild::yes) {
        outer->addChildWindow(window);
        window->setWindowFlag(UWindow::stateApplied, true);
    }
    tellController("MsgWindowized", window.get(), BaseWindowType::none);
    if (plan.show == ShowWindow::yes) {
        window->show();
        if (desktop && focused && focused->getWindow() == window.get())
            desktop->setFocus(focused.get());
        // The window's own controller is told directly: for the window itself it counts as none.
        if (const Ref<CmObject> controller = controller_; controller && hasBaseFlag(baseControllerFocus))
            controller->handleMessage(make<FMessage>(ConstString("SetControllerFocus")).get());
    }
    return window;
}

void UBaseView::resolveStoredType(WindowizePlan& plan) {
    if (plan.type != BaseWindowType::stored)
        return;
    setBaseFlag(baseUsesStoredState, true);
    FGlobalDefaultPool* pool = FGlobalDefaultPool::instance();
    FDefaults* group = pool ? pool->getGroup(stateName_, stateVersion_, false) : nullptr;
    const auto stored = static_cast<BaseWindowType>(group ? group->values().getInteger(stateKey, 1) : 1);
    const bool offered = stored != BaseWindowType::fullScreen || hasBaseFlag(baseOffersFullScreen);
    plan.type = offered && makerOf(stored) ? stored : BaseWindowType::document;
}

void UBaseView::rememberPlace() {
    UView* parent = getParent();
    if (!parent)
        return;
    formerFrame_ = getFrameRect();
    if (formerParent_)
        formerParent_->removeDependent(this);
    formerParent_ = parent;
    formerParent_->addDependent(this);
    parent->removeSubView(this);
}

void UBaseView::returnToPlace() {
    if (!formerParent_ || getParent())
        return;
    UView* parent = formerParent_;
    parent->removeDependent(this);
    formerParent_ = nullptr;
    setFrame(formerFrame_, false);
    parent->addSubView(retain(static_cast<UView*>(this)));
}

void UBaseView::notify(CmObject* changedObject, int32_t message) {
    if (message == objectDestroyed && changedObject == formerParent_) {
        changedObject->removeDependent(this);
        formerParent_ = nullptr;
    }
    UView::notify(changedObject, message);
}

void UBaseView::leaveWindow(UWindow& window, BaseWindowType newType) {
    savedSize_[0] = window.getClientSize();
    savedSize_[1] = window.getFrameSize();
    tellController("MsgWindowTypeChange", &window, newType);
    // The caller keeps the view; what the window gives back is dropped here.
    window.removeSubView(this);
    window.willClose(false);
}

Ref<UWindow> UBaseView::createWindow(const WindowizePlan& plan) {
    const bool placed = hasBaseFlag(baseHasPosition);
    const CmSize size = savedSize_[0].isEmpty() ? getFrameSize() : savedSize_[0];
    Ref<UWindow> window =
        makerOf(plan.type)(CmRect::ofSize(placed ? plan.position : CmPoint{}, size), windowStyle_,
                           windowTitle_.isEmpty() ? getTitle() : windowTitle_);
    window->setController(controller_.get());
    window->setStateName(stateName_, stateVersion_);
    window->setSizeLimits({sizeLimits_.left, sizeLimits_.top}, {sizeLimits_.right, sizeLimits_.bottom});
    if (hasBaseFlag(baseOwnBackground))
        window->setBackgroundColor(backgroundColor_);
    if (!helpIdentifier_.isEmpty())
        window->setHelpIdentifier(helpIdentifier_);
    setFrame(CmRect::ofSize({}, size), false);
    setAttach(viewAttachAll);
    window->addSubView(retain(static_cast<UView*>(this)));
    if (!placed)
        window->center();
    return window;
}

void UBaseView::tellController(const char* message, UWindow* window, BaseWindowType newType) const {
    const Ref<CmObject> controller = controller_;
    if (!controller)
        return;
    const Ref<FMessage> told = make<FMessage>(ConstString(message));
    told->setObject("Window", window);
    if (newType != BaseWindowType::none)
        told->setInt("NewType", static_cast<int64_t>(newType));
    controller->handleMessage(told.get());
}

// ---- Geometry.

void UBaseView::setPosition(CmPoint position) {
    if (UWindow* window = getOwnWindow())
        window->setPosition(position);
    else
        setFrame(CmRect::ofSize(position, getFrameSize()), true);
}

CmPoint UBaseView::getPosition() const {
    const UWindow* window = getOwnWindow();
    return window ? window->getPosition() : getFrameRect().origin();
}

void UBaseView::setSize(CmSize clientSize) {
    if (UWindow* window = getOwnWindow()) {
        window->setSize(clientSize);
        return;
    }
    setClientRect(CmRect::ofSize(getClientRect().origin(), clientSize), false);
}

CmSize UBaseView::getSize() const {
    const UWindow* window = getOwnWindow();
    return window ? window->getSize() : getClientSize();
}

void UBaseView::setTitle(const ConstString& title) {
    UView::setTitle(title);
    if (UWindow* window = getOwnWindow())
        window->setTitle(title);
}

bool UBaseView::subViewFrameRequest(UView* child, const CmRect& rect, bool redraw) {
    const Ref<UBaseView> keep = retain(this);
    const bool result = UView::subViewFrameRequest(child, rect, redraw);
    if (getParent() && (getSubViewCount() == 1 || hasBaseFlag(baseResizesWindow)))
        resizeToFit(0, 0);
    return result;
}

CmRect UBaseView::clampToLimits(const CmRect& rect) const {
    return {rect.left, rect.top, rect.left + clampedExtent(rect.width(), sizeLimits_.left, sizeLimits_.right),
            rect.top + clampedExtent(rect.height(), sizeLimits_.top, sizeLimits_.bottom)};
}

bool UBaseView::checkSize(CmRect& rect) {
    if (getOwnWindow())
        return UView::checkSize(rect);
    const CmRect asked = rect;
    rect = clampToLimits(rect);
    const bool taken = UView::checkSize(rect);
    rect = clampToLimits(rect);
    return taken && rect == asked;
}

// ---- State.

bool UBaseView::storeAttributes(FAttributes* attributes) {
    UWindow* window = forwarding_ ? nullptr : getOwnWindow();
    if (!window)
        return storeSubViewTree(attributes, 0);
    // The window asks its subviews for their state, this one among them.
    forwarding_ = true;
    const bool stored = window->storeAttributes(attributes);
    forwarding_ = false;
    return stored;
}

bool UBaseView::restoreAttributes(FAttributes* attributes) {
    const Ref<UBaseView> keep = retain(this);
    UWindow* window = forwarding_ ? nullptr : getOwnWindow();
    if (!window)
        return restoreSubViewTree(attributes, 0);
    forwarding_ = true;
    const bool restored = window->restoreAttributes(attributes);
    forwarding_ = false;
    return restored;
}

} // namespace qorl

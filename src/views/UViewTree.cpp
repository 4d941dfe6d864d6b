#include "foundation/Cast.h"
#include "persistence/attributes/FAttributes.h"
#include "views/AncestorDependents.h"
#include "views/UView.h"
#include "views/ViewNotices.h"
#include "views/ViewSource.h"
#include "windows/UDesktop.h"
#include "windows/UWindow.h"

namespace qorl {

UView::UView() : ViewFields(*this) {}

UView::UView(const CmRect& frame) : ViewFields(*this) {
    core_.item.setFrame({static_cast<double>(frame.left), static_cast<double>(frame.top),
                         static_cast<double>(frame.width()), static_cast<double>(frame.height())});
    core_.frameRect = frame;
    core_.clientRect = {0, 0, frame.width(), frame.height()};
}

UView::UView(const CmRect& frame, const ConstString& title) : UView(frame) {
    title_ = title;
}

UView::UView(const UView& other) : ViewFields(*this, other), IViewDrawing() {}

UView::~UView() {
    if (core_.rare && core_.rare->window)
        core_.rare->window->unregisterDirectPaintView(this);
    SubViewIterator walk(*this, SubViewIterator::Walk::reverse);
    while (UView* subView = walk.next()) {
        core_.item.removeChildAt(walk.index());
        subView->parent_ = nullptr;
        subView->release();
    }
    if (core_.rare)
        core_.rare->renderTarget.reset();
    if (UDesktop* desktop = UDesktop::instance(); desktop && desktop != this)
        desktop->viewGone(this);
    tellLifecycle(*this, &IViewLifecycleListener::viewDestroyed);
    if (!hasDependents_)
        return;
    FObject::changed(objectDestroyed);
    // Another view may come to stand at this address: nobody must hear it by mistake.
    FObject::removeDependent(nullptr);
}

void UView::addDependent(FDependent* dependent) {
    hasDependents_ = true;
    ViewFields::addDependent(dependent);
}

// ---- Coming and going of subviews.

bool UView::addSubView(Ref<UView> view) {
    return insertSubView(getSubViewCount(), std::move(view));
}

bool UView::insertSubView(int32_t index, Ref<UView> view) {
    // What this view stands in must not come to stand in it.
    if (!view || view->parent_ || view == this || view->isDescendant(this))
        return false;
    const Ref<UView> keep = retain(this);
    const Ref<UView> child = std::move(view);
    core_.item.insertChild(index, child->core_.item);
    child->addRef(); // The parent's own.
    child->parent_ = this;
    App::Layout::IItemLayout* layout = core_.item.layout();
    if (layout && !child->core_.item.layout())
        layout->childAdded(core_.item, child->core_.item,
                           isRealized() ? App::Layout::Realized::yes : App::Layout::Realized::no);
    child->updateClientRect();
    if (!isAttached() || !child->isShown() || child->parent_ != this)
        return true;
    child->attached(this);
    // Whoever was told may have taken it out again.
    if (child->parent_ == this)
        invalidate(child->core_.frameRect);
    return true;
}

Ref<UView> UView::removeSubView(UView* view) {
    if (!view || view->parent_ != this)
        return nullptr;
    const Ref<UView> keep = retain(this);
    const Ref<UView> keepView = retain(view);
    if (isAttached()) {
        const bool wasVisible = view->isVisible();
        if (view->isAttached())
            view->detached(this);
        if (wasVisible)
            invalidate(view->core_.frameRect);
    }
    // What isn't attached may have the mouse or the focus all the same.
    if (UWindow* window = getWindow(); window && view->parent_ == this)
        window->viewClosing(view);
    // What was told of the end may have removed it already.
    const int32_t index = getSubViewIndex(view);
    if (index < 0)
        return nullptr;
    core_.item.removeChildAt(index);
    view->parent_ = nullptr;
    if (App::Layout::IItemLayout* layout = core_.item.layout())
        layout->childRemoved(core_.item, view->core_.item);
    return Ref<UView>::adopt(view);
}

void UView::removeAllSubViews() {
    forEachSubViewReverse([this](UView& view) { removeSubView(&view); });
}

bool UView::isDescendant(const UView* view) const {
    while (view) {
        view = view->parent_;
        if (view == this)
            return true;
    }
    return false;
}

bool UView::bringToFront(UView* view) {
    const int32_t index = getSubViewIndex(view);
    if (index < 0)
        return false;
    core_.item.moveChild(index, getSubViewCount() - 1);
    invalidateLayout();
    return true;
}

bool UView::sendToBack(UView* view) {
    const int32_t index = getSubViewIndex(view);
    if (index < 0)
        return false;
    core_.item.moveChild(index, 0);
    invalidateLayout();
    return true;
}

void UView::invalidateLayout() {
    core_.item.markSizeDirty();
    if (core_.item.layout() && isRealized())
        core_.item.layout()->run(core_.item);
    invalidateAll();
}

// ---- Shown and attached.

namespace {

void arrangeInParent(const UView& view) {
    UView* parent = view.getParent();
    if (parent && parent->arrangesShownSubViews())
        parent->invalidateLayout();
}

} // namespace

bool UView::show() {
    core_.item.setVisible(true);
    if (isShown())
        return true;
    const Ref<UView> keep = retain(this);
    setFlag(viewVisible, true);
    if (!isAttached() && parent_ && parent_->isAttached()) {
        attached(parent_);
        invalidateFrame();
    }
    arrangeInParent(*this);
    tellLifecycle(*this, &IViewLifecycleListener::viewShown);
    return true;
}

bool UView::hide() {
    core_.item.setVisible(false);
    if (!isShown())
        return true;
    const Ref<UView> keep = retain(this);
    if (isAttached() && parent_ && parent_->isAttached()) {
        detached(parent_);
        invalidateFrame();
    }
    setFlag(viewVisible, false);
    arrangeInParent(*this);
    tellLifecycle(*this, &IViewLifecycleListener::viewHidden);
    return true;
}

void UView::attached(UView* parent) {
    const Ref<UView> keep = retain(this);
    const bool wasAttached = isAttached();
    setFlag(viewAttached, true);
    if (core_.item.layout())
        core_.item.layout()->run(core_.item);
    // In a window that is hidden just now, too: nobody comes by again when it is shown.
    forEachSubView([this](UView& view) {
        const Ref<UView> keepSubView = retain(&view);
        if (view.isShown())
            view.attached(this);
    });
    // A subview may have taken this view out of the window, in answer to its own attachment.
    if (!isAttached())
        return;
    if (hasFlag(viewWantsAncestorSized | viewWantsAncestorMoved))
        enterAncestorDependents(*this, parent);
    if (!wasAttached)
        tellLifecycle(*this, &IViewLifecycleListener::viewAttached);
    if (!hasFlag(viewDirectPaint) || !isAttached())
        return;
    UWindow* window = getWindow();
    ViewRare& rare = getRare();
    if (!window || rare.window)
        return;
    rare.window = window;
    window->registerDirectPaintView(this);
}

void UView::detached(UView* parent) {
    const Ref<UView> keep = retain(this);
    tellLifecycle(*this, &IViewLifecycleListener::viewDetaching);
    if (core_.rare && core_.rare->window) {
        core_.rare->window->unregisterDirectPaintView(this);
        core_.rare->window = nullptr;
    }
    setFlag(viewAttached, false);
    if (UWindow* window = getWindow())
        window->viewClosing(this);
    forEachSubView([this](UView& view) {
        const Ref<UView> keepSubView = retain(&view);
        if (view.isAttached())
            view.detached(this);
    });
    leaveAncestorDependents(*this, parent);
    tellLifecycle(*this, &IViewLifecycleListener::viewDetached);
}

bool UView::isVisible() const {
    return isShown() && parent_ && parent_->isVisible();
}

bool UView::isRealized() const {
    return parent_ && parent_->isRealized();
}

UWindow* UView::getWindow() const {
    return parent_ ? parent_->getWindow() : nullptr;
}

CmObject* UView::getViewContext() const {
    return parent_ ? parent_->getViewContext() : nullptr;
}

void UView::activate(bool active) {
    if (isEnabled())
        forEachSubView([active](UView& view) { view.activate(active); });
}

void UView::setEnabled(bool enabled) {
    if (enabled != hasFlag(viewDisabled))
        return;
    setFlag(viewDisabled, !enabled);
    invalidateFrame();
    tellLifecycle(*this,
                  enabled ? &IViewLifecycleListener::viewEnabled : &IViewLifecycleListener::viewDisabled);
}

bool UView::isEnabled() const {
    for (const UView* view = this; view; view = view->parent_)
        if (view->hasFlag(viewDisabled))
            return false;
    return true;
}

void UView::setValuesEnabled(bool enabled) {
    forEachSubView([enabled](UView& view) { view.setValuesEnabled(enabled); });
}

// ---- Texts.

void UView::setTitle(const ConstString& title) {
    title_ = title;
}

bool UView::hasTitle() const {
    return !title_.isEmpty();
}

bool UView::hasTooltip() const {
    return !tooltip_.isEmpty() || (attributes_ && attributes_->contains("tipexID"));
}

bool UView::getTooltip(String& text, CmPoint, CmRect& area) const {
    text = tooltip_;
    area = {};
    return !text.isEmpty();
}

const char* UView::getHelpIdentifier() const {
    return nullptr;
}

bool UView::getMenuHint() const {
    return false;
}

// ---- Accessibility.

AccessibleRole UView::getAccessibleRole() const {
    return AccessibleRole::none;
}

bool UView::getAccessibleName(String& name) const {
    name = title_;
    return !name.isEmpty();
}

bool UView::getAccessibleValue(String& value) const {
    value.clear();
    return false;
}

bool UView::getAccessibleRange(AccessibleRange& range) const {
    range = {};
    return false;
}

bool UView::setAccessibleValue(double) {
    return false;
}

bool UView::getAccessibleDescription(String& description) const {
    description = tooltip_;
    return !description.isEmpty();
}

int32_t UView::countAccessibleActions() const {
    return 0;
}

const char* UView::getAccessibleActionName(int32_t) const {
    return nullptr;
}

bool UView::performAccessibleAction(int32_t) {
    return false;
}

} // namespace qorl

#include "views/ViewFields.h"

#include "persistence/attributes/FAttributes.h"
#include "views/AncestorDependents.h"
#include "views/UView.h"
#include "views/ViewRare.h"
#include "views/ViewSource.h"

namespace qorl {

namespace {

// What says where a view stands now is not handed on to a copy.
constexpr uint32_t flagsOfPlace =
    viewAttached | viewRelaysAncestorSized | viewRelaysAncestorMoved | viewResizeSuspended;

template <typename T>
void addTo(std::unique_ptr<ListenerList<T>>& list, T* listener) {
    if (!listener)
        return;
    if (!list)
        list = std::make_unique<ListenerList<T>>();
    list->add(listener);
}

template <typename T>
void removeFrom(const std::unique_ptr<ListenerList<T>>& list, T* listener) {
    if (list)
        list->remove(listener);
}

} // namespace

ViewFields::ViewFields(UView& view) : core_(view) {}

ViewFields::ViewFields(UView& view, const ViewFields& other)
    : CmObject(other), viewFlags_(other.viewFlags_ & ~flagsOfPlace), source_(other.source_),
      title_(other.title_), tooltip_(other.tooltip_), arrangesShown_(other.arrangesShown_), core_(view) {
    if (other.attributes_) {
        attributes_ = make<FAttributes>(*other.attributes_);
        attributes_->remove(ancestorSize.attribute);
        attributes_->remove(ancestorMove.attribute);
    }
    core_.item.setFrame(other.core_.item.frame());
    core_.item.setInsets(other.core_.item.insets());
    core_.item.setLimits(other.core_.item.limits());
    core_.item.setName(other.core_.item.name());
    core_.item.setVisible(other.core_.item.isVisible());
    core_.clientRect = other.core_.clientRect;
    core_.frameRect = other.core_.frameRect;
}

ViewFields::~ViewFields() = default;

void ViewFields::suspendResizing(bool suspended, bool deep) {
    setFlag(viewResizeSuspended, suspended);
    if (deep)
        forEachSubView([&](UView& view) { view.suspendResizing(suspended, true); });
}

void ViewFields::setTooltip(const ConstString& tooltip) {
    tooltip_ = tooltip;
}

FAttributes& ViewFields::getAttributes() {
    if (!attributes_)
        attributes_ = make<FAttributes>();
    return *attributes_;
}

void ViewFields::setLayout(Ref<App::Layout::IItemLayout> layout) {
    core_.item.setLayout(std::move(layout));
}

void ViewFields::setSource(Ref<ViewSource> source) {
    source_ = std::move(source);
}

UView* ViewFields::getSubView(int32_t index) const {
    App::Layout::Item* item = core_.item.children().at(index);
    return item ? &ViewItem::viewOf(*item) : nullptr;
}

int32_t ViewFields::getSubViewIndex(const UView* view) const {
    return view ? core_.item.children().indexOf(&view->getItem()) : -1;
}

UView* ViewFields::getNextSubView(const UView* view) const {
    const int32_t index = getSubViewIndex(view);
    return index >= 0 ? getSubView(index + 1) : nullptr;
}

// ---- Visual state.

void ViewFields::enableStateDrawing(bool enabled) {
    viewState_ =
        static_cast<uint16_t>(enabled ? viewState_ | stateDrawingEnabled : viewState_ & ~stateDrawingEnabled);
    if (enabled)
        setFlag(viewFocusable, true);
}

void ViewFields::setStateBits(uint16_t bits, bool on, StateKind kind) {
    const auto state = static_cast<uint16_t>(on ? viewState_ | bits : viewState_ & ~bits);
    if (state == viewState_)
        return;
    viewState_ = state;
    core_.item.view().stateChanged(kind);
}

void ViewFields::setRollover(uint16_t bits, bool on) {
    setStateBits(bits & stateRolloverAny, on, StateKind::rollover);
}

void ViewFields::setOverlayDrawn(bool drawn) {
    core_.item.view().stateDrawn(drawn);
    viewState_ =
        static_cast<uint16_t>(drawn ? viewState_ | stateOverlayDrawn : viewState_ & ~stateOverlayDrawn);
}

void ViewFields::clearVisualStates() {
    // The plain rollover stays: it follows the mouse alone.
    setStateBits(stateRolloverAny & ~stateRollover, false, StateKind::rollover);
    setStateBits(stateFocused, false, StateKind::focused);
    setStateBits(statePressed, false, StateKind::pressed);
    setStateBits(stateDraggedOver, false, StateKind::draggedOver);
}

// ---- Listeners and handlers.

ViewRare& ViewFields::getRare() {
    if (!core_.rare)
        core_.rare = std::make_unique<ViewRare>();
    return *core_.rare;
}

IDragHandler* ViewFields::getDragHandler() const {
    return core_.rare ? core_.rare->dragHandler : nullptr;
}

void ViewFields::setDragHandler(IDragHandler* handler) {
    getRare().dragHandler = handler;
}

IFocusNavigation* ViewFields::getFocusNavigation() const {
    return core_.rare ? core_.rare->focusNavigation : nullptr;
}

void ViewFields::setFocusNavigation(IFocusNavigation* navigation) {
    getRare().focusNavigation = navigation;
}

IFocusDelegate* ViewFields::getFocusDelegate() const {
    return core_.rare ? core_.rare->focusDelegate.get() : nullptr;
}

void ViewFields::setFocusDelegate(Ref<IFocusDelegate> focusDelegate) {
    getRare().focusDelegate = std::move(focusDelegate);
}

FocusPolicy* ViewFields::getFocusPolicy() const {
    return core_.rare ? core_.rare->focusPolicy.get() : nullptr;
}

void ViewFields::setFocusPolicy(Ref<FocusPolicy> policy) {
    getRare().focusPolicy = std::move(policy);
}

void ViewFields::addLifecycleListener(IViewLifecycleListener* listener) {
    addTo(getRare().lifecycleListeners, listener);
}

void ViewFields::removeLifecycleListener(IViewLifecycleListener* listener) {
    if (core_.rare)
        removeFrom(core_.rare->lifecycleListeners, listener);
}

void ViewFields::addMouseListener(IViewMouseListener* listener) {
    addTo(getRare().mouseListeners, listener);
}

void ViewFields::removeMouseListener(IViewMouseListener* listener) {
    if (core_.rare)
        removeFrom(core_.rare->mouseListeners, listener);
}

void ViewFields::addMoveListener(IViewMoveListener* listener) {
    addTo(getRare().moveListeners, listener);
}

void ViewFields::removeMoveListener(IViewMoveListener* listener) {
    if (core_.rare)
        removeFrom(core_.rare->moveListeners, listener);
}

void ViewFields::addKeyListener(IViewKeyListener* listener) {
    addTo(getRare().keyListeners, listener);
}

void ViewFields::removeKeyListener(IViewKeyListener* listener) {
    if (core_.rare)
        removeFrom(core_.rare->keyListeners, listener);
}

} // namespace qorl

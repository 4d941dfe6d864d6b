#pragma once

#include "foundation/CmObject.h"
#include "foundation/text/String.h"
#include "views/SubViewIterator.h"
#include "views/ViewCore.h"
#include "views/ViewFlags.h"
#include "views/ViewListeners.h"

#include <qorl/Geometry.h>
#include <qorl/Ref.h>

namespace qorl {

class FAttributes;
class FocusPolicy;
class IFocusDelegate;
class IFocusNavigation;
class UView;
class ViewSource;

/// The fields of `UView` and what can be said of them without asking the view: identity, flags, look states,
/// rects, listeners. Only `UView` derives from this.
class ViewFields : public CmObject {
public:
    // ---- Fields and flags.

    UView* getParent() const { return parent_; }
    uint64_t getViewId() const { return core_.viewId; }
    uint32_t getViewFlags() const { return viewFlags_; }
    bool hasFlag(uint32_t flag) const { return (viewFlags_ & flag) != 0; }
    /// Stores the bits and tells nobody.
    void setFlag(uint32_t flag, bool on) { viewFlags_ = on ? viewFlags_ | flag : viewFlags_ & ~flag; }
    bool isShown() const { return hasFlag(viewVisible); }
    bool isAttached() const { return hasFlag(viewAttached); }
    uint32_t getAttach() const { return viewFlags_ & viewAttachAll; }
    void setAttach(uint32_t edges) { viewFlags_ = (viewFlags_ & ~viewAttachAll) | (edges & viewAttachAll); }
    void setFocusable(bool focusable) { setFlag(viewFocusable, focusable); }
    /// Also down the whole subtree with `deep`.
    void suspendResizing(bool suspended, bool deep);
    const String& getTitle() const { return title_; }
    void setTooltip(const ConstString& tooltip);
    const String& getTooltipText() const { return tooltip_; }
    /// Made on first use; `peekAttributes` gives null instead. Owned by the view.
    FAttributes& getAttributes();
    FAttributes* peekAttributes() const { return attributes_.get(); }
    App::Layout::Item& getItem() { return core_.item; }
    const App::Layout::Item& getItem() const { return core_.item; }
    void setSizeLimits(const App::Layout::SizeLimits& limits) { core_.item.setLimits(limits); }
    /// Puts a layout on the view, which from now on arranges the subviews; null takes it away.
    void setLayout(Ref<App::Layout::IItemLayout> layout);
    /// The element of a document that the view was built for; null when it was not.
    ViewSource* getSource() const { return source_.get(); }
    void setSource(Ref<ViewSource> source);

    // ---- Visual state.

    uint16_t getViewState() const { return viewState_; }
    bool hasState(uint16_t bits) const { return (viewState_ & bits) != 0; }
    void enableStateDrawing(bool enabled);
    void setRollover(uint16_t bits, bool on);
    void setFocusedLook(bool on) { setStateBits(stateFocused, on, StateKind::focused); }
    void setPressedLook(bool on) { setStateBits(statePressed, on, StateKind::pressed); }
    void setSelectedLook(bool on) { setStateBits(stateSelected, on, StateKind::selected); }
    void setDraggedOverLook(bool on) { setStateBits(stateDraggedOver, on, StateKind::draggedOver); }
    void setOverlayDrawn(bool drawn);
    bool hasVisualState(uint16_t ignored = 0) const { return (viewState_ & stateVisualMask & ~ignored) != 0; }
    void clearVisualStates();

    // ---- Subviews; null and -1 for what is not there.

    int32_t getSubViewCount() const { return core_.item.children().count(); }
    UView* getSubView(int32_t index) const;
    int32_t getSubViewIndex(const UView* view) const;
    UView* getFirstSubView() const { return getSubView(0); }
    UView* getLastSubView() const { return getSubView(getSubViewCount() - 1); }
    UView* getNextSubView(const UView* view) const;

    /// Whether the places of the subviews depend on which of them are shown: `invalidateLayout` comes then.
    bool arrangesShownSubViews() const { return arrangesShown_; }

    template <typename Visit>
    void forEachSubView(Visit&& visit) {
        SubViewList::allOf(*this).forEach(std::forward<Visit>(visit));
    }
    template <typename Visit>
    void forEachSubViewReverse(Visit&& visit) {
        SubViewIterator walk(*this, SubViewIterator::Walk::reverse);
        while (UView* view = walk.next())
            visit(*view);
    }

    // ---- Rects and conversions; more of both in `UView`.

    /// In the client space of the parent.
    const CmRect& getFrameRect() const { return core_.frameRect; }
    /// Relative to the frame.
    const CmRect& getClientRect() const { return core_.clientRect; }
    /// The client in its own coordinates: from 0, 0.
    CmRect getClientBounds() const { return {0, 0, core_.clientRect.width(), core_.clientRect.height()}; }
    CmSize getClientSize() const { return core_.clientRect.size(); }
    CmSize getFrameSize() const { return core_.frameRect.size(); }
    CmPoint clientOrigin() const { return core_.frameRect.origin() + core_.clientRect.origin(); }
    CmPoint parentToClient(CmPoint point) const { return point - clientOrigin(); }
    CmPoint parentToFrame(CmPoint point) const { return point - core_.frameRect.origin(); }

    // ---- Listeners and handlers. None is counted, save for the delegate and the policy.

    ViewRare* peekRare() const { return core_.rare.get(); }
    ViewRare& getRare();
    IDragHandler* getDragHandler() const;
    void setDragHandler(IDragHandler* handler);
    IFocusNavigation* getFocusNavigation() const;
    void setFocusNavigation(IFocusNavigation* navigation);
    IFocusDelegate* getFocusDelegate() const;
    void setFocusDelegate(Ref<IFocusDelegate> focusDelegate);
    FocusPolicy* getFocusPolicy() const;
    void setFocusPolicy(Ref<FocusPolicy> policy);
    void addLifecycleListener(IViewLifecycleListener* listener);
    void removeLifecycleListener(IViewLifecycleListener* listener);
    void addMouseListener(IViewMouseListener* listener);
    void removeMouseListener(IViewMouseListener* listener);
    void addMoveListener(IViewMoveListener* listener);
    void removeMoveListener(IViewMoveListener* listener);
    void addKeyListener(IViewKeyListener* listener);
    void removeKeyListener(IViewKeyListener* listener);

protected:
    explicit ViewFields(UView& view);
    ViewFields(UView& view, const ViewFields& other);
    ~ViewFields() override;

    uint32_t viewFlags_ = viewVisible;
    Ref<FAttributes> attributes_;
    UView* parent_ = nullptr;
    Ref<ViewSource> source_;
    String title_;
    String tooltip_;
    uint16_t viewState_ = 0;
    bool hasDependents_ = false;
    bool arrangesShown_ = false; ///< Set by what stacks its subviews, when it is made.
    bool isWindow_ = false;      ///< Walks that look for the window end here.
    ViewCore core_;

private:
    void setStateBits(uint16_t bits, bool on, StateKind kind);
};

} // namespace qorl

#pragma once

#include "commands/UKeyCode.h"
#include "views/Accessible.h"
#include "views/IViewDrawing.h"
#include "views/InputEvents.h"
#include "views/SubViewIterator.h"
#include "views/ViewFields.h"
#include "views/ViewPredicate.h"

#include <qorl/Geometry.h>
#include <qorl/Ref.h>

#include <string_view>

namespace qorl {

class UBitmap;
class UColor;
class UWindow;

/// The node of everything that is visible: windows, controls and containers are views.
///
/// A view has one parent and an ordered list of subviews, the first at the back. The parent owns one
/// reference on each. A new view is shown (`isShown`), but not visible before it hangs below something that
/// is; it is *attached* while it stands in a live window. Its frame lies in the client space of its parent,
/// its client rect inside its frame; what draws, hits and places subviews uses client coordinates. When a
/// view is resized, its subviews follow by their attach flags, or by the layout put on the view's item.
///
/// The virtual operations stand in their published order; those of ours follow behind.
/// Threading: the user-interface thread only.
class UView : public ViewFields, public IViewDrawing {
    QORL_CLASS(UView, CmObject)
    QORL_FACES(UView, CmObject, IViewDrawing)
    QORL_CLONE(UView)

public:
    UView();
    explicit UView(const CmRect& frame);
    UView(const CmRect& frame, const ConstString& title);
    /// What a template hands on: frame, insets, limits, title, tool tip and flags. Neither place nor
    /// subviews.
    UView(const UView& other);
    UView& operator=(const UView&) = delete;

    // ---- Drawing. `rect` of `draw` in frame coordinates, of the others in client coordinates.

    /// Content, then subviews over it, then focus and state marks.
    virtual bool draw(const CmRect& rect);
    virtual bool drawSubViews(const CmRect& rect);
    virtual bool drawContent(const CmRect& rect);
    virtual void setHighlighted(bool highlighted);
    virtual bool isHighlighted() const;
    virtual void setMarked(bool marked);
    virtual bool isMarked() const;
    /// The window became active, or no longer is.
    virtual void activate(bool active);
    /// Asks for a redraw of `rect` (client coordinates) with the next paint. False when nothing can be
    /// redrawn.
    virtual bool invalidate(const CmRect& rect);
    virtual bool invalidateIfVisible(const CmRect& rect);
    /// Shown itself, and so is everything above it, up to a window that is.
    virtual bool isVisible() const;
    virtual bool show();
    virtual bool hide();
    /// Never null while an application stands.
    virtual UScheme* getScheme() const;
    virtual UColor getBackgroundColor(const UView* forView) const;
    /// A picture of the client, with or without what stands in it. Null when there is no memory for it.
    virtual Ref<UBitmap> createSnapshot(bool withSubViews);

    // ---- Mouse and keys; points in client coordinates. True when handled.

    virtual bool mouseDown(CmPoint point);
    virtual bool mouseUp(CmPoint point);
    virtual bool mouseEnter(CmPoint point);
    virtual bool mouseOver(CmPoint point);
    virtual bool mouseLeave(CmPoint point);
    virtual bool getMousePosition(CmPoint& point) const;
    virtual bool isMouseDown() const;
    virtual void setEnabled(bool enabled);
    virtual bool isEnabled() const;
    virtual bool keyDown(const UKeyCode& key);
    virtual bool keyUp(const UKeyCode& key);
    virtual bool isFocusable() const;
    /// Who gets the focus when it is given to this view.
    virtual UView* getFocusView();
    virtual void focusGained();
    virtual void focusLost();
    virtual void drawFocus(bool focused);
    virtual bool wantsFocusOnClick() const;
    /// 8-bit text owned by the view; null for none.
    virtual const char* getHelpIdentifier() const;
    virtual void focusHook(int32_t argument);
    virtual bool dragEnter(CmPoint point, UDragPack* pack);
    virtual bool dragLeave(CmPoint point, UDragPack* pack);
    virtual bool dragInside(CmPoint point, UDragPack* pack);
    virtual bool dragWouldAccept(CmPoint point, UDragPack* pack);
    virtual int32_t dragDrop(CmPoint point, UDragPack* pack);

    // ---- Tree.

    virtual bool addSubView(Ref<UView> view);
    /// False for null and for an ancestor. An index outside of the list appends. `view` must have no parent.
    virtual bool insertSubView(int32_t index, Ref<UView> view);
    /// Gives the parent's reference to the caller; null when `view` is no subview of this one.
    virtual Ref<UView> removeSubView(UView* view);
    virtual void removeAllSubViews();
    virtual bool isDescendant(const UView* view) const;
    virtual bool bringToFront(UView* view);
    virtual bool sendToBack(UView* view);
    virtual void setTitle(const ConstString& title);
    virtual bool hasTitle() const;
    virtual bool hasTooltip() const;
    /// `area` is the part of the client that the text belongs to; empty for all of it.
    virtual bool getTooltip(String& text, CmPoint point, CmRect& area) const;
    virtual bool getMenuHint() const;

    // ---- Geometry.

    virtual bool applyFrameHook(const CmRect& rect, bool redraw);
    virtual bool frameApplied(bool result, const CmRect& rect, bool redraw);
    virtual CmObject* getViewContext() const;
    virtual bool canResize();
    virtual void moved();
    virtual void sizeChanged(const CmRect& oldClientRect);
    virtual bool subViewFrameRequest(UView* child, const CmRect& rect, bool redraw);
    /// Lets the subtree veto the client size `rect`: false, with `rect` changed to what it would take.
    virtual bool checkSize(CmRect& rect);
    virtual void ancestorSized();
    virtual bool scrollContent(CmPoint delta, const CmRect& rect);
    virtual bool scrollRect(const CmRect& rect, CmPoint delta);
    /// Takes the size of the shown subviews plus a margin on the right and below; -1 keeps that dimension.
    virtual void resizeToFit(int32_t extraWidth, int32_t extraHeight);
    virtual void updateClientRect();
    /// `point` in frame coordinates.
    virtual bool hitsClient(CmPoint point) const;
    virtual UWindow* getWindow() const;
    virtual bool isRealized() const;
    virtual void setValuesEnabled(bool enabled);
    virtual bool acceptsDrop(UDragPack* pack, CmPoint point);
    /// Adds the way from the target to this view's client to `offset`.
    virtual bool getRenderTarget(Ref<RenderTarget>& target, CmPoint& offset);
    virtual bool isTransparentToPersistence() const;
    virtual void getWindowOffset(CmPoint& point) const;
    /// `point` in frame coordinates, outside of the client rect.
    virtual bool mouseDownInFrame(CmPoint point);
    virtual void detached(UView* parent);
    virtual void attached(UView* parent);
    virtual void drawState();
    virtual bool getStateRect(CmRect& rect) const;
    virtual void stateDrawn(bool drawn);
    virtual void stateChanged(StateKind kind);
    /// `Result::notImplemented` when not taken; then the view hears "Wheel".
    virtual Result wheelHook(WheelEvent& event);
    virtual Result mouseWheel(WheelEvent& event);
    virtual void resizeSubViews(const CmRect& oldClientRect, const SubViewList& list);
    /// A child asks to grow by `dx`, `dy`; comes back with what was granted. True when all of it was.
    virtual bool requestResize(UView* child, int32_t& dx, int32_t& dy);
    virtual bool childFrameRequest(UView* child, const CmRect& rect, bool redraw);
    virtual void beginOverlayDrawing();
    virtual void endOverlayDrawing();

    // ---- Behind the published table.

    virtual bool click(const ClickEvent& event);
    /// The mouse that this view held by `UWindow::captureMouse` was taken away; no `mouseUp` will come.
    virtual void mouseCaptureLost() {}
    /// The arrangement of the subviews may have changed; containers lay out again.
    virtual void invalidateLayout();
    virtual AccessibleRole getAccessibleRole() const;
    /// The title here.
    virtual bool getAccessibleName(String& name) const;
    virtual bool getAccessibleValue(String& value) const;
    virtual bool getAccessibleRange(AccessibleRange& range) const;
    virtual bool setAccessibleValue(double value);
    /// The tool tip here.
    virtual bool getAccessibleDescription(String& description) const;
    virtual int32_t countAccessibleActions() const;
    /// "press", "toggle"; null when out of range.
    virtual const char* getAccessibleActionName(int32_t index) const;
    virtual bool performAccessibleAction(int32_t index);

    // ---- Geometry.

    /// False when the frame is frozen.
    bool setFrame(const CmRect& rect, bool redraw);
    /// Makes `rect` (relative to the frame) the client, by the insets; without `keepFrame` the frame grows or
    /// shrinks with it and the insets stay.
    void setClientRect(const CmRect& rect, bool keepFrame);
    void setClientInsets(const App::Layout::Insets& insets, bool updateNow);
    /// What ancestors leave of the client, in client coordinates. False when that is nothing.
    bool getVisibleClientRect(CmRect& rect) const;
    /// The same for the frame, in client coordinates too.
    bool getVisibleFrameRect(CmRect& rect) const;
    CmPoint windowToClient(CmPoint point) const;
    CmPoint clientToWindow(CmPoint point) const;
    CmPoint windowToFrame(CmPoint point) const { return windowToClient(point) + core_.clientRect.origin(); }
    CmPoint frameToWindow(CmPoint point) const { return clientToWindow(point - core_.clientRect.origin()); }
    /// Unchanged outside of a window.
    CmPoint clientToScreen(CmPoint point) const;
    CmPoint screenToClient(CmPoint point) const;

    // ---- Redrawing.

    bool invalidateAll() { return invalidate(getClientBounds()); }
    void invalidateFrame();
    void redrawVisible();

    // ---- Tree and searches. Results are not counted.

    UView* getRootView();
    int32_t getDepth() const;
    UView* findParent(const ViewPredicate& predicate);
    /// The view itself included.
    UView* findParentDeep(const ViewPredicate& predicate);
    UView* findDirectSubView(const ViewPredicate& predicate);
    UView* findSubView(const ViewPredicate& predicate);
    UView* findSubViewBehind(const UView* sibling, const ViewPredicate& predicate);
    UView* findSubViewByClass(const char* name, bool deep);
    /// The subview in front that contains `point` (client coordinates) and passes; with `deep` the deepest.
    UView* findViewAt(CmPoint point, bool deep, const ViewPredicate& predicate);
    UView* findViewAt(CmPoint point, bool deep);
    UView* getEnclosingScrollView(int32_t maxDepth);

    // ---- State of the subtree.

    /// The flat form, which windows use.
    bool storeSubViewState(FAttributes* attributes);
    bool restoreSubViewState(FAttributes* attributes);
    /// The nested form, which containers use.
    bool storeSubViewTree(FAttributes* attributes, int32_t depth);
    bool restoreSubViewTree(FAttributes* attributes, int32_t depth);

    // ---- IViewDrawing.

    UScheme* getStyleSource() override { return getScheme(); }
    void setRenderTarget(RenderTarget* target) override;
    void setRenderTargetShared(RenderTarget* target) override;
    bool beginDraw(DrawContext& context) override;
    bool beginDrawClipped(DrawContext& context) override;

    void addDependent(FDependent* dependent) override;

protected:
    ~UView() override;

    /// What a view with a size of its own does for `resizeToFit`.
    void fitTo(CmSize own, int32_t extraWidth, int32_t extraHeight);
    /// The frame without hooks.
    bool applyFrame(const CmRect& rect, bool redraw);

private:
    void storeFrame(const CmRect& rect);
    void invalidateFrameChange(const CmRect& rect);
    bool checkSubViewSize(UView& subView, CmRect& rect, CmSize growth);
    /// Tells the dependents; without any only that it is done.
    void tellDependents(int32_t message);
};

} // namespace qorl

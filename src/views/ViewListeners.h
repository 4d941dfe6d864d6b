#pragma once

#include "commands/UKeyCode.h"
#include "foundation/messages/ListenerList.h"
#include "views/InputEvents.h"

#include <qorl/FInterface.h>

#include <memory>

namespace qorl {

class UDragPack;
class UView;

/// Sees what becomes of a view, without deriving from it.
class IViewLifecycleListener : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{B7E2A4C1-3F58-4D96-8E0B-6A91D27C540F}");

    virtual void viewShown(UView* view) = 0;
    virtual void viewHidden(UView* view) = 0;
    virtual void viewFocusGained(UView* view) = 0;
    virtual void viewFocusLost(UView* view) = 0;
    virtual void viewEnabled(UView* view) = 0;
    virtual void viewDisabled(UView* view) = 0;
    virtual void viewMoved(UView* view) = 0;
    virtual void viewSized(UView* view) = 0;
    virtual void viewAttached(UView* view) = 0;
    virtual void viewDetaching(UView* view) = 0;
    virtual void viewDetached(UView* view) = 0;
    /// The last call. The subviews are gone already.
    virtual void viewDestroyed(UView* view) = 0;

protected:
    ~IViewLifecycleListener() = default;
};

/// Sees presses, releases, clicks and the wheel of a view.
class IViewMouseListener : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{40D96B2E-81F7-4C35-A2C8-E5730B9F16DA}");

    virtual void viewMouseDown(const MouseEvent& event) = 0;
    virtual void viewMouseUp(const MouseEvent& event) = 0;
    virtual void viewClicked(const ClickEvent& event) = 0;
    /// May set `handled`.
    virtual void viewMouseWheel(WheelEvent& event) = 0;

protected:
    ~IViewMouseListener() = default;
};

/// Sees the pointer travel over a view. A view with such a listener takes part in the hover.
class IViewMoveListener : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{96F1C07D-2A4B-4E83-9D5E-18B3C6720AE4}");

    virtual void viewMouseEnter(const MouseEvent& event) = 0;
    virtual void viewMouseOver(const MouseEvent& event) = 0;
    virtual void viewMouseLeave(const MouseEvent& event) = 0;

protected:
    ~IViewMoveListener() = default;
};

/// Sees the keys that arrive at a view.
class IViewKeyListener : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{D35A80C9-67E4-4B12-B8F6-0C29A5E17D83}");

    virtual void viewKeyDown(UView* view, const UKeyCode& key) = 0;
    virtual void viewKeyUp(UView* view, const UKeyCode& key) = 0;

protected:
    ~IViewKeyListener() = default;
};

/// Takes the drags that arrive at a view. Points in client coordinates of the view.
class IDragHandler : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{1E84F5A7-C93D-4062-8B7A-D41F60E25B98}");

    virtual bool dragEnter(UView* view, CmPoint point, UDragPack* pack) = 0;
    virtual bool dragLeave(UView* view, CmPoint point, UDragPack* pack) = 0;
    virtual bool dragInside(UView* view, CmPoint point, UDragPack* pack) = 0;
    virtual bool dragWouldAccept(UView* view, CmPoint point, UDragPack* pack) = 0;
    /// 0 nothing, 2 moved.
    virtual int32_t dragDrop(UView* view, CmPoint point, UDragPack* pack) = 0;

protected:
    ~IDragHandler() = default;
};

} // namespace qorl

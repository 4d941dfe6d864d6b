#pragma once

#include <qorl/FInterface.h>
#include <qorl/Geometry.h>

namespace qorl {

class UView;

/// A view that moves the pixels of what it holds by itself, so that a scroll need not go up to the window.
class IScrollAware : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{C8F20B63-9E15-47AD-B4D2-5A7603E1F98C}");

    /// `rect` in client coordinates of `view`.
    virtual bool scrollRectOf(UView* view, const CmRect& rect, CmPoint delta) = 0;

protected:
    ~IScrollAware() = default;
};

} // namespace qorl

#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/FObject.h"
#include "graphics/UDrawDevice.h"

#include <qorl/Ref.h>

#include <utility>

namespace qorl {

class UWindow;

/// Where the drawing of a view and of all below it ends up: an open device, and the window that it shows in.
///
/// A window makes one for each paint and drops it at the end; a view that asks for one at another time gets a
/// fresh one on the window's surface, which lives for that one drawing. A bitmap's stands outside of any
/// window.
class RenderTarget final : public FObject {
    QORL_CLASS(RenderTarget, FObject)

public:
    /// Nothing that is drawn goes anywhere.
    RenderTarget() = default;
    /// Opens `target` for as long as this lives. `window` may be null.
    RenderTarget(DrawTarget* target, UWindow* window) : device_(target), window_(window) {}
    /// Hands what is drawn to `backEnd`, such as one that records it.
    explicit RenderTarget(Ref<DrawBackEnd> backEnd) : device_(std::move(backEnd)) {}

    UDrawDevice& getDevice() { return device_; }
    UWindow* getWindow() const { return window_; }
    /// What may be drawn on, in coordinates of the target.
    const CmRect& getClip() const { return device_.getClip(); }
    void setClip(const CmRect& rect) { device_.setClip(rect); }

private:
    UDrawDevice device_;
    UWindow* window_ = nullptr;
};

} // namespace qorl

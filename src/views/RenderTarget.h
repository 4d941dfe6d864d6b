#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/FObject.h"
#include "graphics/UDrawDevice.h"
#include "platform/Region.h"

#include <qorl/Ref.h>

#include <utility>

namespace qorl {

class UWindow;

/// Hears where a drawing outside of a paint may have gone, when it is over.
class DrawnListener : public FObject {
public:
    virtual void drawn(const platform::Region& region) = 0;
};

/// Where the drawing of a view and of all below it ends up: an open device, and the window that it shows in.
///
/// A window makes one for each paint and drops it at the end; a view that asks for one at another time gets a
/// fresh one on the window's surface, which lives for that one drawing and shows it at the end. A bitmap's
/// stands outside of any window.
class RenderTarget final : public FObject {
    QORL_CLASS(RenderTarget, FObject)

public:
    /// Nothing that is drawn goes anywhere.
    RenderTarget() = default;
    /// Opens `target` for as long as this lives. `window` may be null.
    RenderTarget(DrawTarget* target, UWindow* window, Ref<DrawnListener> listener = {})
        : reach_(std::move(listener)), device_(target), window_(window) {}
    /// Hands what is drawn to `backEnd`, such as one that records it.
    explicit RenderTarget(Ref<DrawBackEnd> backEnd) : device_(std::move(backEnd)) {}

    UDrawDevice& getDevice() { return device_; }
    UWindow* getWindow() const { return window_; }
    /// What may be drawn on, in coordinates of the target.
    const CmRect& getClip() const { return device_.getClip(); }
    void setClip(const CmRect& rect) { device_.setClip(rect); }
    /// A device is going to draw within `rect`, in coordinates of the target.
    void drawWithin(const CmRect& rect) { reach_.add(rect); }

private:
    /// Tells its listener when it goes, which is behind the device.
    class Reach {
    public:
        explicit Reach(Ref<DrawnListener> listener = {}) : listener_(std::move(listener)) {}
        Reach(const Reach&) = delete;
        Reach& operator=(const Reach&) = delete;
        ~Reach() {
            if (listener_)
                listener_->drawn(region_);
        }

        void add(const CmRect& rect) {
            if (listener_)
                region_.add(rect);
        }

    private:
        Ref<DrawnListener> listener_;
        platform::Region region_;
    };

    Reach reach_;
    UDrawDevice device_;
    UWindow* window_ = nullptr;
};

} // namespace qorl

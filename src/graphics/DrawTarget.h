#pragma once

#include "foundation/ClassMacros.h"
#include "graphics/GraphicsImage.h"

#include <qorl/FInterface.h>

namespace qorl {

/// Something that a draw device can be opened on: a bitmap, or the surface of a window.
class DrawTarget : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{379A026B-1AB6-48F9-830E-E4E408C3895B}");

    /// The image that is drawn into; null when the target can't be drawn now. Not counted for the caller.
    virtual GraphicsImage* getTargetImage() = 0;
    /// Device pixels per logical pixel. A device opened on the target draws in logical pixels.
    virtual double getScaleFactor() = 0;
    /// Told by a device when it is opened and when it goes.
    virtual void drawingBegins() = 0;
    virtual void drawingEnds() = 0;

protected:
    ~DrawTarget() = default;
};

/// A draw target of pixels in memory: what windows paint into before the platform shows it.
///
/// The pixels are its own, or memory that somebody else keeps for as long as it is attached (a window's
/// surface). Own pixels start transparent. Keep the object from paint to paint: attaching the same memory
/// again is free.
class SurfaceTarget final : public FObject, public DrawTarget {
    QORL_CLASS(SurfaceTarget, FObject)
    QORL_FACES(SurfaceTarget, FObject, DrawTarget)

public:
    SurfaceTarget() = default;
    /// In device pixels.
    explicit SurfaceTarget(CmSize size, double scaleFactor = 1.0);

    /// Gives it own pixels of this size; the old contents are gone. False when there is no memory.
    bool resize(CmSize size);
    /// Draws into memory of the caller from now on, with the scale factor that it says. False when it is
    /// empty.
    bool attach(const platform::PixelSurface& memory);

    CmSize getSize() const;
    Ref<GraphicsImage> getImage() const { return image_; }

    GraphicsImage* getTargetImage() override { return image_.get(); }
    double getScaleFactor() override { return scaleFactor_; }
    void drawingBegins() override {}
    void drawingEnds() override {}

private:
    Ref<GraphicsImage> image_;
    platform::PixelSurface attached_;
    double scaleFactor_ = 1.0;
};

} // namespace qorl

#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/FObject.h"
#include "graphics/DrawTypes.h"
#include "platform/PixelSurface.h"

#include <qorl/Geometry.h>
#include <qorl/Ref.h>

namespace qorl {

/// What pixels are locked for.
enum class PixelAccess : uint8_t { read, write };

/// An image as the back end holds it. Sizes are in device pixels.
///
/// Threading: one thread at a time; a worker may fill an image that nobody else draws.
class GraphicsImage : public FObject {
    QORL_CLASS(GraphicsImage, FObject)

public:
    virtual int32_t getWidth() const = 0;
    virtual int32_t getHeight() const = 0;

    /// The pixels to read and write, until `unlockPixels`. Do not draw into or from the image in between.
    /// Empty when the image has none to show.
    virtual platform::PixelSurface lockPixels() = 0;
    /// `access` says what was done: what was made of pixels that were only read stays good.
    virtual void unlockPixels(PixelAccess access) = 0;

    /// An image that shares the pixels of a part. Null for an empty rectangle or one that reaches outside.
    virtual Ref<GraphicsImage> createSection(const CmRect& rect) = 0;
    /// A copy at another size. Null when the size is empty or above the limits of `BitmapFactory`.
    virtual Ref<GraphicsImage> createScaled(CmSize size, Interpolation kind) = 0;
};

/// The pixels of an image for as long as the object stands.
class PixelLock {
public:
    explicit PixelLock(GraphicsImage& image, PixelAccess access = PixelAccess::write)
        : image_(image), buffer_(image.lockPixels()), access_(access) {}
    ~PixelLock() { image_.unlockPixels(access_); }
    PixelLock(const PixelLock&) = delete;
    PixelLock& operator=(const PixelLock&) = delete;

    const platform::PixelSurface& operator*() const { return buffer_; }
    const platform::PixelSurface* operator->() const { return &buffer_; }

private:
    GraphicsImage& image_;
    platform::PixelSurface buffer_;
    PixelAccess access_;
};

} // namespace qorl

#include "graphics/DrawTarget.h"

#include "graphics/GraphicsFactory.h"

namespace qorl {

SurfaceTarget::SurfaceTarget(CmSize size, double scaleFactor) : scaleFactor_(scaleFactor) {
    resize(size);
}

bool SurfaceTarget::resize(CmSize size) {
    attached_ = {};
    image_ = createGraphicsImage(size);
    return image_ != nullptr;
}

bool SurfaceTarget::attach(const platform::PixelSurface& memory) {
    scaleFactor_ = memory.scale;
    const bool same = image_ && !memory.isEmpty() && attached_.pixels == memory.pixels &&
                      attached_.width == memory.width && attached_.height == memory.height &&
                      attached_.stride == memory.stride;
    if (same)
        return true;
    attached_ = memory;
    image_.reset();
    GraphicsFactory* factory = getGraphicsFactory();
    BitmapFactory* bitmaps = factory ? factory->getBitmapFactory() : nullptr;
    if (bitmaps && !memory.isEmpty())
        image_ = bitmaps->wrapPixels(memory);
    return image_ != nullptr;
}

CmSize SurfaceTarget::getSize() const {
    return image_ ? CmSize{image_->getWidth(), image_->getHeight()} : CmSize{};
}

} // namespace qorl

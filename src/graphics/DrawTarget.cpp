#include "graphics/DrawTarget.h"

#include "graphics/GraphicsFactory.h"

namespace qorl {

namespace {

BitmapFactory* bitmapFactory() {
    GraphicsFactory* factory = getGraphicsFactory();
    return factory ? factory->getBitmapFactory() : nullptr;
}

} // namespace

SurfaceTarget::SurfaceTarget(CmSize size, double scaleFactor) : scaleFactor_(scaleFactor) {
    resize(size);
}

bool SurfaceTarget::resize(CmSize size) {
    attached_ = {};
    image_.reset();
    if (BitmapFactory* factory = bitmapFactory())
        image_ = factory->createBitmap(size, 0);
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
    BitmapFactory* factory = bitmapFactory();
    if (factory && !memory.isEmpty())
        image_ = factory->wrapPixels(memory);
    return image_ != nullptr;
}

CmSize SurfaceTarget::getSize() const {
    return image_ ? CmSize{image_->getWidth(), image_->getHeight()} : CmSize{};
}

} // namespace qorl

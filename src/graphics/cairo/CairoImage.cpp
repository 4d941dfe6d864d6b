#include "graphics/cairo/CairoImage.h"

#include "foundation/threads/FLock.h"
#include "graphics/GraphicsFactory.h"

#include <algorithm>
#include <utility>

namespace qorl {

namespace {

constexpr cairo_filter_t filterOf(Interpolation kind) {
    switch (kind) {
    case Interpolation::nearest: return CAIRO_FILTER_NEAREST;
    case Interpolation::linear: return CAIRO_FILTER_BILINEAR;
    default: return CAIRO_FILTER_BEST;
    }
}

bool isGood(const CairoHandle<cairo_surface_t>& surface) {
    return cairo_surface_status(surface.get()) == CAIRO_STATUS_SUCCESS;
}

CairoHandle<cairo_surface_t> another(cairo_surface_t* surface) {
    return CairoHandle<cairo_surface_t>(cairo_surface_reference(surface));
}

} // namespace

struct CairoImage::Keepers {
    FLock lock;
    int64_t pixels = 0;
    CairoImage* newest = nullptr;
    CairoImage* oldest = nullptr;

    /// `image` keeps other copies than before.
    void update(CairoImage& image);
    void limit();
};

CairoImage::Keepers CairoImage::keepers_;

CairoImage::CairoImage(CairoHandle<cairo_surface_t> surface, Ref<CairoImage> parent)
    : parent_(std::move(parent)),
      surface_(std::move(surface)), size_{cairo_image_surface_get_width(surface_.get()),
                                          cairo_image_surface_get_height(surface_.get())},
      generation_(parent_ ? parent_->generation_ : std::make_shared<uint64_t>(0)) {}

Ref<CairoImage> CairoImage::create(CmSize size) {
    if (!BitmapFactory::isAllowed(size))
        return nullptr;
    CairoHandle<cairo_surface_t> surface(
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size.width, size.height));
    return isGood(surface) ? Ref<CairoImage>::adopt(new CairoImage(std::move(surface), nullptr)) : nullptr;
}

Ref<CairoImage> CairoImage::wrap(const platform::PixelSurface& memory) {
    if (memory.isEmpty())
        return nullptr;
    CairoHandle<cairo_surface_t> surface(cairo_image_surface_create_for_data(
        memory.pixels, CAIRO_FORMAT_ARGB32, memory.width, memory.height, memory.stride));
    return isGood(surface) ? Ref<CairoImage>::adopt(new CairoImage(std::move(surface), nullptr)) : nullptr;
}

platform::PixelSurface CairoImage::lockPixels() {
    cairo_surface_flush(surface_.get());
    return {cairo_image_surface_get_data(surface_.get()), size_.width, size_.height,
            cairo_image_surface_get_stride(surface_.get()), 1.0};
}

void CairoImage::unlockPixels(PixelAccess access) {
    if (access == PixelAccess::read)
        return;
    cairo_surface_mark_dirty(surface_.get());
    contentsChange();
}

Ref<GraphicsImage> CairoImage::createSection(const CmRect& rect) {
    if (rect.isEmpty() || !CmRect::ofSize({}, size_).contains(rect))
        return nullptr;
    cairo_surface_flush(surface_.get());
    const int32_t stride = cairo_image_surface_get_stride(surface_.get());
    uint8_t* pixels =
        cairo_image_surface_get_data(surface_.get()) + int64_t{rect.top} * stride + int64_t{rect.left} * 4;
    CairoHandle<cairo_surface_t> surface(cairo_image_surface_create_for_data(
        pixels, CAIRO_FORMAT_ARGB32, rect.width(), rect.height(), stride));
    if (!isGood(surface))
        return nullptr;
    return Ref<CairoImage>::adopt(new CairoImage(std::move(surface), retain(this)));
}

Ref<GraphicsImage> CairoImage::createScaled(CmSize size, Interpolation kind) {
    return stretch(CmRect::ofSize({}, size_), size, kind);
}

Ref<CairoImage> CairoImage::stretch(const CmRect& part, CmSize size, Interpolation kind) {
    Ref<CairoImage> copy = create(size);
    if (!copy)
        return nullptr;
    const CairoHandle<cairo_surface_t> from(
        cairo_surface_create_for_rectangle(surface(), part.left, part.top, part.width(), part.height()));
    const CairoHandle<cairo_t> context(cairo_create(copy->surface()));
    cairo_scale(context.get(), double(size.width) / part.width(), double(size.height) / part.height());
    cairo_set_source_surface(context.get(), from.get(), 0, 0);
    // The edge must not fade into what lies beyond the part.
    cairo_pattern_set_extend(cairo_get_source(context.get()), CAIRO_EXTEND_PAD);
    cairo_pattern_set_filter(cairo_get_source(context.get()), filterOf(kind));
    cairo_set_operator(context.get(), CAIRO_OPERATOR_SOURCE);
    cairo_paint(context.get());
    return cairo_status(context.get()) == CAIRO_STATUS_SUCCESS ? copy : nullptr;
}

void CairoImage::Keepers::update(CairoImage& image) {
    int64_t kept = 0;
    for (const Stretched& entry : image.stretched_)
        kept += int64_t{entry.size.width} * entry.size.height;
    pixels += kept - std::exchange(image.keptPixels_, kept);
    if (image.later_ || newest == &image)
        (image.later_ ? image.later_->earlier_ : newest) = image.earlier_;
    if (image.earlier_ || oldest == &image)
        (image.earlier_ ? image.earlier_->later_ : oldest) = image.later_;
    image.later_ = nullptr;
    image.earlier_ = nullptr;
    if (kept == 0)
        return;
    image.earlier_ = std::exchange(newest, &image);
    (image.earlier_ ? image.earlier_->later_ : oldest) = &image;
}

void CairoImage::Keepers::limit() {
    while (pixels > mostKeptPixels && oldest) {
        CairoImage& image = *oldest;
        if (oldest != newest)
            image.stretched_.clear();
        else if (image.stretched_.size() > 1)
            image.stretched_.pop_back();
        else
            return;
        update(image);
    }
}

int64_t CairoImage::keptPixels() {
    const FGuard guard(keepers_.lock);
    return keepers_.pixels;
}

CairoImage::~CairoImage() {
    const FGuard guard(keepers_.lock);
    stretched_.clear();
    keepers_.update(*this);
}

CairoHandle<cairo_surface_t> CairoImage::findStretched(const CmRect& part, CmSize size, Interpolation kind) {
    const auto found = std::find_if(stretched_.begin(), stretched_.end(), [&](const Stretched& entry) {
        return entry.part == part && entry.size == size && entry.kind == kind &&
               entry.generation == *generation_;
    });
    if (found == stretched_.end())
        return nullptr;
    std::rotate(stretched_.begin(), found, found + 1);
    return another(stretched_.front().surface.get());
}

void CairoImage::keepStretched(Stretched copy) {
    std::erase_if(stretched_,
                  [&copy](const Stretched& entry) { return entry.generation != copy.generation; });
    if (stretched_.size() >= mostStretched)
        stretched_.resize(mostStretched / 2);
    stretched_.insert(stretched_.begin(), std::move(copy));
    keepers_.update(*this);
    keepers_.limit();
}

CairoHandle<cairo_surface_t> CairoImage::stretched(const CmRect& part, CmSize size, Interpolation kind) {
    {
        const FGuard guard(keepers_.lock);
        if (CairoHandle<cairo_surface_t> found = findStretched(part, size, kind))
            return found;
    }
    const Ref<CairoImage> copy = stretch(part, size, kind);
    if (!copy)
        return nullptr;
    const FGuard guard(keepers_.lock);
    keepStretched({part, size, kind, *generation_, another(copy->surface())});
    return another(copy->surface());
}

} // namespace qorl

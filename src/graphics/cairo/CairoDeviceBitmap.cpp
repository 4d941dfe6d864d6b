#include "foundation/Cast.h"
#include "graphics/cairo/CairoDevice.h"

#include <algorithm>
#include <cmath>

namespace qorl {

namespace {

/// Larger targets are drawn straight from the source: a copy of that size would be kept for nothing.
constexpr int64_t mostCopiedPixels = 4 * 1024 * 1024;

CmRect wholePixels(const Geometry::Rect& rect) {
    return {toDevicePixel(rect.x), toDevicePixel(rect.y), toDevicePixel(rect.right()),
            toDevicePixel(rect.bottom())};
}

/// The share of `destination` that `part` has of `whole`.
Geometry::Rect shareOf(const Geometry::Rect& destination, const CmRect& part, const CmRect& whole) {
    const double across = destination.width / whole.width();
    const double down = destination.height / whole.height();
    return {destination.x + (part.left - whole.left) * across, destination.y + (part.top - whole.top) * down,
            part.width() * across, part.height() * down};
}

} // namespace

Result CairoDevice::drawBitmap(GraphicsImage* image, Geometry::Point point, const Geometry::Rect* source) {
    if (!image)
        return Result::invalidArgument;
    const Geometry::Rect whole{0, 0, double(image->getWidth()), double(image->getHeight())};
    const Geometry::Rect& part = source ? *source : whole;
    return drawBitmapStretched(image, {point.x, point.y, part.width, part.height}, part, 1.0,
                               Interpolation::linear);
}

Result CairoDevice::drawBitmapStretched(GraphicsImage* image, const Geometry::Rect& destination,
                                        const Geometry::Rect& source, double alpha,
                                        Interpolation interpolation) {
    auto* picture = cast<CairoImage>(image);
    if (!picture || picture == image_.get())
        return Result::invalidArgument;
    const CmRect wanted = wholePixels(source);
    const CmRect part = wanted.intersect({0, 0, picture->getWidth(), picture->getHeight()});
    if (part.isEmpty() || destination.isEmpty() || !(alpha > 0))
        return Result::ok;
    const Geometry::Rect place = part == wanted ? destination : shareOf(destination, part, wanted);
    const TransformMatrix& matrix = state_.matrix;
    if (!matrix.isUpright() || matrix.m11 <= 0 || matrix.m22 <= 0)
        return drawRotatedBitmap(*picture, place, part, alpha, interpolation);

    const CmRect box = toDeviceRect(place);
    if (box.isEmpty() || !state_.clip.intersects(box))
        return Result::ok;
    if (box.size() == part.size()) {
        paintSurface(picture->surface(), box.origin() - part.origin(), box, alpha);
        return status();
    }
    if (int64_t{box.width()} * box.height() > mostCopiedPixels)
        return drawRotatedBitmap(*picture, place, part, alpha, interpolation);
    const CairoHandle<cairo_surface_t> stretched = picture->stretched(part, box.size(), interpolation);
    if (!stretched)
        return Result::failure;
    paintSurface(stretched.get(), box.origin(), box, alpha);
    return status();
}

/// `place` is where the surface's top left goes; only `box` is painted.
void CairoDevice::paintSurface(cairo_surface_t* surface, CmPoint place, const CmRect& box, double alpha) {
    cairo_t* context = context_.get();
    const CmRect visible = box.intersect(state_.clip);
    if (!clipTo(visible))
        return;
    source_ = Source::other;
    cairo_set_source_surface(context, surface, place.x, place.y);
    cairo_pattern_set_filter(cairo_get_source(context), CAIRO_FILTER_NEAREST);
    cairo_rectangle(context, visible.left, visible.top, visible.width(), visible.height());
    if (alpha >= 1) {
        cairo_fill(context);
        return;
    }
    cairo_save(context);
    cairo_clip(context);
    cairo_paint_with_alpha(context, alpha);
    cairo_restore(context);
}

Result CairoDevice::drawRotatedBitmap(CairoImage& image, const Geometry::Rect& destination,
                                      const CmRect& source, double alpha, Interpolation interpolation) {
    cairo_t* context = context_.get();
    const TransformMatrix map =
        state_.matrix.after({destination.width / source.width(), 0, 0, destination.height / source.height(),
                             destination.x, destination.y});
    if (!std::isnormal(map.determinant()) || !clipTo(bounds_))
        return Result::ok;
    const CairoHandle<cairo_surface_t> part(cairo_surface_create_for_rectangle(
        image.surface(), source.left, source.top, source.width(), source.height()));
    const cairo_matrix_t matrix{map.m11, map.m12, map.m21, map.m22, map.dx, map.dy};
    cairo_save(context);
    cairo_set_matrix(context, &matrix);
    cairo_rectangle(context, 0, 0, source.width(), source.height());
    cairo_clip(context);
    cairo_set_source_surface(context, part.get(), 0, 0);
    cairo_pattern_set_extend(cairo_get_source(context), CAIRO_EXTEND_PAD);
    cairo_pattern_set_filter(cairo_get_source(context), interpolation == Interpolation::nearest
                                                            ? CAIRO_FILTER_NEAREST
                                                            : CAIRO_FILTER_GOOD);
    cairo_paint_with_alpha(context, std::min(alpha, 1.0));
    cairo_restore(context);
    return status();
}

} // namespace qorl

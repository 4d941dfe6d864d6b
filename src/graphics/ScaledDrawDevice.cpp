#include "graphics/ScaledDrawDevice.h"

#include "graphics/FastPrimitives.h"
#include "graphics/GraphicsImage.h"
#include "graphics/TransformMatrix.h"

#include <algorithm>

namespace qorl {

ScaledDrawDevice::ScaledDrawDevice(DrawBackEnd* inner, CmPoint origin, int32_t factorX, int32_t factorY) {
    setMapping(inner, origin, factorX, factorY);
}

void ScaledDrawDevice::setMapping(DrawBackEnd* inner, CmPoint origin, int32_t factorX, int32_t factorY) {
    inner_ = retain(inner);
    origin_ = origin;
    factorX_ = factorX;
    factorY_ = factorY;
}

Geometry::Point ScaledDrawDevice::map(Geometry::Point point) const {
    if (factorX_ != 1)
        point.x *= factorX_;
    if (factorY_ != 1)
        point.y *= factorY_;
    return {point.x + origin_.x, point.y + origin_.y};
}

Geometry::Rect ScaledDrawDevice::map(const Geometry::Rect& rect) const {
    const Geometry::Point corner = map(Geometry::Point{rect.x, rect.y});
    return {corner.x, corner.y, rect.width * factorX_, rect.height * factorY_};
}

Result ScaledDrawDevice::drawLine(Geometry::Point from, Geometry::Point to) {
    return inner_ ? inner_->drawLine(map(from), map(to)) : Result::failure;
}

Result ScaledDrawDevice::drawRect(const Geometry::Rect& rect, DrawMode mode) {
    return inner_ ? inner_->drawRect(map(rect), mode) : Result::failure;
}

Result ScaledDrawDevice::drawEllipse(const Geometry::Rect& rect, DrawMode mode) {
    return inner_ ? inner_->drawEllipse(map(rect), mode) : Result::failure;
}

Result ScaledDrawDevice::drawPath(GraphicsPath* path, DrawMode mode, const TransformMatrix* matrix) {
    if (!inner_)
        return Result::failure;
    const TransformMatrix own{double(factorX_), 0, 0, double(factorY_), double(origin_.x), double(origin_.y)};
    const TransformMatrix both = matrix ? own.after(*matrix) : own;
    return inner_->drawPath(path, mode, both.isIdentity() ? nullptr : &both);
}

Result ScaledDrawDevice::drawString(std::u16string_view text, const Geometry::Rect& rect, GraphicsFont* font,
                                    uint32_t color, int32_t alignment) {
    return inner_ ? inner_->drawString(text, map(rect), font, color, alignment) : Result::failure;
}

Result ScaledDrawDevice::drawBitmap(GraphicsImage* image, Geometry::Point point,
                                    const Geometry::Rect* source) {
    if (!inner_ || !image)
        return Result::failure;
    if (factorX_ == 1 && factorY_ == 1)
        return inner_->drawBitmap(image, map(point), source);
    const Geometry::Rect part =
        source ? *source : Geometry::Rect{0, 0, double(image->getWidth()), double(image->getHeight())};
    return inner_->drawBitmapStretched(image, map(Geometry::Rect{point.x, point.y, part.width, part.height}),
                                       part, 1.0, Interpolation::linear);
}

Result ScaledDrawDevice::drawBitmapStretched(GraphicsImage* image, const Geometry::Rect& destination,
                                             const Geometry::Rect& source, double alpha,
                                             Interpolation interpolation) {
    return inner_ ? inner_->drawBitmapStretched(image, map(destination), source, alpha, interpolation)
                  : Result::failure;
}

Result ScaledDrawDevice::clearRect(const Geometry::Rect& rect) {
    return inner_ ? inner_->clearRect(map(rect)) : Result::failure;
}

Result ScaledDrawDevice::setDrawAntialiased(bool antialiased) {
    return inner_ ? inner_->setDrawAntialiased(antialiased) : Result::failure;
}

Result ScaledDrawDevice::setPenColor(uint32_t color) {
    return inner_ ? inner_->setPenColor(color) : Result::failure;
}

Result ScaledDrawDevice::setPenWidth(double width) {
    return inner_ ? inner_->setPenWidth(width * std::max(factorX_, factorY_)) : Result::failure;
}

Result ScaledDrawDevice::setLineStyle(const LineStyle& style) {
    return inner_ ? inner_->setLineStyle(style) : Result::failure;
}

Result ScaledDrawDevice::setBrushColor(uint32_t color) {
    return inner_ ? inner_->setBrushColor(color) : Result::failure;
}

/// The matrix speaks of coordinates before the mapping, the back end's of those behind it.
Result ScaledDrawDevice::concatTransformMatrix(const TransformMatrix& matrix) {
    if (!inner_ || factorX_ == 0 || factorY_ == 0)
        return Result::failure;
    const TransformMatrix own{double(factorX_), 0, 0, double(factorY_), double(origin_.x), double(origin_.y)};
    TransformMatrix back;
    own.invert(back);
    return inner_->concatTransformMatrix(own.after(matrix).after(back));
}

Result ScaledDrawDevice::setClip(const Geometry::Rect& rect) {
    return inner_ ? inner_->setClip(map(rect)) : Result::failure;
}

Result ScaledDrawDevice::saveGlobalState() {
    return inner_ ? inner_->saveGlobalState() : Result::failure;
}

Result ScaledDrawDevice::restoreGlobalState() {
    return inner_ ? inner_->restoreGlobalState() : Result::failure;
}

Ref<FastLines> ScaledDrawDevice::createFastLines(int32_t capacity) {
    return inner_ ? inner_->createFastLines(capacity) : Ref<FastLines>();
}

Result ScaledDrawDevice::drawFastLines(FastLines* lines) {
    if (!inner_ || !lines)
        return Result::failure;
    const auto mapped = make<FastLines>(static_cast<int32_t>(lines->lines().size()));
    for (const auto& line : lines->lines())
        mapped->add(map(line.from), map(line.to));
    return inner_->drawFastLines(mapped.get());
}

Ref<FastRects> ScaledDrawDevice::createFastRects(int32_t capacity) {
    return inner_ ? inner_->createFastRects(capacity) : Ref<FastRects>();
}

Result ScaledDrawDevice::drawFastRects(FastRects* rects, DrawMode mode) {
    if (!inner_ || !rects)
        return Result::failure;
    const auto mapped = make<FastRects>(static_cast<int32_t>(rects->rects().size()));
    for (const auto& rect : rects->rects())
        mapped->add(map(rect));
    return inner_->drawFastRects(mapped.get(), mode);
}

Result ScaledDrawDevice::getFontMetrics(GraphicsFont* font, FontMetrics& metrics) {
    return inner_ ? inner_->getFontMetrics(font, metrics) : Result::failure;
}

Result ScaledDrawDevice::measureStringHeight(std::u16string_view text, GraphicsFont* font,
                                             Geometry::Rect& rect) {
    return inner_ ? inner_->measureStringHeight(text, font, rect) : Result::failure;
}

Result ScaledDrawDevice::measureStringWidth(std::u16string_view text, GraphicsFont* font, double& width) {
    return inner_ ? inner_->measureStringWidth(text, font, width) : Result::failure;
}

} // namespace qorl

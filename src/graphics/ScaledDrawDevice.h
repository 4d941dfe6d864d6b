#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/FObject.h"
#include "graphics/DrawBackEnd.h"

#include <qorl/Geometry.h>

namespace qorl {

/// A back end in front of another that maps every coordinate: value * factor + origin.
///
/// Views draw through one at the place of their client area; previews use the factors. It may be a member of
/// the object that draws through it.
class ScaledDrawDevice final : public FObject, public DrawBackEnd {
    QORL_CLASS(ScaledDrawDevice, FObject)
    QORL_FACES(ScaledDrawDevice, FObject, DrawBackEnd)

public:
    /// Without a target every operation fails.
    ScaledDrawDevice() = default;
    /// Keeps a reference on `inner`.
    ScaledDrawDevice(DrawBackEnd* inner, CmPoint origin, int32_t factorX = 1, int32_t factorY = 1);

    void setMapping(DrawBackEnd* inner, CmPoint origin, int32_t factorX, int32_t factorY);
    CmPoint getOrigin() const { return origin_; }

    Result drawLine(Geometry::Point from, Geometry::Point to) override;
    Result drawRect(const Geometry::Rect& rect, DrawMode mode) override;
    Result drawEllipse(const Geometry::Rect& rect, DrawMode mode) override;
    Result drawPath(GraphicsPath* path, DrawMode mode, const TransformMatrix* matrix) override;
    Result drawString(std::u16string_view text, const Geometry::Rect& rect, GraphicsFont* font,
                      uint32_t color, int32_t alignment) override;
    Result drawBitmap(GraphicsImage* image, Geometry::Point point, const Geometry::Rect* source) override;
    Result drawBitmapStretched(GraphicsImage* image, const Geometry::Rect& destination,
                               const Geometry::Rect& source, double alpha,
                               Interpolation interpolation) override;
    Result clearRect(const Geometry::Rect& rect) override;
    Result setDrawAntialiased(bool antialiased) override;
    Result setPenColor(uint32_t color) override;
    Result setPenWidth(double width) override;
    Result setLineStyle(const LineStyle& style) override;
    Result setBrushColor(uint32_t color) override;
    Result concatTransformMatrix(const TransformMatrix& matrix) override;
    Result setClip(const Geometry::Rect& rect) override;
    Result saveGlobalState() override;
    Result restoreGlobalState() override;
    Ref<FastLines> createFastLines(int32_t capacity) override;
    Result drawFastLines(FastLines* lines) override;
    Ref<FastRects> createFastRects(int32_t capacity) override;
    Result drawFastRects(FastRects* rects, DrawMode mode) override;
    Result getFontMetrics(GraphicsFont* font, FontMetrics& metrics) override;
    Result measureStringHeight(std::u16string_view text, GraphicsFont* font, Geometry::Rect& rect) override;
    Result measureStringWidth(std::u16string_view text, GraphicsFont* font, double& width) override;

private:
    Geometry::Point map(Geometry::Point point) const;
    Geometry::Rect map(const Geometry::Rect& rect) const;

    Ref<DrawBackEnd> inner_;
    CmPoint origin_;
    int32_t factorX_ = 1;
    int32_t factorY_ = 1;
};

} // namespace qorl

#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/FObject.h"
#include "graphics/DrawBackEnd.h"

#include <string>
#include <vector>

namespace qorl::testing {

/// A back end that writes down its calls as lines of text and draws nothing.
class RecordingBackEnd final : public FObject, public DrawBackEnd {
    QORL_CLASS(RecordingBackEnd, FObject)
    QORL_FACES(RecordingBackEnd, FObject, DrawBackEnd)

public:
    enum class Batches : uint8_t { offered, refused };

    explicit RecordingBackEnd(Batches batches = Batches::refused) : batches_(batches) {}

    /// The calls since the last time, parted by "; ".
    std::string take();

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
    Result record(std::string line);

    Batches batches_;
    std::vector<std::string> lines_;
};

} // namespace qorl::testing

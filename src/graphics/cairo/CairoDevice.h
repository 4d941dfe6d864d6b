#pragma once

#include "foundation/FObject.h"
#include "graphics/DrawBackEnd.h"
#include "graphics/DrawTarget.h"
#include "graphics/GraphicsPath.h"
#include "graphics/TransformMatrix.h"
#include "graphics/cairo/CairoFont.h"
#include "graphics/cairo/CairoImage.h"

#include <vector>

namespace qorl {

/// Draws on an image surface.
///
/// Coordinates are mapped to device pixels here, so Cairo's own matrix stays the identity. Under a matrix
/// that keeps rectangles upright, fills, frames, straight lines and bitmaps are snapped to whole pixels. The
/// clip is a rectangle that Cairo hears of only when a primitive crosses it.
class CairoDevice final : public FObject, public DrawBackEnd {
    QORL_CLASS(CairoDevice, FObject)
    QORL_FACES(CairoDevice, FObject, DrawBackEnd)

public:
    /// Null when the target has no image.
    static Ref<DrawBackEnd> open(DrawTarget* target);

    ~CairoDevice() override;

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
    struct State {
        TransformMatrix matrix;
        CmRect clip;
    };

    CairoDevice(Ref<CairoImage> image, double scale);

    Result status() const;
    double penScale() const;
    Geometry::Point toDevice(Geometry::Point point) const;
    /// Under an upright matrix.
    CmRect toDeviceRect(const Geometry::Rect& rect) const;

    void useColor(uint32_t color);
    /// Makes Cairo's clip such that a primitive within `box` comes out right. False when nothing of it shows.
    bool clipTo(const CmRect& box);
    void addBox(const CmRect& box);
    /// Fills the boxes that were added.
    void fillBoxes(uint32_t color);
    void writeBoxes(uint32_t color);
    void addFrame(const Geometry::Rect& rect);
    bool addStraightLine(Geometry::Point from, Geometry::Point to);
    bool isSolidPen() const { return penStyle_.dashCount == 0; }
    void usePen();
    /// What a stroke of a path within `box` can touch.
    CmRect strokedBox(const CmRect& box) const;
    void stroke();
    void addPath(const GraphicsPath& path, const TransformMatrix& matrix);
    /// The path that plain shapes are drawn by, with nothing but this one in it.
    GraphicsPath& scratchBox(const Geometry::Rect& rect);
    GraphicsPath& scratchEllipse(const Geometry::Rect& rect);
    CmRect boxOf(const GraphicsPath& path, const TransformMatrix& matrix) const;
    void drawLine(CairoFont& font, std::u16string_view line, Geometry::Point start, double width,
                  uint32_t color);
    void drawRotatedLine(CairoFont& font, std::u16string_view line, Geometry::Point start);
    void drawDecoration(const CairoFont::Decoration& decoration, Geometry::Point start, double width,
                        uint32_t color);
    Result drawRotatedBitmap(CairoImage& image, const Geometry::Rect& destination, const CmRect& source,
                             double alpha, Interpolation interpolation);
    void paintSurface(cairo_surface_t* surface, CmPoint place, const CmRect& box, double alpha);

    Ref<CairoImage> image_;
    CairoHandle<cairo_t> context_;
    State state_;
    std::vector<State> saved_;
    CmRect bounds_;
    CmRect cairoClip_; ///< What Cairo clips to.
    uint32_t penColor_ = 0xFF000000;
    uint32_t brushColor_ = 0xFFFFFFFF;
    double penWidth_ = 1;
    LineStyle penStyle_ = LineStyle::solid();
    uint32_t sourceColor_ = 0;
    enum class Source : uint8_t { other, color } source_ = Source::other;
    bool antialiased_ = true;
    bool pixelsAreOpen_ = false; ///< Cairo knows that its surface is written to from outside.
    std::vector<CmRect> boxes_;
    GraphicsPath scratch_; ///< Kept for its memory.
};

} // namespace qorl

#pragma once

#include "foundation/FObject.h"
#include "graphics/DrawBackEnd.h"
#include "graphics/GraphicsPath.h"
#include "graphics/cairo/CairoFont.h"

#include <cairo.h>
#include <cstdint>
#include <memory>
#include <vector>

namespace qorl {
class UView;
}

namespace qorl::bench {

/// Writes down what a tree draws, so that a bare loop of Cairo calls can draw the same again: boxes, paths
/// and glyph runs in whole window coordinates, cut to their clips where that takes no clip of Cairo's.
///
/// Bitmaps, matrices and batches are refused, as nothing that is measured draws any. The fonts of the glyphs
/// must outlive the recorder.
class DrawRecorder final : public FObject, public DrawBackEnd {
    QORL_CLASS(DrawRecorder, FObject)
    QORL_FACES(DrawRecorder, FObject, DrawBackEnd)

public:
    /// What `view` draws of `area`.
    static Ref<DrawRecorder> record(UView& view, const CmRect& area);

    /// Draws everything that touches `area`, on a ground of its own.
    void replay(cairo_t* context, const CmRect& area) const;
    size_t count() const { return primitives_.size(); }
    /// False when something was drawn that is not written down.
    bool isComplete() const { return isComplete_; }

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
    struct Primitive {
        enum class Kind : uint8_t { boxes, fill, stroke, glyphs } kind = Kind::boxes;
        bool isClipped = false; ///< Reaches over `clip`.
        uint32_t color = 0;
        double penWidth = 1;
        CmRect bounds; ///< What shows of it.
        CmRect clip;
        std::vector<CmRect> boxes;
        std::shared_ptr<GraphicsPath> path;
        cairo_scaled_font_t* font = nullptr;
        std::vector<cairo_glyph_t> glyphs;
    };

    Result refuse();
    void add(Primitive primitive, const CmRect& box);
    /// Joins the boxes of one colour that follow each other.
    void addBox(const CmRect& box, uint32_t color);

    std::vector<Primitive> primitives_;
    std::vector<CmRect> savedClips_;
    CmRect clip_{0, 0, 32767, 32767};
    uint32_t penColor_ = 0xFF000000;
    uint32_t brushColor_ = 0xFFFFFFFF;
    double penWidth_ = 1;
    bool isComplete_ = true;
};

} // namespace qorl::bench

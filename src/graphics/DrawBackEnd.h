#pragma once

#include "graphics/DrawTypes.h"
#include "graphics/LineStyle.h"

#include <qorl/FInterface.h>
#include <qorl/Ref.h>

#include <string_view>

namespace qorl {

class FastLines;
class FastRects;
class GraphicsFont;
class GraphicsImage;
class GraphicsPath;
struct TransformMatrix;

/// What a drawing system offers: a fixed list of primitives in doubles, on one open target.
///
/// The device above it keeps the state of the client and sends only what changed. Recording and scaling stand
/// between the two by implementing this interface and handing on. Each operation answers `ok` or a failure
/// that the device ignores. Coordinates are mapped by the current matrix. Threading: the thread of the paint.
class DrawBackEnd : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{E07504A0-2210-4167-B4A1-432FC4570464}");

    virtual Result drawLine(Geometry::Point from, Geometry::Point to) = 0;
    virtual Result drawRect(const Geometry::Rect& rect, DrawMode mode) = 0;
    virtual Result drawEllipse(const Geometry::Rect& rect, DrawMode mode) = 0;
    /// `matrix` maps the path before the current matrix does; null for none.
    virtual Result drawPath(GraphicsPath* path, DrawMode mode, const TransformMatrix* matrix) = 0;
    /// `alignment` as in `TextAlignment`, `color` as 0xAARRGGBB. The text is not clipped to the rectangle.
    virtual Result drawString(std::u16string_view text, const Geometry::Rect& rect, GraphicsFont* font,
                              uint32_t color, int32_t alignment) = 0;
    /// `source` in pixels of the image; null for all of it. One pixel of the image becomes one logical pixel.
    virtual Result drawBitmap(GraphicsImage* image, Geometry::Point point, const Geometry::Rect* source) = 0;
    /// `alpha` from 0 to 1.
    virtual Result drawBitmapStretched(GraphicsImage* image, const Geometry::Rect& destination,
                                       const Geometry::Rect& source, double alpha,
                                       Interpolation interpolation) = 0;
    /// Makes the pixels transparent.
    virtual Result clearRect(const Geometry::Rect& rect) = 0;
    virtual Result setDrawAntialiased(bool antialiased) = 0;
    virtual Result setPenColor(uint32_t color) = 0;
    virtual Result setPenWidth(double width) = 0;
    virtual Result setLineStyle(const LineStyle& style) = 0;
    virtual Result setBrushColor(uint32_t color) = 0;
    /// The new matrix applies to what is drawn before the old one does.
    virtual Result concatTransformMatrix(const TransformMatrix& matrix) = 0;
    /// Replaces the clip; nothing is merged.
    virtual Result setClip(const Geometry::Rect& rect) = 0;
    virtual Result saveGlobalState() = 0;
    virtual Result restoreGlobalState() = 0;
    /// Null when the back end does not batch.
    virtual Ref<FastLines> createFastLines(int32_t capacity) = 0;
    virtual Result drawFastLines(FastLines* lines) = 0;
    virtual Ref<FastRects> createFastRects(int32_t capacity) = 0;
    virtual Result drawFastRects(FastRects* rects, DrawMode mode) = 0;
    virtual Result getFontMetrics(GraphicsFont* font, FontMetrics& metrics) = 0;
    virtual Result measureStringHeight(std::u16string_view text, GraphicsFont* font,
                                       Geometry::Rect& rect) = 0;
    virtual Result measureStringWidth(std::u16string_view text, GraphicsFont* font, double& width) = 0;

protected:
    ~DrawBackEnd() = default;
};

} // namespace qorl

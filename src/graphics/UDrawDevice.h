#pragma once

#include "foundation/text/ConstString.h"
#include "graphics/DrawTarget.h"
#include "graphics/FastPrimitives.h"
#include "graphics/GraphicsPath.h"
#include "graphics/ScaledDrawDevice.h"
#include "graphics/TransformMatrix.h"
#include "graphics/UBrush.h"
#include "graphics/UFont.h"
#include "graphics/UPen.h"

#include <qorl/Geometry.h>

#include <optional>
#include <span>

namespace qorl {

class UBitmap;

/// What all drawing goes through, for the duration of one paint.
///
/// It keeps pen, brush, font, clip and pen position and sends them to the back end only when something is
/// drawn. Coordinates are logical pixels. Without a back end, or with an empty clip, drawing does nothing;
/// measuring still works. A device must not outlive its target. Threading: the thread of the paint.
class UDrawDevice {
public:
    /// Far beyond any screen: no clip.
    static constexpr CmRect maximumClip{-30000, -30000, 30000, 30000};

    /// A silent device, which only measures.
    UDrawDevice() = default;
    /// Opens `target` for drawing and closes it in the destructor.
    explicit UDrawDevice(DrawTarget* target);
    /// Draws through a device that is open, at `origin` in its coordinates and larger by the factors. The
    /// other device must stay until this one is gone.
    UDrawDevice(UDrawDevice& outer, CmPoint origin, int32_t factorX = 1, int32_t factorY = 1);
    /// Draws through a back end that somebody else has opened.
    explicit UDrawDevice(Ref<DrawBackEnd> backEnd);
    UDrawDevice(const UDrawDevice&) = delete;
    UDrawDevice& operator=(const UDrawDevice&) = delete;
    ~UDrawDevice();

    void lineTo(CmPoint point);
    void moveTo(CmPoint point) { penPosition_ = point; }
    void moveBy(CmPoint delta) {
        penPosition_ = {saturated(int64_t{penPosition_.x} + delta.x),
                        saturated(int64_t{penPosition_.y} + delta.y)};
    }
    CmPoint getPenPosition() const { return penPosition_; }
    /// Pairs of points, each pair a line. A last odd point is left out.
    void drawLines(std::span<const CmPoint> points);

    /// Makes the pixels transparent.
    void clearRect(const CmRect& rect);
    /// The outline just inside of the rectangle.
    void drawFrame(const CmRect& rect);
    void fillRect(const CmRect& rect);
    /// Radius -1 is a tenth of the width.
    void drawRoundRect(const CmRect& rect, int32_t radius);
    void fillRoundRect(const CmRect& rect, int32_t radius);
    void drawRects(std::span<const CmRect> rects, bool filled);
    /// The part of the ellipse that `sweep` radians from `start` cover; `fullCircle` is all of it.
    void drawEllipse(const CmRect& rect, double start, double sweep);
    /// Without `useBrush` it is filled in the pen's colour.
    void fillEllipse(const CmRect& rect, double start, double sweep, bool useBrush);
    void drawPolygon(std::span<const CmPoint> points);
    void fillPolygon(std::span<const CmPoint> points);
    void drawPolyline(std::span<const CmPoint> points);
    /// Any shape, with pen, brush or both.
    void drawPath(GraphicsPath& path, DrawMode mode, const TransformMatrix* matrix = nullptr);

    void setPen(const UPen& pen);
    void setPenColor(const UColor& color);
    void setPenColor(int32_t standardColor) { setPenColor(UColor::fromIndex(standardColor)); }
    const UPen& getPen() const { return pen_; }
    void setBrush(const UBrush& brush);
    void setBrushColor(const UColor& color);
    void setBrushColor(int32_t standardColor) { setBrushColor(UColor::fromIndex(standardColor)); }
    const UBrush& getBrush() const { return brush_; }
    /// The font brings the colour of the text along.
    void setFont(const UFont& font) {
        // Found in the caller's font, which keeps it, and not anew in each copy.
        font.getFace();
        font_ = font;
    }
    void setFontColor(const UColor& color) { font_.setColor(color); }
    const UFont& getFont() const { return font_; }

    /// `point` is the start of the baseline. Where there is no font, the back end gets none either, and the
    /// extent that is estimated.
    void drawString(const ConstString& text, CmPoint point);
    /// `just` as in `Justify`; `margin` narrows the rectangle on the left and on the right. Nothing is cut.
    void drawString(const ConstString& text, const CmRect& rect, int32_t just, int32_t margin = 0);
    void drawChar(char16_t character, CmPoint point);
    int32_t getStringWidth(const ConstString& text) const { return font_.getStringWidth(text); }
    /// The extent of the text, its lines parted by line feeds, with the top left at 0, 0.
    void getStringRect(const ConstString& text, CmRect& rect) const;
    void getFontMetrics(TextMetrics& metrics) const { metrics = font_.getMetrics(); }

    /// Stretched over the rectangle.
    void drawBitmap(UBitmap* bitmap, const CmRect& rect, Interpolation interpolation = Interpolation::linear);
    void drawBitmapAt(UBitmap* bitmap, CmPoint point, Interpolation interpolation = Interpolation::linear);
    /// `alpha` from 0 to 1; `source` in logical pixels of the bitmap.
    void drawBitmapAlpha(UBitmap* bitmap, const CmRect& source, const CmRect& destination, double alpha,
                         Interpolation interpolation = Interpolation::linear);

    /// Edges in the wrong order are exchanged.
    void setClip(const CmRect& rect);
    void getClip(CmRect& rect) const { rect = clipRect_; }
    const CmRect& getClip() const { return clipRect_; }
    /// What can be drawn on, in the coordinates of now: the clip, cut to what the device was limited to.
    /// Under a matrix that turns it is the box around that.
    CmRect getVisible() const { return clipMatrix_ ? inNewCoordinates(sentClip()) : sentClip(); }
    /// Whether nothing that is drawn can be seen.
    bool isSilent() const { return !backEnd_ || sentClip().isEmpty(); }
    /// Brush and pen as at the start, no clip.
    void setStandardStyles();

    /// Matrix and clip of the back end, which all devices on it share; each save needs its restore. Behind a
    /// restore the clip of the device counts again, in the coordinates of then.
    void saveState();
    void restoreState();
    /// The clip stays where it is; one that is set later counts in the new coordinates.
    void concatTransformMatrix(const TransformMatrix& matrix);

    enum Antialiasing : int32_t { off = 0, shapes = 1, now = 4 };
    /// `shapes` smooths outlines; with `now` the pen is sent first, as it was.
    void setAntialiasing(int32_t flags);

    /// For bitmaps, which draw themselves: the back end with the clip sent; null when nothing can be seen.
    DrawBackEnd* beginBitmap();

protected:
    /// Nothing is drawn outside of `limit` from now on, whatever clip is set.
    void limitClip(const CmRect& limit);
    /// Makes an open device silent.
    void detach();

private:
    CmRect sentClip() const { return clipRect_.intersect(clipLimit_); }
    /// The box around a rectangle of the coordinates that the clip was set in.
    CmRect inNewCoordinates(const CmRect& rect) const;
    bool prepare();
    void markAllDirty();
    void flushPen();
    void takeBackEnd();
    void flushClip();
    void flushBrush();
    void flushAntialias(bool wanted);
    void fillWithColor(const UColor& color, GraphicsPath& path);
    bool isOutside(const CmRect& rect, int64_t slack) const;
    GraphicsPath& scratchPath();

    CmRect clipRect_ = maximumClip;
    UPen pen_;
    UBrush brush_;
    UFont font_;
    CmPoint penPosition_;
    ScaledDrawDevice scaled_;
    Ref<DrawBackEnd> backEnd_;
    Ref<DrawTarget> target_;
    Ref<GraphicsPath> scratchPath_;
    CmRect limit_ = maximumClip;
    CmRect clipLimit_ = maximumClip;            ///< `limit_` in the coordinates that the clip was set in.
    std::optional<TransformMatrix> clipMatrix_; ///< What was concatenated since then.
    UDrawDevice* root_ = this;                  ///< The device that the back end was opened for.
    const UDrawDevice* stateOwner_ = nullptr;   ///< Of a root: the device whose state the back end has.
    bool clipDirty_ = true;
    bool penDirty_ = true;
    bool brushDirty_ = true;
    enum class Smoothing : uint8_t { unknown, off, on } antialiasedState_ = Smoothing::unknown;
};

} // namespace qorl

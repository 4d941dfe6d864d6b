#include "graphics/UDrawDevice.h"

#include "graphics/GraphicsFactory.h"
#include "graphics/UBitmap.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

namespace qorl {

namespace {

constexpr double sweepTolerance = 1.1920929e-7;

bool isAbout(double value, double wanted) {
    return std::abs(value - wanted) <= sweepTolerance;
}

/// As clients write it, and as doubles have it.
bool isFullCircle(double sweep) {
    return isAbout(sweep, fullCircle) || isAbout(sweep, 2 * std::numbers::pi);
}

Geometry::Rect wholeRect(const CmRect& rect) {
    return {double(rect.left), double(rect.top), double(rect.right) - rect.left,
            double(rect.bottom) - rect.top};
}

/// Strokes run through the centres of the outermost pixels.
Geometry::Rect strokeRect(const CmRect& rect) {
    const Geometry::Rect whole = wholeRect(rect);
    return {whole.x + 0.5, whole.y + 0.5, whole.width - 1.0, whole.height - 1.0};
}

/// The whole pixels around a rectangle under a matrix.
CmRect boxAround(const Geometry::Rect& rect, const TransformMatrix& m) {
    const auto [left, right] = std::minmax({m.m11 * rect.x, m.m11 * rect.right()});
    const auto [leftByY, rightByY] = std::minmax({m.m21 * rect.y, m.m21 * rect.bottom()});
    const auto [top, bottom] = std::minmax({m.m22 * rect.y, m.m22 * rect.bottom()});
    const auto [topByX, bottomByX] = std::minmax({m.m12 * rect.x, m.m12 * rect.right()});
    const auto pixel = [](double place) {
        return place > INT32_MIN ? place < INT32_MAX ? static_cast<int32_t>(place) : INT32_MAX : INT32_MIN;
    };
    return {pixel(std::floor(left + leftByY + m.dx)), pixel(std::floor(top + topByX + m.dy)),
            pixel(std::ceil(right + rightByY + m.dx)), pixel(std::ceil(bottom + bottomByX + m.dy))};
}

/// Radius -1 is a tenth of the width.
double cornerRadius(const CmRect& rect, int32_t radius) {
    return radius == -1 ? std::floor(wholeRect(rect).width / 10) : radius;
}

CmRect normalised(const CmRect& rect) {
    return {std::min(rect.left, rect.right), std::min(rect.top, rect.bottom), std::max(rect.left, rect.right),
            std::max(rect.top, rect.bottom)};
}

/// A text as UTF-16, without allocating for the short plain texts that labels are.
class WideText {
public:
    explicit WideText(const ConstString& text) {
        if (text.isWide()) {
            view_ = text.view16();
            return;
        }
        const std::string_view narrow = text.view8();
        const bool plain =
            std::all_of(narrow.begin(), narrow.end(), [](char c) { return static_cast<int8_t>(c) >= 0; });
        if (plain && narrow.size() <= buffer_.size()) {
            std::copy(narrow.begin(), narrow.end(), buffer_.begin());
            view_ = {buffer_.data(), narrow.size()};
        } else {
            converted_ = text.toUtf16();
            view_ = converted_;
        }
    }
    WideText(const WideText&) = delete;
    WideText& operator=(const WideText&) = delete;

    std::u16string_view view() const { return view_; }

private:
    std::array<char16_t, 128> buffer_;
    std::u16string converted_;
    std::u16string_view view_;
};

constexpr int32_t alignmentOf(int32_t just) {
    int32_t alignment = just & Justify::right    ? TextAlignment::right
                        : just & Justify::center ? TextAlignment::center
                                                 : TextAlignment::left;
    if (just & Justify::bottom)
        alignment += TextAlignment::bottom;
    else if (just & Justify::verticalCenter)
        alignment += TextAlignment::verticalCenter;
    return alignment;
}

template <typename Add>
void addPoints(std::span<const CmPoint> points, double shift, Add add) {
    std::vector<Geometry::Point> places;
    places.reserve(points.size());
    for (const CmPoint& p : points)
        places.push_back({p.x + shift, p.y + shift});
    add(places.data(), places.size());
}

} // namespace

UDrawDevice::UDrawDevice(DrawTarget* target) {
    GraphicsFactory* factory = getGraphicsFactory();
    if (!target || !factory)
        return;
    backEnd_ = factory->createDrawDevice(target);
    if (!backEnd_)
        return;
    target_ = retain(target);
    target_->drawingBegins();
}

UDrawDevice::UDrawDevice(UDrawDevice& outer, CmPoint origin, int32_t factorX, int32_t factorY) {
    if (!outer.backEnd_)
        return;
    root_ = outer.root_;
    scaled_.setMapping(outer.backEnd_.get(), origin, factorX, factorY);
    backEnd_ = retain<DrawBackEnd>(&scaled_);
}

UDrawDevice::UDrawDevice(Ref<DrawBackEnd> backEnd) : backEnd_(std::move(backEnd)) {}

UDrawDevice::~UDrawDevice() {
    backEnd_.reset();
    if (target_)
        target_->drawingEnds();
}

void UDrawDevice::detach() {
    backEnd_.reset();
}

void UDrawDevice::markAllDirty() {
    clipDirty_ = penDirty_ = brushDirty_ = true;
    antialiasedState_ = Smoothing::unknown;
}

/// Several devices may draw through one back end in turn.
void UDrawDevice::takeBackEnd() {
    if (root_->stateOwner_ == this)
        return;
    root_->stateOwner_ = this;
    markAllDirty();
}

bool UDrawDevice::prepare() {
    if (isSilent())
        return false;
    takeBackEnd();
    flushPen();
    flushClip();
    flushBrush();
    return true;
}

void UDrawDevice::flushAntialias(bool wanted) {
    const Smoothing state = wanted ? Smoothing::on : Smoothing::off;
    if (state == antialiasedState_)
        return;
    backEnd_->setDrawAntialiased(wanted);
    antialiasedState_ = state;
}

void UDrawDevice::flushPen() {
    flushAntialias(pen_.isAntialiased());
    if (!penDirty_)
        return;
    backEnd_->setPenColor(pen_.getColor().packed());
    backEnd_->setPenWidth(pen_.getWidth());
    backEnd_->setLineStyle(pen_.effectiveLineStyle());
    penDirty_ = false;
}

void UDrawDevice::flushClip() {
    if (!clipDirty_)
        return;
    clipDirty_ = false;
    TransformMatrix back;
    const bool isElsewhere = clipMatrix_ && clipMatrix_->invert(back);
    if (isElsewhere)
        backEnd_->concatTransformMatrix(back);
    backEnd_->setClip(wholeRect(sentClip()));
    if (isElsewhere)
        backEnd_->concatTransformMatrix(*clipMatrix_);
}

void UDrawDevice::flushBrush() {
    if (!brushDirty_)
        return;
    backEnd_->setBrushColor(brush_.getColor().packed());
    brushDirty_ = false;
}

CmRect UDrawDevice::inNewCoordinates(const CmRect& rect) const {
    TransformMatrix back;
    if (rect.isEmpty() || !clipMatrix_->invert(back))
        return rect;
    return boxAround(wholeRect(rect), back);
}

bool UDrawDevice::isOutside(const CmRect& rect, int64_t slack) const {
    const CmRect visible = getVisible();
    return rect.right <= visible.left - slack || rect.left >= visible.right + slack ||
           rect.bottom <= visible.top - slack || rect.top >= visible.bottom + slack;
}

GraphicsPath& UDrawDevice::scratchPath() {
    // Views open a device each on that of the paint, which keeps the room of the path for all of them.
    Ref<GraphicsPath>& path = root_->scratchPath_;
    if (!path)
        path = make<GraphicsPath>();
    path->clear();
    return *path;
}

void UDrawDevice::lineTo(CmPoint point) {
    const CmPoint from = std::exchange(penPosition_, point);
    if (!prepare())
        return;
    const double shift = pen_.getWidth() & 1 ? 0.5 : 0.0;
    backEnd_->drawLine({from.x + shift, from.y + shift}, {point.x + shift, point.y + shift});
}

void UDrawDevice::drawLines(std::span<const CmPoint> points) {
    if (points.size() < 2 || !prepare())
        return;
    const double shift = pen_.getWidth() & 1 ? 0.5 : 0.0;
    const auto place = [shift](CmPoint p) { return Geometry::Point{p.x + shift, p.y + shift}; };
    const auto batch = backEnd_->createFastLines(static_cast<int32_t>(points.size() / 2));
    for (size_t i = 0; i + 1 < points.size(); i += 2) {
        if (batch)
            batch->add(place(points[i]), place(points[i + 1]));
        else
            backEnd_->drawLine(place(points[i]), place(points[i + 1]));
    }
    if (batch)
        backEnd_->drawFastLines(batch.get());
}

void UDrawDevice::clearRect(const CmRect& rect) {
    if (!rect.isEmpty() && prepare())
        backEnd_->clearRect(wholeRect(rect));
}

void UDrawDevice::drawFrame(const CmRect& rect) {
    if (rect.isEmpty() || isOutside(rect, int64_t{2} * pen_.getWidth()) || !prepare())
        return;
    backEnd_->drawRect(strokeRect(rect), DrawMode::stroke);
}

void UDrawDevice::fillRect(const CmRect& rect) {
    if (!rect.isEmpty() && prepare())
        backEnd_->drawRect(wholeRect(rect), DrawMode::fill);
}

void UDrawDevice::drawRoundRect(const CmRect& rect, int32_t radius) {
    if (rect.isEmpty() || isOutside(rect, int64_t{2} * pen_.getWidth()) || !prepare())
        return;
    GraphicsPath& path = scratchPath();
    path.addRoundRect(strokeRect(rect), cornerRadius(rect, radius));
    backEnd_->drawPath(&path, DrawMode::stroke, nullptr);
}

void UDrawDevice::fillRoundRect(const CmRect& rect, int32_t radius) {
    if (rect.isEmpty() || isOutside(rect, 0))
        return;
    const double corner = cornerRadius(rect, radius);
    const CmRect clip = getVisible();
    const bool cornersHidden = clip.left >= rect.left + corner && clip.right <= rect.right - corner;
    if (corner <= 0 || cornersHidden) {
        fillRect(rect);
        return;
    }
    if (!prepare())
        return;
    GraphicsPath& path = scratchPath();
    path.addRoundRect(wholeRect(rect), corner);
    fillWithColor(brush_.getColor(), path);
}

/// The pen takes the colour too, for back ends that draw the rim of a filled path with it.
void UDrawDevice::fillWithColor(const UColor& color, GraphicsPath& path) {
    const uint32_t packed = color.packed();
    const bool changesPen = packed != pen_.getColor().packed();
    const bool changesBrush = packed != brush_.getColor().packed();
    if (changesPen)
        backEnd_->setPenColor(packed);
    if (changesBrush)
        backEnd_->setBrushColor(packed);
    backEnd_->drawPath(&path, DrawMode::fill, nullptr);
    if (changesPen)
        backEnd_->setPenColor(pen_.getColor().packed());
    if (changesBrush)
        backEnd_->setBrushColor(brush_.getColor().packed());
}

void UDrawDevice::drawRects(std::span<const CmRect> rects, bool filled) {
    if (rects.empty() || !prepare())
        return;
    const DrawMode mode = filled ? DrawMode::fill : DrawMode::stroke;
    const auto place = [filled](const CmRect& rect) { return filled ? wholeRect(rect) : strokeRect(rect); };
    const auto batch = backEnd_->createFastRects(static_cast<int32_t>(rects.size()));
    for (const CmRect& rect : rects) {
        if (rect.isEmpty())
            continue;
        if (batch)
            batch->add(place(rect));
        else
            backEnd_->drawRect(place(rect), mode);
    }
    if (batch)
        backEnd_->drawFastRects(batch.get(), mode);
}

void UDrawDevice::drawEllipse(const CmRect& rect, double start, double sweep) {
    if (rect.isEmpty() || isAbout(sweep, 0) || !prepare())
        return;
    if (isFullCircle(sweep)) {
        backEnd_->drawEllipse(strokeRect(rect), DrawMode::stroke);
        return;
    }
    GraphicsPath& path = scratchPath();
    path.addArc(strokeRect(rect), start, sweep);
    backEnd_->drawPath(&path, DrawMode::stroke, nullptr);
}

void UDrawDevice::fillEllipse(const CmRect& rect, double start, double sweep, bool useBrush) {
    if (rect.isEmpty() || isAbout(sweep, 0) || !prepare())
        return;
    const UColor& color = useBrush ? brush_.getColor() : pen_.getColor();
    GraphicsPath& path = scratchPath();
    const Geometry::Rect whole = wholeRect(rect);
    if (isFullCircle(sweep)) {
        path.addEllipse(whole);
    } else {
        path.moveTo({whole.x + whole.width / 2, whole.y + whole.height / 2});
        path.addArc(whole, start, sweep);
        path.closeFigure();
    }
    fillWithColor(color, path);
}

void UDrawDevice::drawPolygon(std::span<const CmPoint> points) {
    if (points.size() < 2 || !prepare())
        return;
    GraphicsPath& path = scratchPath();
    addPoints(points, 0.5,
              [&](const Geometry::Point* places, size_t count) { path.addPolygon(places, count); });
    backEnd_->drawPath(&path, DrawMode::stroke, nullptr);
}

void UDrawDevice::fillPolygon(std::span<const CmPoint> points) {
    if (points.size() < 3 || !prepare())
        return;
    GraphicsPath& path = scratchPath();
    addPoints(points, 0.0,
              [&](const Geometry::Point* places, size_t count) { path.addPolygon(places, count); });
    backEnd_->drawPath(&path, DrawMode::fill, nullptr);
}

void UDrawDevice::drawPolyline(std::span<const CmPoint> points) {
    if (points.size() < 2 || !prepare())
        return;
    GraphicsPath& path = scratchPath();
    addPoints(points, 0.5,
              [&](const Geometry::Point* places, size_t count) { path.addPolyline(places, count); });
    backEnd_->drawPath(&path, DrawMode::stroke, nullptr);
}

void UDrawDevice::drawPath(GraphicsPath& path, DrawMode mode, const TransformMatrix* matrix) {
    if (!path.isEmpty() && prepare())
        backEnd_->drawPath(&path, mode, matrix);
}

void UDrawDevice::setPen(const UPen& pen) {
    if (pen == pen_)
        return;
    pen_ = pen;
    penDirty_ = true;
}

void UDrawDevice::setPenColor(const UColor& color) {
    if (color == pen_.getColor())
        return;
    pen_.setColor(color);
    penDirty_ = true;
}

void UDrawDevice::setBrush(const UBrush& brush) {
    if (brush == brush_)
        return;
    brush_ = brush;
    brushDirty_ = true;
}

void UDrawDevice::setBrushColor(const UColor& color) {
    if (color == brush_.getColor())
        return;
    brush_.setColor(color);
    brushDirty_ = true;
}

void UDrawDevice::drawString(const ConstString& text, CmPoint point) {
    if (text.isEmpty() || !prepare())
        return;
    GraphicsFont* face = font_.getFace();
    constexpr TextMetrics estimate;
    const FontMetrics metrics =
        face ? face->getMetrics() : FontMetrics{double(estimate.ascent), double(estimate.descent)};
    const double width = face ? face->measureWidth(text) : font_.getStringWidth(text);
    const Geometry::Rect rect{double(point.x), point.y - metrics.ascent, width,
                              metrics.ascent + metrics.descent};
    backEnd_->drawString(WideText(text).view(), rect, face, font_.getColor().packed(),
                         TextAlignment::center + TextAlignment::verticalCenter);
}

void UDrawDevice::drawString(const ConstString& text, const CmRect& rect, int32_t just, int32_t margin) {
    if (text.isEmpty() || !prepare())
        return;
    Geometry::Rect room = wholeRect(rect);
    room.x += margin;
    room.width -= 2.0 * margin;
    backEnd_->drawString(WideText(text).view(), room, font_.getFace(), font_.getColor().packed(),
                         alignmentOf(just));
}

void UDrawDevice::drawChar(char16_t character, CmPoint point) {
    drawString(ConstString(&character, 1), point);
}

void UDrawDevice::getStringRect(const ConstString& text, CmRect& rect) const {
    rect = CmRect::ofSize({}, font_.getStringExtent(text));
}

void UDrawDevice::drawBitmap(UBitmap* bitmap, const CmRect& rect, Interpolation interpolation) {
    if (bitmap)
        drawBitmapAlpha(bitmap, CmRect::ofSize({}, bitmap->getSize()), rect, 1.0, interpolation);
}

void UDrawDevice::drawBitmapAt(UBitmap* bitmap, CmPoint point, Interpolation interpolation) {
    if (!bitmap)
        return;
    const CmSize size = bitmap->getSize();
    drawBitmap(bitmap,
               {point.x, point.y, saturated(int64_t{point.x} + size.width),
                saturated(int64_t{point.y} + size.height)},
               interpolation);
}

void UDrawDevice::drawBitmapAlpha(UBitmap* bitmap, const CmRect& source, const CmRect& destination,
                                  double alpha, Interpolation interpolation) {
    if (bitmap && !isSilent() && !destination.isEmpty() && !isOutside(destination, 0))
        bitmap->draw(*this, source, destination, alpha, interpolation);
}

DrawBackEnd* UDrawDevice::beginBitmap() {
    return prepare() ? backEnd_.get() : nullptr;
}

void UDrawDevice::setClip(const CmRect& rect) {
    const CmRect clip = normalised(rect);
    if (clip == clipRect_ && !clipMatrix_)
        return;
    if (clipMatrix_)
        clipLimit_ = inNewCoordinates(clipLimit_);
    clipMatrix_.reset();
    clipRect_ = clip;
    clipDirty_ = true;
}

void UDrawDevice::limitClip(const CmRect& limit) {
    limit_ = clipLimit_ = limit;
    clipDirty_ = true;
}

void UDrawDevice::setStandardStyles() {
    brush_ = UBrush();
    pen_ = UPen();
    setClip(maximumClip);
    clipDirty_ = penDirty_ = brushDirty_ = true;
}

void UDrawDevice::saveState() {
    if (backEnd_)
        backEnd_->saveGlobalState();
}

void UDrawDevice::restoreState() {
    if (!backEnd_)
        return;
    backEnd_->restoreGlobalState();
    clipMatrix_.reset();
    clipLimit_ = limit_;
    // Also for the other devices on this back end, whose state it may have had.
    root_->stateOwner_ = this;
    markAllDirty();
}

void UDrawDevice::concatTransformMatrix(const TransformMatrix& matrix) {
    if (!backEnd_)
        return;
    // The clip that stands was meant in the old coordinates.
    takeBackEnd();
    flushClip();
    if (backEnd_->concatTransformMatrix(matrix) == Result::ok)
        clipMatrix_ = clipMatrix_ ? clipMatrix_->after(matrix) : matrix;
}

void UDrawDevice::setAntialiasing(int32_t flags) {
    const bool antialiased = (flags & shapes) != 0;
    if (backEnd_) {
        takeBackEnd();
        if (flags & now)
            flushPen();
        flushAntialias(antialiased);
    }
    pen_.setAntialiased(antialiased);
    brush_.setAntialiased(antialiased);
}

} // namespace qorl

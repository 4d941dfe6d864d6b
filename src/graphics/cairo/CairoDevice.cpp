#include "graphics/cairo/CairoDevice.h"

#include "foundation/Cast.h"
#include "graphics/FastPrimitives.h"
#include "graphics/GraphicsPath.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace qorl {

namespace {

constexpr size_t mostSavedStates = 4096;

constexpr cairo_line_cap_t capOf(LineCap cap) {
    return cap == LineCap::round    ? CAIRO_LINE_CAP_ROUND
           : cap == LineCap::square ? CAIRO_LINE_CAP_SQUARE
                                    : CAIRO_LINE_CAP_BUTT;
}

constexpr cairo_line_join_t joinOf(LineJoin join) {
    return join == LineJoin::round   ? CAIRO_LINE_JOIN_ROUND
           : join == LineJoin::bevel ? CAIRO_LINE_JOIN_BEVEL
                                     : CAIRO_LINE_JOIN_MITER;
}

CmRect outward(Geometry::Point low, Geometry::Point high, double slack) {
    return {toDevicePixel(std::floor(low.x - slack)), toDevicePixel(std::floor(low.y - slack)),
            toDevicePixel(std::ceil(high.x + slack)), toDevicePixel(std::ceil(high.y + slack))};
}

/// The image's class is known by name: a `GraphicsImage` may come from another factory.
CairoImage* cairoImage(GraphicsImage* image) {
    return cast<CairoImage>(image);
}

/// Fills one row and copies it to the others, which for all but narrow boxes is what memory does best.
void fillPixels(uint8_t* first, int64_t stride, CmSize size, uint32_t color) {
    constexpr int32_t narrow = 16;
    const auto fillRow = [&](uint8_t* row) {
        std::fill_n(reinterpret_cast<uint32_t*>(row), size.width, color);
    };
    fillRow(first);
    for (int32_t y = 1; y < size.height; ++y) {
        if (size.width < narrow)
            fillRow(first + y * stride);
        else
            std::memcpy(first + y * stride, first, static_cast<size_t>(size.width) * sizeof color);
    }
}

} // namespace

Ref<DrawBackEnd> CairoDevice::open(DrawTarget* target) {
    CairoImage* image = target ? cairoImage(target->getTargetImage()) : nullptr;
    if (!image)
        return nullptr;
    const double scale = target->getScaleFactor();
    return Ref<CairoDevice>::adopt(
        new CairoDevice(retain(image), std::isfinite(scale) && scale > 0 ? scale : 1.0));
}

CairoDevice::CairoDevice(Ref<CairoImage> image, double scale)
    : image_(std::move(image)),
      context_(cairo_create(image_->surface())), bounds_{0, 0, image_->getWidth(), image_->getHeight()},
      cairoClip_(bounds_) {
    state_ = {TransformMatrix::scaling(scale, scale), bounds_};
    image_->contentsChange();
}

CairoDevice::~CairoDevice() {
    context_.reset();
    cairo_surface_flush(image_->surface());
    image_->contentsChange();
}

Result CairoDevice::status() const {
    return cairo_status(context_.get()) == CAIRO_STATUS_SUCCESS ? Result::ok : Result::failure;
}

/// How much longer lines become under the matrix.
double CairoDevice::penScale() const {
    return state_.matrix.isUpright() ? std::abs(state_.matrix.m22)
                                     : std::sqrt(std::abs(state_.matrix.determinant()));
}

Geometry::Point CairoDevice::toDevice(Geometry::Point point) const {
    return bounded(state_.matrix.map(point));
}

CmRect CairoDevice::toDeviceRect(const Geometry::Rect& rect) const {
    const TransformMatrix& m = state_.matrix;
    const CmRect mapped{toDevicePixel(rect.x * m.m11 + m.dx), toDevicePixel(rect.y * m.m22 + m.dy),
                        toDevicePixel(rect.right() * m.m11 + m.dx),
                        toDevicePixel(rect.bottom() * m.m22 + m.dy)};
    return {std::min(mapped.left, mapped.right), std::min(mapped.top, mapped.bottom),
            std::max(mapped.left, mapped.right), std::max(mapped.top, mapped.bottom)};
}

void CairoDevice::useColor(uint32_t color) {
    if (source_ == Source::color && color == sourceColor_)
        return;
    source_ = Source::color;
    sourceColor_ = color;
    cairo_set_source_rgba(context_.get(), (color >> 16 & 0xFF) / 255.0, (color >> 8 & 0xFF) / 255.0,
                          (color & 0xFF) / 255.0, (color >> 24) / 255.0);
}

/// Only the edges that cut the box are set, beside those that are set already: in a small paint, what comes
/// next is mostly cut by the same ones.
bool CairoDevice::clipTo(const CmRect& box) {
    pixelsAreOpen_ = false;
    const CmRect visible = box.intersect(state_.clip);
    if (visible.isEmpty())
        return false;
    if (box.intersect(cairoClip_) == visible)
        return true;
    CmRect edges = bounds_;
    if (box.left < visible.left)
        edges.left = visible.left;
    if (box.top < visible.top)
        edges.top = visible.top;
    if (box.right > visible.right)
        edges.right = visible.right;
    if (box.bottom > visible.bottom)
        edges.bottom = visible.bottom;
    CmRect narrowed = cairoClip_.intersect(edges);
    if (box.intersect(narrowed) != visible) {
        cairo_reset_clip(context_.get());
        narrowed = edges;
    }
    cairoClip_ = narrowed;
    if (narrowed == bounds_)
        return true;
    cairo_rectangle(context_.get(), narrowed.left, narrowed.top, narrowed.width(), narrowed.height());
    cairo_clip(context_.get());
    return true;
}

void CairoDevice::addBox(const CmRect& box) {
    const CmRect visible = box.intersect(state_.clip);
    if (!visible.isEmpty())
        boxes_.push_back(visible);
}

void CairoDevice::fillBoxes(uint32_t color) {
    if (boxes_.empty())
        return;
    if (color >> 24 == 0xFF) {
        writeBoxes(color);
    } else if (color >> 24 != 0) {
        CmRect all;
        for (const CmRect& box : boxes_)
            all = all.unite(box);
        clipTo(all);
        useColor(color);
        // Each on its own: where boxes overlap, their colours add up.
        for (const CmRect& box : boxes_) {
            cairo_rectangle(context_.get(), box.left, box.top, box.width(), box.height());
            cairo_fill(context_.get());
        }
    }
    boxes_.clear();
}

void CairoDevice::writeBoxes(uint32_t color) {
    cairo_surface_t* surface = image_->surface();
    if (!pixelsAreOpen_) {
        cairo_surface_flush(surface);
        cairo_surface_mark_dirty(surface);
        pixelsAreOpen_ = true;
    }
    uint8_t* pixels = cairo_image_surface_get_data(surface);
    const int64_t stride = cairo_image_surface_get_stride(surface);
    for (const CmRect& box : boxes_) {
        uint8_t* row = pixels + box.top * stride + box.left * int64_t{sizeof(uint32_t)};
        fillPixels(row, stride, box.size(), color);
    }
}

/// The outline of a rectangle as the four boxes that the pen covers, each a whole number of pixels thick.
void CairoDevice::addFrame(const Geometry::Rect& rect) {
    const double half = penWidth_ / 2;
    const CmRect outer =
        toDeviceRect({rect.x - half, rect.y - half, rect.width + penWidth_, rect.height + penWidth_});
    const int32_t across = std::max(1, toDevicePixel(penWidth_ * std::abs(state_.matrix.m11)));
    const int32_t down = std::max(1, toDevicePixel(penWidth_ * std::abs(state_.matrix.m22)));
    const CmRect inner = outer.grown(-across, -down);
    if (inner.isEmpty()) {
        addBox(outer);
        return;
    }
    addBox({outer.left, outer.top, outer.right, inner.top});
    addBox({outer.left, inner.bottom, outer.right, outer.bottom});
    addBox({outer.left, inner.top, inner.left, inner.bottom});
    addBox({inner.right, inner.top, outer.right, inner.bottom});
}

/// A solid line along an axis is a box. False for any other line.
bool CairoDevice::addStraightLine(Geometry::Point from, Geometry::Point to) {
    if (!isSolidPen() || !state_.matrix.isUpright() || (from.x != to.x && from.y != to.y))
        return false;
    if (penStyle_.cap == LineCap::round && penWidth_ > 1)
        return false;
    const double half = penWidth_ / 2;
    const double cap = penStyle_.cap == LineCap::butt ? 0 : half;
    const bool horizontal = from.y == to.y;
    const double alongX = horizontal ? cap : half;
    const double alongY = horizontal ? half : cap;
    const double left = std::min(from.x, to.x) - alongX;
    const double top = std::min(from.y, to.y) - alongY;
    CmRect box = toDeviceRect(
        {left, top, std::max(from.x, to.x) + alongX - left, std::max(from.y, to.y) + alongY - top});
    const int32_t thickness =
        std::max(1, toDevicePixel(penWidth_ * std::abs(horizontal ? state_.matrix.m22 : state_.matrix.m11)));
    if (horizontal)
        box.bottom = box.top + thickness;
    else
        box.right = box.left + thickness;
    addBox(box);
    return true;
}

void CairoDevice::usePen() {
    const double scale = penScale();
    cairo_t* context = context_.get();
    cairo_set_line_width(context, std::max(penWidth_ * scale, 1.0));
    cairo_set_line_cap(context, capOf(penStyle_.cap));
    cairo_set_line_join(context, joinOf(penStyle_.join));
    cairo_set_miter_limit(context,
                          std::isfinite(penStyle_.miterLimit) ? std::max(penStyle_.miterLimit, 1.0) : 10.0);
    double lengths[LineStyle::maximumDashes];
    double sum = 0;
    const uint32_t count = std::min(penStyle_.dashCount, LineStyle::maximumDashes);
    for (uint32_t i = 0; i < count; ++i) {
        const double length = bounded(penStyle_.dashLengths[i] * penWidth_ * scale);
        lengths[i] = length > 0 ? length : 0;
        sum += lengths[i];
    }
    // A pattern shorter than a tenth of a pixel would draw a solid line out of a million pieces.
    const bool dashes = sum >= 0.1;
    cairo_set_dash(context, lengths, dashes ? static_cast<int>(count) : 0,
                   bounded(penStyle_.dashOffset * penWidth_ * scale));
}

/// `box` holds the path without the width of the pen.
CmRect CairoDevice::strokedBox(const CmRect& box) const {
    const double reach =
        penWidth_ * penScale() * (penStyle_.join == LineJoin::miter ? penStyle_.miterLimit : 1);
    const auto slack = static_cast<int32_t>(std::isfinite(reach) ? std::clamp(reach, 0.0, 10000.0) : 0) + 2;
    return box.grown(slack, slack);
}

void CairoDevice::stroke() {
    useColor(penColor_);
    usePen();
    cairo_stroke(context_.get());
}

void CairoDevice::addPath(const GraphicsPath& path, const TransformMatrix& matrix) {
    cairo_t* context = context_.get();
    const Geometry::Point* point = path.points().data();
    const auto next = [&] { return bounded(matrix.map(*point++)); };
    for (const GraphicsPath::Verb verb : path.verbs()) {
        switch (verb) {
        case GraphicsPath::Verb::move: {
            const Geometry::Point p = next();
            cairo_move_to(context, p.x, p.y);
            break;
        }
        case GraphicsPath::Verb::line: {
            const Geometry::Point p = next();
            cairo_line_to(context, p.x, p.y);
            break;
        }
        case GraphicsPath::Verb::curve: {
            const Geometry::Point a = next();
            const Geometry::Point b = next();
            const Geometry::Point c = next();
            cairo_curve_to(context, a.x, a.y, b.x, b.y, c.x, c.y);
            break;
        }
        case GraphicsPath::Verb::close: cairo_close_path(context); break;
        }
    }
}

CmRect CairoDevice::boxOf(const GraphicsPath& path, const TransformMatrix& matrix) const {
    Geometry::Point low{INFINITY, INFINITY};
    Geometry::Point high{-INFINITY, -INFINITY};
    for (const Geometry::Point& point : path.points()) {
        const Geometry::Point p = bounded(matrix.map(point));
        low = {std::min(low.x, p.x), std::min(low.y, p.y)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y)};
    }
    return path.points().empty() ? CmRect{} : outward(low, high, 1);
}

Result CairoDevice::drawLine(Geometry::Point from, Geometry::Point to) {
    if (addStraightLine(from, to)) {
        fillBoxes(penColor_);
        return status();
    }
    const Geometry::Point a = toDevice(from);
    const Geometry::Point b = toDevice(to);
    // Setting a clip uses up the path, so it comes first.
    if (!clipTo(strokedBox(
            outward({std::min(a.x, b.x), std::min(a.y, b.y)}, {std::max(a.x, b.x), std::max(a.y, b.y)}, 1))))
        return status();
    cairo_move_to(context_.get(), a.x, a.y);
    cairo_line_to(context_.get(), b.x, b.y);
    stroke();
    return status();
}

GraphicsPath& CairoDevice::scratchBox(const Geometry::Rect& rect) {
    scratch_.clear();
    scratch_.addRect(rect);
    return scratch_;
}

GraphicsPath& CairoDevice::scratchEllipse(const Geometry::Rect& rect) {
    scratch_.clear();
    scratch_.addEllipse(rect);
    return scratch_;
}

Result CairoDevice::drawRect(const Geometry::Rect& rect, DrawMode mode) {
    if (!state_.matrix.isUpright()) {
        GraphicsPath& path = scratchBox(rect);
        return drawPath(&path, mode, nullptr);
    }
    if (fills(mode)) {
        addBox(toDeviceRect(rect));
        fillBoxes(brushColor_);
    }
    if (!strokes(mode))
        return status();
    if (isSolidPen() && (penStyle_.join == LineJoin::miter || penWidth_ <= 1)) {
        addFrame(rect);
        fillBoxes(penColor_);
        return status();
    }
    GraphicsPath& path = scratchBox(rect);
    return drawPath(&path, DrawMode::stroke, nullptr);
}

Result CairoDevice::drawEllipse(const Geometry::Rect& rect, DrawMode mode) {
    GraphicsPath& path = scratchEllipse(rect);
    return drawPath(&path, mode, nullptr);
}

Result CairoDevice::drawPath(GraphicsPath* path, DrawMode mode, const TransformMatrix* matrix) {
    if (!path)
        return Result::invalidArgument;
    const TransformMatrix map = matrix ? state_.matrix.after(*matrix) : state_.matrix;
    const CmRect box = boxOf(*path, map);
    // Setting a clip uses up the path, so it comes first.
    if (path->isEmpty() || !clipTo(strokes(mode) ? strokedBox(box) : box))
        return Result::ok;
    cairo_t* context = context_.get();
    cairo_new_path(context);
    addPath(*path, map);
    if (fills(mode)) {
        useColor(brushColor_);
        strokes(mode) ? cairo_fill_preserve(context) : cairo_fill(context);
    }
    if (strokes(mode))
        stroke();
    cairo_new_path(context);
    return status();
}

Result CairoDevice::clearRect(const Geometry::Rect& rect) {
    if (state_.matrix.isUpright()) {
        addBox(toDeviceRect(rect));
        writeBoxes(0);
        boxes_.clear();
        return status();
    }
    GraphicsPath& path = scratchBox(rect);
    if (!clipTo(boxOf(path, state_.matrix)))
        return Result::ok;
    cairo_t* context = context_.get();
    addPath(path, state_.matrix);
    cairo_set_operator(context, CAIRO_OPERATOR_CLEAR);
    cairo_fill(context);
    cairo_set_operator(context, CAIRO_OPERATOR_OVER);
    return status();
}

Result CairoDevice::setDrawAntialiased(bool antialiased) {
    if (antialiased != antialiased_)
        cairo_set_antialias(context_.get(), antialiased ? CAIRO_ANTIALIAS_DEFAULT : CAIRO_ANTIALIAS_NONE);
    antialiased_ = antialiased;
    return Result::ok;
}

Result CairoDevice::setPenColor(uint32_t color) {
    penColor_ = color;
    return Result::ok;
}

Result CairoDevice::setPenWidth(double width) {
    penWidth_ = std::isfinite(width) ? std::clamp(width, 0.0, 10000.0) : 1.0;
    return Result::ok;
}

Result CairoDevice::setLineStyle(const LineStyle& style) {
    penStyle_ = style;
    return Result::ok;
}

Result CairoDevice::setBrushColor(uint32_t color) {
    brushColor_ = color;
    return Result::ok;
}

Result CairoDevice::concatTransformMatrix(const TransformMatrix& matrix) {
    const double parts[] = {matrix.m11, matrix.m12, matrix.m21, matrix.m22, matrix.dx, matrix.dy};
    if (!std::all_of(std::begin(parts), std::end(parts), [](double part) { return std::isfinite(part); }))
        return Result::invalidArgument;
    state_.matrix = state_.matrix.after(matrix);
    return Result::ok;
}

Result CairoDevice::setClip(const Geometry::Rect& rect) {
    if (state_.matrix.isUpright()) {
        state_.clip = toDeviceRect(rect).intersect(bounds_);
        return Result::ok;
    }
    GraphicsPath& path = scratchBox(rect);
    state_.clip = boxOf(path, state_.matrix).intersect(bounds_);
    return Result::ok;
}

Result CairoDevice::saveGlobalState() {
    if (saved_.size() >= mostSavedStates)
        return Result::failure;
    saved_.push_back(state_);
    return Result::ok;
}

Result CairoDevice::restoreGlobalState() {
    if (saved_.empty())
        return Result::failure;
    state_ = saved_.back();
    saved_.pop_back();
    return Result::ok;
}

Ref<FastLines> CairoDevice::createFastLines(int32_t capacity) {
    return make<FastLines>(capacity);
}

Result CairoDevice::drawFastLines(FastLines* lines) {
    if (!lines)
        return Result::invalidArgument;
    for (const auto& line : lines->lines()) {
        if (addStraightLine(line.from, line.to))
            continue;
        fillBoxes(penColor_);
        drawLine(line.from, line.to);
    }
    fillBoxes(penColor_);
    return status();
}

Ref<FastRects> CairoDevice::createFastRects(int32_t capacity) {
    return make<FastRects>(capacity);
}

Result CairoDevice::drawFastRects(FastRects* rects, DrawMode mode) {
    if (!rects)
        return Result::invalidArgument;
    const bool asBoxes = mode == DrawMode::fill && state_.matrix.isUpright();
    for (const Geometry::Rect& rect : rects->rects()) {
        if (asBoxes)
            addBox(toDeviceRect(rect));
        else
            drawRect(rect, mode);
    }
    fillBoxes(brushColor_);
    return status();
}

Result CairoDevice::getFontMetrics(GraphicsFont* font, FontMetrics& metrics) {
    if (!font)
        return Result::invalidArgument;
    metrics = font->getMetrics();
    return Result::ok;
}

Result CairoDevice::measureStringHeight(std::u16string_view text, GraphicsFont* font, Geometry::Rect& rect) {
    if (!font)
        return Result::invalidArgument;
    rect = font->measureExtent(ConstString(text));
    return Result::ok;
}

Result CairoDevice::measureStringWidth(std::u16string_view text, GraphicsFont* font, double& width) {
    if (!font)
        return Result::invalidArgument;
    width = font->measureWidth(ConstString(text));
    return Result::ok;
}

} // namespace qorl

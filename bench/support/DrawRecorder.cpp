#include "support/DrawRecorder.h"

#include "foundation/Cast.h"
#include "graphics/FastPrimitives.h"
#include "graphics/TransformMatrix.h"
#include "views/RenderTarget.h"
#include "views/UView.h"

#include <algorithm>
#include <cmath>

namespace qorl::bench {

namespace {

constexpr uint32_t ground = 0xFFF0F0F0;

int32_t whole(double value) {
    return static_cast<int32_t>(std::lround(value));
}

CmRect wholeRect(const Geometry::Rect& rect) {
    return {whole(rect.x), whole(rect.y), whole(rect.right()), whole(rect.bottom())};
}

CmRect outward(const Geometry::Rect& rect, double slack) {
    return {static_cast<int32_t>(std::floor(rect.x - slack)),
            static_cast<int32_t>(std::floor(rect.y - slack)),
            static_cast<int32_t>(std::ceil(rect.right() + slack)),
            static_cast<int32_t>(std::ceil(rect.bottom() + slack))};
}

void trace(cairo_t* context, const GraphicsPath& path) {
    const Geometry::Point* p = path.points().data();
    for (const GraphicsPath::Verb verb : path.verbs()) {
        switch (verb) {
        case GraphicsPath::Verb::move: cairo_move_to(context, p[0].x, p[0].y); break;
        case GraphicsPath::Verb::line: cairo_line_to(context, p[0].x, p[0].y); break;
        case GraphicsPath::Verb::curve:
            cairo_curve_to(context, p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y);
            break;
        case GraphicsPath::Verb::close: cairo_close_path(context); continue;
        }
        p += verb == GraphicsPath::Verb::curve ? 3 : 1;
    }
}

std::shared_ptr<GraphicsPath> mapped(const GraphicsPath& path, const TransformMatrix* matrix) {
    auto copy = std::make_shared<GraphicsPath>();
    const Geometry::Point* p = path.points().data();
    const auto next = [&] { return matrix ? matrix->map(*p++) : *p++; };
    for (const GraphicsPath::Verb verb : path.verbs()) {
        switch (verb) {
        case GraphicsPath::Verb::move: copy->moveTo(next()); break;
        case GraphicsPath::Verb::line: copy->lineTo(next()); break;
        case GraphicsPath::Verb::curve: {
            const Geometry::Point first = next();
            const Geometry::Point second = next();
            copy->curveTo(first, second, next());
            break;
        }
        case GraphicsPath::Verb::close: copy->closeFigure(); break;
        }
    }
    return copy;
}

void useColor(cairo_t* context, uint32_t color) {
    cairo_set_source_rgba(context, (color >> 16 & 0xFF) / 255.0, (color >> 8 & 0xFF) / 255.0,
                          (color & 0xFF) / 255.0, (color >> 24) / 255.0);
}

void addRect(cairo_t* context, const CmRect& rect) {
    cairo_rectangle(context, rect.left, rect.top, rect.width(), rect.height());
}

double startIn(double start, double extent, double needed, bool centered, bool atEnd) {
    return start + (centered ? (extent - needed) / 2 : atEnd ? extent - needed : 0);
}

} // namespace

Ref<DrawRecorder> DrawRecorder::record(UView& view, const CmRect& area) {
    auto recorder = make<DrawRecorder>();
    const auto target = make<RenderTarget>(Ref<DrawBackEnd>(recorder));
    target->setClip(area);
    view.setRenderTargetShared(target.get());
    view.draw(area);
    view.setRenderTargetShared(nullptr);
    return recorder;
}

void DrawRecorder::replay(cairo_t* context, const CmRect& area) const {
    cairo_save(context);
    addRect(context, area);
    cairo_clip(context);
    useColor(context, ground);
    cairo_paint(context);
    uint32_t color = ground;
    for (const Primitive& primitive : primitives_) {
        if (!primitive.bounds.intersects(area))
            continue;
        if (primitive.color != color)
            useColor(context, primitive.color);
        color = primitive.color;
        if (primitive.isClipped) {
            cairo_save(context);
            addRect(context, primitive.clip);
            cairo_clip(context);
        }
        switch (primitive.kind) {
        case Primitive::Kind::boxes:
            for (const CmRect& box : primitive.boxes)
                addRect(context, box);
            cairo_fill(context);
            break;
        case Primitive::Kind::fill:
            trace(context, *primitive.path);
            cairo_fill(context);
            break;
        case Primitive::Kind::stroke:
            trace(context, *primitive.path);
            cairo_set_line_width(context, primitive.penWidth);
            cairo_stroke(context);
            break;
        case Primitive::Kind::glyphs:
            cairo_set_scaled_font(context, primitive.font);
            cairo_show_glyphs(context, primitive.glyphs.data(), static_cast<int>(primitive.glyphs.size()));
            break;
        }
        if (primitive.isClipped)
            cairo_restore(context);
    }
    cairo_restore(context);
}

Result DrawRecorder::refuse() {
    isComplete_ = false;
    return Result::notImplemented;
}

void DrawRecorder::add(Primitive primitive, const CmRect& box) {
    if (!box.intersects(clip_))
        return;
    primitive.isClipped = !clip_.contains(box);
    primitive.bounds = box.intersect(clip_);
    primitive.clip = clip_;
    primitives_.push_back(std::move(primitive));
}

void DrawRecorder::addBox(const CmRect& box, uint32_t color) {
    const CmRect visible = box.intersect(clip_);
    if (visible.isEmpty())
        return;
    if (primitives_.empty() || primitives_.back().kind != Primitive::Kind::boxes ||
        primitives_.back().color != color) {
        Primitive primitive;
        primitive.color = color;
        add(std::move(primitive), visible);
    }
    Primitive& last = primitives_.back();
    last.boxes.push_back(visible);
    last.bounds = last.bounds.unite(visible);
}

/// A line along an axis is a box, as a bare loop would draw it.
Result DrawRecorder::drawLine(Geometry::Point from, Geometry::Point to) {
    if (from.x == to.x || from.y == to.y) {
        const double half = penWidth_ / 2;
        addBox(wholeRect({std::min(from.x, to.x) - half, std::min(from.y, to.y) - half,
                          std::abs(to.x - from.x) + penWidth_, std::abs(to.y - from.y) + penWidth_}),
               penColor_);
        return Result::ok;
    }
    GraphicsPath path;
    path.moveTo(from);
    path.lineTo(to);
    return drawPath(&path, DrawMode::stroke, nullptr);
}

/// The outline of a rectangle is four boxes, as a bare loop would draw it.
Result DrawRecorder::drawRect(const Geometry::Rect& rect, DrawMode mode) {
    if (fills(mode))
        addBox(wholeRect(rect), brushColor_);
    if (!strokes(mode))
        return Result::ok;
    const double half = penWidth_ / 2;
    const CmRect outer =
        wholeRect({rect.x - half, rect.y - half, rect.width + penWidth_, rect.height + penWidth_});
    const int32_t pen = std::max(int32_t{1}, whole(penWidth_));
    addBox({outer.left, outer.top, outer.right, outer.top + pen}, penColor_);
    addBox({outer.left, outer.bottom - pen, outer.right, outer.bottom}, penColor_);
    addBox({outer.left, outer.top + pen, outer.left + pen, outer.bottom - pen}, penColor_);
    addBox({outer.right - pen, outer.top + pen, outer.right, outer.bottom - pen}, penColor_);
    return Result::ok;
}

Result DrawRecorder::drawEllipse(const Geometry::Rect& rect, DrawMode mode) {
    GraphicsPath path;
    path.addEllipse(rect);
    return drawPath(&path, mode, nullptr);
}

Result DrawRecorder::drawPath(GraphicsPath* path, DrawMode mode, const TransformMatrix* matrix) {
    const std::shared_ptr<GraphicsPath> copy = mapped(*path, matrix);
    if (fills(mode)) {
        Primitive primitive;
        primitive.kind = Primitive::Kind::fill;
        primitive.color = brushColor_;
        primitive.path = copy;
        add(std::move(primitive), outward(copy->getBounds(), 1));
    }
    if (strokes(mode)) {
        Primitive primitive;
        primitive.kind = Primitive::Kind::stroke;
        primitive.color = penColor_;
        primitive.penWidth = penWidth_;
        primitive.path = copy;
        add(std::move(primitive), outward(copy->getBounds(), 1 + penWidth_));
    }
    return Result::ok;
}

Result DrawRecorder::drawString(std::u16string_view text, const Geometry::Rect& rect, GraphicsFont* font,
                                uint32_t color, int32_t alignment) {
    auto* face = cast<CairoFont>(font);
    if (!face || text.find(u'\n') != text.npos)
        return refuse();
    const FontMetrics& metrics = face->getMetrics();
    const int32_t horizontal = alignment & TextAlignment::horizontalMask;
    const double x = startIn(rect.x, rect.width, face->measureLine(text), horizontal == TextAlignment::center,
                             horizontal == TextAlignment::right);
    const double y =
        startIn(rect.y, rect.height, metrics.ascent + metrics.descent,
                (alignment & TextAlignment::verticalCenter) != 0, (alignment & TextAlignment::bottom) != 0);
    const CmPoint origin{whole(x), whole(y + metrics.ascent)};
    face->placeLine(text, origin, 1, 1, [&](const GlyphBatch& batch) {
        Primitive primitive;
        primitive.kind = Primitive::Kind::glyphs;
        primitive.color = color;
        primitive.font = batch.font->get();
        primitive.glyphs = batch.glyphs;
        add(std::move(primitive), batch.ink);
    });
    return Result::ok;
}

Result DrawRecorder::drawBitmap(GraphicsImage*, Geometry::Point, const Geometry::Rect*) {
    return refuse();
}

Result DrawRecorder::drawBitmapStretched(GraphicsImage*, const Geometry::Rect&, const Geometry::Rect&, double,
                                         Interpolation) {
    return refuse();
}

Result DrawRecorder::clearRect(const Geometry::Rect&) {
    return refuse();
}

Result DrawRecorder::setDrawAntialiased(bool) {
    return Result::ok;
}

Result DrawRecorder::setPenColor(uint32_t color) {
    penColor_ = color;
    return Result::ok;
}

Result DrawRecorder::setPenWidth(double width) {
    penWidth_ = width;
    return Result::ok;
}

Result DrawRecorder::setLineStyle(const LineStyle&) {
    return Result::ok;
}

Result DrawRecorder::setBrushColor(uint32_t color) {
    brushColor_ = color;
    return Result::ok;
}

Result DrawRecorder::concatTransformMatrix(const TransformMatrix&) {
    return refuse();
}

Result DrawRecorder::setClip(const Geometry::Rect& rect) {
    clip_ = wholeRect(rect);
    return Result::ok;
}

Result DrawRecorder::saveGlobalState() {
    savedClips_.push_back(clip_);
    return Result::ok;
}

Result DrawRecorder::restoreGlobalState() {
    if (savedClips_.empty())
        return Result::failure;
    clip_ = savedClips_.back();
    savedClips_.pop_back();
    return Result::ok;
}

Ref<FastLines> DrawRecorder::createFastLines(int32_t) {
    return nullptr;
}

Result DrawRecorder::drawFastLines(FastLines*) {
    return refuse();
}

Ref<FastRects> DrawRecorder::createFastRects(int32_t) {
    return nullptr;
}

Result DrawRecorder::drawFastRects(FastRects*, DrawMode) {
    return refuse();
}

Result DrawRecorder::getFontMetrics(GraphicsFont* font, FontMetrics& metrics) {
    metrics = font->getMetrics();
    return Result::ok;
}

Result DrawRecorder::measureStringHeight(std::u16string_view, GraphicsFont*, Geometry::Rect&) {
    return refuse();
}

Result DrawRecorder::measureStringWidth(std::u16string_view text, GraphicsFont* font, double& width) {
    width = font->measureWidth(ConstString(text));
    return Result::ok;
}

} // namespace qorl::bench

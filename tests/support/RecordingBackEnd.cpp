#include "support/RecordingBackEnd.h"

#include "foundation/text/ConstString.h"
#include "graphics/FastPrimitives.h"
#include "graphics/GraphicsPath.h"
#include "graphics/TransformMatrix.h"

#include <sstream>

namespace qorl::testing {

namespace {

std::string number(double value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

std::string text(Geometry::Point point) {
    return number(point.x) + "," + number(point.y);
}

std::string text(const Geometry::Rect& rect) {
    return number(rect.x) + "," + number(rect.y) + " " + number(rect.width) + "x" + number(rect.height);
}

std::string text(uint32_t color) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%08X", color);
    return buffer;
}

const char* text(DrawMode mode) {
    return mode == DrawMode::stroke ? "stroke" : mode == DrawMode::fill ? "fill" : "both";
}

} // namespace

Result RecordingBackEnd::record(std::string line) {
    lines_.push_back(std::move(line));
    return Result::ok;
}

std::string RecordingBackEnd::take() {
    std::string all;
    for (const auto& line : lines_)
        all += all.empty() ? line : "; " + line;
    lines_.clear();
    return all;
}

Result RecordingBackEnd::drawLine(Geometry::Point from, Geometry::Point to) {
    return record("line " + text(from) + " " + text(to));
}

Result RecordingBackEnd::drawRect(const Geometry::Rect& rect, DrawMode mode) {
    return record(std::string("rect ") + text(rect) + " " + text(mode));
}

Result RecordingBackEnd::drawEllipse(const Geometry::Rect& rect, DrawMode mode) {
    return record(std::string("ellipse ") + text(rect) + " " + text(mode));
}

Result RecordingBackEnd::drawPath(GraphicsPath* path, DrawMode mode, const TransformMatrix*) {
    return record(std::string("path ") + text(path->getBounds()) + " " + text(mode));
}

Result RecordingBackEnd::drawString(std::u16string_view string, const Geometry::Rect& rect, GraphicsFont*,
                                    uint32_t color, int32_t alignment) {
    return record("string " + ConstString(string).toUtf8() + " " + text(rect) + " " + text(color) + " " +
                  std::to_string(alignment));
}

Result RecordingBackEnd::drawBitmap(GraphicsImage*, Geometry::Point point, const Geometry::Rect* source) {
    return record("bitmap " + text(point) + (source ? " from " + text(*source) : std::string()));
}

Result RecordingBackEnd::drawBitmapStretched(GraphicsImage*, const Geometry::Rect& destination,
                                             const Geometry::Rect& source, double alpha, Interpolation) {
    return record("stretched " + text(destination) + " from " + text(source) + " " + number(alpha));
}

Result RecordingBackEnd::clearRect(const Geometry::Rect& rect) {
    return record("clear " + text(rect));
}

Result RecordingBackEnd::setDrawAntialiased(bool antialiased) {
    return record(antialiased ? "smooth" : "rough");
}

Result RecordingBackEnd::setPenColor(uint32_t color) {
    return record("pen " + text(color));
}

Result RecordingBackEnd::setPenWidth(double width) {
    return record("width " + number(width));
}

Result RecordingBackEnd::setLineStyle(const LineStyle& style) {
    return record(style.dashCount ? "dashed" : "solid");
}

Result RecordingBackEnd::setBrushColor(uint32_t color) {
    return record("brush " + text(color));
}

Result RecordingBackEnd::concatTransformMatrix(const TransformMatrix& matrix) {
    return record("matrix " + number(matrix.m11) + "," + number(matrix.m12) + "," + number(matrix.m21) + "," +
                  number(matrix.m22) + "," + number(matrix.dx) + "," + number(matrix.dy));
}

Result RecordingBackEnd::setClip(const Geometry::Rect& rect) {
    return record("clip " + text(rect));
}

Result RecordingBackEnd::saveGlobalState() {
    return record("save");
}

Result RecordingBackEnd::restoreGlobalState() {
    return record("restore");
}

Ref<FastLines> RecordingBackEnd::createFastLines(int32_t capacity) {
    return batches_ == Batches::offered ? make<FastLines>(capacity) : nullptr;
}

Result RecordingBackEnd::drawFastLines(FastLines* lines) {
    std::string line = "lines";
    for (const auto& one : lines->lines())
        line += " [" + text(one.from) + " " + text(one.to) + "]";
    return record(line);
}

Ref<FastRects> RecordingBackEnd::createFastRects(int32_t capacity) {
    return batches_ == Batches::offered ? make<FastRects>(capacity) : nullptr;
}

Result RecordingBackEnd::drawFastRects(FastRects* rects, DrawMode mode) {
    std::string line = std::string("rects ") + text(mode);
    for (const auto& one : rects->rects())
        line += " [" + text(one) + "]";
    return record(line);
}

Result RecordingBackEnd::getFontMetrics(GraphicsFont*, FontMetrics&) {
    return Result::notImplemented;
}

Result RecordingBackEnd::measureStringHeight(std::u16string_view, GraphicsFont*, Geometry::Rect&) {
    return Result::notImplemented;
}

Result RecordingBackEnd::measureStringWidth(std::u16string_view, GraphicsFont*, double&) {
    return Result::notImplemented;
}

} // namespace qorl::testing

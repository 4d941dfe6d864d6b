#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/FObject.h"
#include "foundation/text/ConstString.h"
#include "graphics/DrawBackEnd.h"
#include "graphics/FastPrimitives.h"
#include "graphics/GraphicsPath.h"
#include "graphics/TransformMatrix.h"

#include <cstdio>
#include <sstream>
#include <string>
#include <utility>

namespace qorl::testing {

/// A back end that writes down its calls as lines of text and draws nothing.
class RecordingBackEnd final : public FObject, public DrawBackEnd {
    QORL_CLASS(RecordingBackEnd, FObject)
    QORL_FACES(RecordingBackEnd, FObject, DrawBackEnd)

public:
    enum class Batches : uint8_t { offered, refused };

    explicit RecordingBackEnd(Batches batches = Batches::refused) : batches_(batches) {}

    /// The calls since the last time, parted by "; ".
    std::string take() { return std::exchange(text_, {}); }

    Result drawLine(Geometry::Point from, Geometry::Point to) override {
        return record("line ", toText(from), " ", toText(to));
    }
    Result drawRect(const Geometry::Rect& rect, DrawMode mode) override {
        return record("rect ", toText(rect), " ", toText(mode));
    }
    Result drawEllipse(const Geometry::Rect& rect, DrawMode mode) override {
        return record("ellipse ", toText(rect), " ", toText(mode));
    }
    Result drawPath(GraphicsPath* path, DrawMode mode, const TransformMatrix*) override {
        return record("path ", toText(path->getBounds()), " ", toText(mode));
    }
    Result drawString(std::u16string_view string, const Geometry::Rect& rect, GraphicsFont*, uint32_t color,
                      int32_t alignment) override {
        return record("string ", ConstString(string).toUtf8(), " ", toText(rect), " ", toText(color), " ",
                      alignment);
    }
    Result drawBitmap(GraphicsImage*, Geometry::Point point, const Geometry::Rect* source) override {
        return record("bitmap ", toText(point), source ? " from " + toText(*source) : std::string());
    }
    Result drawBitmapStretched(GraphicsImage*, const Geometry::Rect& destination,
                               const Geometry::Rect& source, double alpha, Interpolation) override {
        return record("stretched ", toText(destination), " from ", toText(source), " ", alpha);
    }
    Result clearRect(const Geometry::Rect& rect) override { return record("clear ", toText(rect)); }
    Result setDrawAntialiased(bool antialiased) override { return record(antialiased ? "smooth" : "rough"); }
    Result setPenColor(uint32_t color) override { return record("pen ", toText(color)); }
    Result setPenWidth(double width) override { return record("width ", width); }
    Result setLineStyle(const LineStyle& style) override {
        return record(style.dashCount ? "dashed" : "solid");
    }
    Result setBrushColor(uint32_t color) override { return record("brush ", toText(color)); }
    Result concatTransformMatrix(const TransformMatrix& m) override {
        return record("matrix ", m.m11, ",", m.m12, ",", m.m21, ",", m.m22, ",", m.dx, ",", m.dy);
    }
    Result setClip(const Geometry::Rect& rect) override { return record("clip ", toText(rect)); }
    Result saveGlobalState() override { return record("save"); }
    Result restoreGlobalState() override { return record("restore"); }
    Ref<FastLines> createFastLines(int32_t capacity) override {
        return batches_ == Batches::offered ? make<FastLines>(capacity) : nullptr;
    }
    Result drawFastLines(FastLines* lines) override {
        std::string all;
        for (const auto& one : lines->lines())
            all += " [" + toText(one.from) + " " + toText(one.to) + "]";
        return record("lines", all);
    }
    Ref<FastRects> createFastRects(int32_t capacity) override {
        return batches_ == Batches::offered ? make<FastRects>(capacity) : nullptr;
    }
    Result drawFastRects(FastRects* rects, DrawMode mode) override {
        std::string all;
        for (const auto& one : rects->rects())
            all += " [" + toText(one) + "]";
        return record("rects ", toText(mode), all);
    }
    Result getFontMetrics(GraphicsFont*, FontMetrics&) override { return Result::notImplemented; }
    Result measureStringHeight(std::u16string_view, GraphicsFont*, Geometry::Rect&) override {
        return Result::notImplemented;
    }
    Result measureStringWidth(std::u16string_view, GraphicsFont*, double&) override {
        return Result::notImplemented;
    }

private:
    template <typename... Parts>
    static std::string joined(const Parts&... parts) {
        std::ostringstream text;
        (text << ... << parts);
        return text.str();
    }
    template <typename... Parts>
    Result record(const Parts&... parts) {
        text_ += (text_.empty() ? "" : "; ") + joined(parts...);
        return Result::ok;
    }
    static std::string toText(Geometry::Point point) { return joined(point.x, ",", point.y); }
    static std::string toText(const Geometry::Rect& rect) {
        return joined(rect.x, ",", rect.y, " ", rect.width, "x", rect.height);
    }
    static std::string toText(uint32_t color) {
        char buffer[16];
        std::snprintf(buffer, sizeof buffer, "%08X", color);
        return buffer;
    }
    static const char* toText(DrawMode mode) {
        return mode == DrawMode::stroke ? "stroke" : mode == DrawMode::fill ? "fill" : "both";
    }

    Batches batches_;
    std::string text_;
};

} // namespace qorl::testing

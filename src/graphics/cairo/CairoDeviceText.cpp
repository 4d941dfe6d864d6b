#include "foundation/Cast.h"
#include "graphics/GraphicsPath.h"
#include "graphics/UFont.h"
#include "graphics/cairo/CairoDevice.h"

#include <algorithm>
#include <cmath>

namespace qorl {

namespace {

/// Where the first baseline and each line's start go in the rectangle.
double alignedStart(double start, double room, double length, bool atCenter, bool atEnd) {
    if (atEnd)
        return start + room - length;
    return atCenter ? start + (room - length) / 2 : start;
}

} // namespace

Result CairoDevice::drawString(std::u16string_view text, const Geometry::Rect& rect, GraphicsFont* font,
                               uint32_t color, int32_t alignment) {
    auto* face = cast<CairoFont>(font);
    if (!face)
        return Result::invalidArgument;
    const FontMetrics& metrics = face->getMetrics();
    const auto lines = 1 + std::count(text.begin(), text.end(), u'\n');
    const double height =
        metrics.ascent + metrics.descent + static_cast<double>(lines - 1) * metrics.lineHeight();
    const int32_t horizontal = alignment & TextAlignment::horizontalMask;
    const double top =
        alignedStart(rect.y, rect.height, height, (alignment & TextAlignment::verticalCenter) != 0,
                     (alignment & TextAlignment::bottom) != 0);
    double baseline = top + metrics.ascent;
    useColor(color);
    for (;;) {
        const size_t end = text.find(u'\n');
        const std::u16string_view line = text.substr(0, end);
        const double width = face->measureLine(line);
        const Geometry::Point start{alignedStart(rect.x, rect.width, width,
                                                 horizontal == TextAlignment::center,
                                                 horizontal == TextAlignment::right),
                                    baseline};
        drawLine(*face, line, start, width, color);
        if (end == text.npos)
            break;
        text.remove_prefix(end + 1);
        baseline += metrics.lineHeight();
    }
    return status();
}

void CairoDevice::drawLine(CairoFont& font, std::u16string_view line, Geometry::Point start, double width,
                           uint32_t color) {
    const TransformMatrix& matrix = state_.matrix;
    const bool upright = matrix.isUpright() && matrix.m11 > 0 && matrix.m22 > 0;
    if (upright) {
        const Geometry::Point place = matrix.map(start);
        const CmPoint origin{toDevicePixel(place.x), toDevicePixel(place.y)};
        font.placeLine(line, origin, matrix.m11, matrix.m22, [this](const GlyphBatch& batch) {
            if (batch.glyphs.empty() || !clipTo(batch.ink))
                return;
            cairo_set_scaled_font(context_.get(), batch.font->get());
            cairo_show_glyphs(context_.get(), batch.glyphs.data(), static_cast<int>(batch.glyphs.size()));
        });
    } else {
        drawRotatedLine(font, line, start);
    }
    drawDecoration(font.underline(), start, font.hasUnderline() ? width : 0, color);
    drawDecoration(font.strikeout(), start, font.hasStrikeout() ? width : 0, color);
}

/// Glyphs are placed in logical pixels and Cairo turns them.
void CairoDevice::drawRotatedLine(CairoFont& font, std::u16string_view line, Geometry::Point start) {
    cairo_t* context = context_.get();
    const TransformMatrix map = state_.matrix.after(TransformMatrix::translation(start.x, start.y));
    if (!std::isnormal(map.determinant()) || !clipTo(bounds_))
        return;
    const cairo_matrix_t matrix{map.m11, map.m12, map.m21, map.m22, bounded(map.dx), bounded(map.dy)};
    cairo_save(context);
    cairo_set_matrix(context, &matrix);
    font.placeLine(line, {}, 1, 1, [&](const GlyphBatch& batch) {
        cairo_scaled_font_t* base = batch.font->get();
        cairo_matrix_t fontMatrix;
        cairo_scaled_font_get_font_matrix(base, &fontMatrix);
        cairo_set_font_face(context, cairo_scaled_font_get_font_face(base));
        cairo_set_font_matrix(context, &fontMatrix);
        cairo_set_font_options(context, CairoFontFace::options());
        cairo_show_glyphs(context, batch.glyphs.data(), static_cast<int>(batch.glyphs.size()));
    });
    cairo_restore(context);
}

void CairoDevice::drawDecoration(const CairoFont::Decoration& decoration, Geometry::Point start, double width,
                                 uint32_t color) {
    if (!(width > 0) || !(decoration.thickness > 0))
        return;
    const Geometry::Rect bar{start.x, start.y + decoration.offset - decoration.thickness / 2, width,
                             decoration.thickness};
    if (!state_.matrix.isUpright()) {
        GraphicsPath& path = scratchBox(bar);
        if (!clipTo(boxOf(path, state_.matrix)))
            return;
        addPath(path, state_.matrix);
        cairo_fill(context_.get());
        return;
    }
    CmRect box = toDeviceRect(bar);
    box.bottom = std::max(box.bottom, box.top + 1);
    addBox(box);
    fillBoxes(color);
}

} // namespace qorl

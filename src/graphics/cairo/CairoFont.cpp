#include "graphics/cairo/CairoFont.h"

#include "foundation/text/TextConversion.h"
#include "graphics/UFont.h"

#include <cairo-ft.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_ADVANCES_H
#include FT_TRUETYPE_TABLES_H

#include <algorithm>
#include <cmath>

namespace qorl {

namespace {

constexpr double advanceUnit = 1024.0;

/// A text parted at its line feeds.
template <typename Char, typename Take>
void forEachLine(std::basic_string_view<Char> text, Take take) {
    for (;;) {
        const size_t end = text.find(static_cast<Char>('\n'));
        take(text.substr(0, end));
        if (end == text.npos)
            return;
        text.remove_prefix(end + 1);
    }
}

/// Characters of the table that shaping treats in a way of its own.
constexpr bool needsShaping(uint32_t character) {
    return (character >= 0x7F && character < 0xA0) || character == 0xAD;
}

/// The face of a font while FreeType is asked.
class LockedFace {
public:
    explicit LockedFace(CairoFontFace& face)
        : font_(face.at(1, 1).get()), face_(cairo_ft_scaled_font_lock_face(font_)) {}
    ~LockedFace() {
        if (face_)
            cairo_ft_scaled_font_unlock_face(font_);
    }
    LockedFace(const LockedFace&) = delete;
    LockedFace& operator=(const LockedFace&) = delete;

    bool isScalable() const { return face_ && FT_IS_SCALABLE(face_) && face_->units_per_EM > 0; }
    FT_Face operator->() const { return face_; }
    FT_Face get() const { return face_; }

private:
    cairo_scaled_font_t* font_;
    FT_Face face_;
};

template <typename Char>
constexpr bool isWholeCharacter(Char c) {
    return sizeof(Char) > 1 || static_cast<std::make_unsigned_t<Char>>(c) < 0x80;
}
template <>
constexpr bool isWholeCharacter(char16_t) {
    return true;
}

} // namespace

CairoFont::CairoFont(std::string family, double size, uint32_t style, std::shared_ptr<CairoFontFace> face,
                     std::shared_ptr<PangoShaper> shaper)
    : family_(std::move(family)), size_(size), style_(style), face_(std::move(face)),
      shaper_(std::move(shaper)) {
    readFace();
    readGlyphs(firstSimple, 0x7F);
}

void CairoFont::readFace() {
    const LockedFace face(*face_);
    if (!face.isScalable()) {
        cairo_font_extents_t extents{};
        cairo_scaled_font_extents(face_->at(1, 1).get(), &extents);
        metrics_ = {extents.ascent, extents.descent,
                    std::max(0.0, extents.height - extents.ascent - extents.descent)};
        underline_ = {metrics_.descent / 2, size_ / 14};
        strikeout_ = {-metrics_.ascent / 3, size_ / 14};
        return;
    }
    const double unit = size_ / face->units_per_EM;
    metrics_ = {face->ascender * unit, -face->descender * unit,
                std::max(0.0, (face->height - face->ascender + face->descender) * unit)};
    underline_ = {-face->underline_position * unit, face->underline_thickness * unit};
    const auto* os2 = static_cast<TT_OS2*>(FT_Get_Sfnt_Table(face.get(), FT_SFNT_OS2));
    strikeout_ = os2 && os2->yStrikeoutSize > 0
                     ? Decoration{-(os2->yStrikeoutPosition - os2->yStrikeoutSize / 2.0) * unit,
                                  os2->yStrikeoutSize * unit}
                     : Decoration{-metrics_.ascent / 3, underline_.thickness};
}

void CairoFont::readGlyphs(uint32_t first, uint32_t end) {
    const LockedFace face(*face_);
    for (uint32_t character = first; character < end; ++character) {
        SimpleGlyph& glyph = simple_[character - firstSimple];
        glyph.state = SimpleGlyph::State::missing;
        if (!face.isScalable() || needsShaping(character))
            continue;
        glyph.glyph = FT_Get_Char_Index(face.get(), character);
        FT_Fixed advance = 0;
        if (glyph.glyph == 0 || FT_Get_Advance(face.get(), glyph.glyph, FT_LOAD_NO_SCALE, &advance) != 0)
            continue;
        const double scaled = static_cast<double>(advance) * (size_ * advanceUnit) / face->units_per_EM;
        glyph.advance = static_cast<int32_t>(std::floor(scaled + 0.5));
        glyph.state = SimpleGlyph::State::present;
    }
}

bool CairoFont::hasUnderline() const {
    return (style_ & UFont::underline) != 0;
}

bool CairoFont::hasStrikeout() const {
    return (style_ & UFont::strikeout) != 0;
}

template <typename Char>
bool CairoFont::measureSimple(std::basic_string_view<Char> line, int64_t& width) {
    int64_t sum = 0;
    for (const Char c : line) {
        const SimpleGlyph* glyph =
            isWholeCharacter(c)
                ? simpleGlyph(static_cast<uint32_t>(static_cast<std::make_unsigned_t<Char>>(c)))
                : nullptr;
        if (!glyph)
            return false;
        sum += glyph->advance;
    }
    width = sum;
    return true;
}

const ShapedRun& CairoFont::shaped(std::u16string_view line) {
    if (const ShapedRun* kept = runs_.find(line))
        return *kept;
    return runs_.add(line, shaper_->shape(line, family_, size_, style_));
}

double CairoFont::measureLine(std::u16string_view line) {
    int64_t width = 0;
    return measureSimple(line, width) ? static_cast<double>(width) / advanceUnit : shaped(line).width;
}

double CairoFont::measureWidth(const ConstString& text) {
    double widest = 0;
    if (!text.isWide()) {
        int64_t width = 0;
        const std::string_view narrow = text.view8();
        if (measureSimple(narrow, width))
            return static_cast<double>(width) / advanceUnit;
    }
    const std::u16string converted = text.isWide() ? std::u16string() : text.toUtf16();
    const std::u16string_view wide = text.isWide() ? text.view16() : std::u16string_view(converted);
    forEachLine(wide, [&](std::u16string_view line) { widest = std::max(widest, measureLine(line)); });
    return widest;
}

Geometry::Rect CairoFont::measureExtent(const ConstString& text) {
    const auto countLines = [](auto view) {
        using Char = typename decltype(view)::value_type;
        return 1 + std::count(view.begin(), view.end(), static_cast<Char>('\n'));
    };
    const auto lines = text.isWide() ? countLines(text.view16()) : countLines(text.view8());
    return {0, 0, measureWidth(text),
            metrics_.ascent + metrics_.descent + static_cast<double>(lines - 1) * metrics_.lineHeight()};
}

int32_t CairoFont::countFitting(const ConstString& text, double width) {
    const std::u16string wide = text.toUtf16();
    if (measureLine(wide) <= width)
        return text.size();
    size_t fits = 0;
    size_t tooMany = wide.size();
    while (fits + 1 < tooMany) {
        const size_t middle = fits + (tooMany - fits) / 2;
        (measureLine(std::u16string_view(wide).substr(0, middle)) <= width ? fits : tooMany) = middle;
    }
    const bool splitsPair = fits > 0 && text::isLeadSurrogate(wide[fits - 1]);
    const std::u16string_view head = std::u16string_view(wide).substr(0, splitsPair ? fits - 1 : fits);
    return text.isWide() ? static_cast<int32_t>(head.size())
                         : static_cast<int32_t>(ConstString(head).toUtf8().size());
}

bool CairoFont::placeSimple(std::u16string_view line, CmPoint origin, double scaleX, double scaleY) {
    CairoScaledFont& font = face_->at(scaleX, scaleY);
    batch_.font = &font;
    batch_.glyphs.clear();
    CmRect ink{INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};
    const double unit = scaleX / advanceUnit;
    int64_t place = 0;
    for (const char16_t c : line) {
        const SimpleGlyph* glyph = simpleGlyph(c);
        if (!glyph)
            return false;
        const GlyphInk& box = font.inkOf(c - firstSimple, glyph->glyph);
        if (box.state == GlyphInk::State::drawn) {
            const double x = bounded(origin.x + static_cast<double>(place) * unit);
            batch_.glyphs.push_back({glyph->glyph, x, double(origin.y)});
            const auto left = static_cast<int32_t>(x);
            ink = {std::min(ink.left, left + box.left), std::min(ink.top, origin.y + box.top),
                   std::max(ink.right, left + box.right), std::max(ink.bottom, origin.y + box.bottom)};
        }
        place += glyph->advance;
    }
    batch_.ink = batch_.glyphs.empty() ? CmRect{} : ink;
    return true;
}

void CairoFont::placeShaped(const ShapedRun& run, const ShapedRun::Segment& segment, CmPoint origin,
                            double scaleX, double scaleY) {
    batch_.font = &segment.face->at(scaleX, scaleY);
    batch_.glyphs.clear();
    for (uint32_t i = 0; i < segment.count; ++i) {
        const ShapedRun::Glyph& glyph = run.glyphs[segment.first + i];
        batch_.glyphs.push_back({glyph.index, origin.x + glyph.x * scaleX, origin.y + glyph.y * scaleY});
    }
    cairo_text_extents_t extents{};
    cairo_scaled_font_glyph_extents(batch_.font->get(), batch_.glyphs.data(),
                                    static_cast<int>(batch_.glyphs.size()), &extents);
    const Geometry::Point start{batch_.glyphs.front().x + extents.x_bearing,
                                batch_.glyphs.front().y + extents.y_bearing};
    batch_.ink = CmRect{toDevicePixel(std::floor(start.x)), toDevicePixel(std::floor(start.y)),
                        toDevicePixel(std::ceil(start.x + extents.width)),
                        toDevicePixel(std::ceil(start.y + extents.height))}
                     .grown(2, 2);
}

} // namespace qorl

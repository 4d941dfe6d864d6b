#pragma once

#include "graphics/GraphicsFont.h"
#include "graphics/cairo/CairoFontFace.h"
#include "graphics/cairo/PangoShaper.h"
#include "graphics/cairo/ShapedRunCache.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace qorl {

/// Glyphs of one face, placed in device pixels, with the box that their pixels lie in.
struct GlyphBatch {
    CairoScaledFont* font = nullptr;
    std::vector<cairo_glyph_t> glyphs;
    CmRect ink;
};

/// A font of Cairo over FreeType.
///
/// Text of Latin letters that the face has is measured and placed straight from the face's advances;
/// everything else is shaped by Pango, once for each text. Both ways give the same widths: advances are those
/// of the design, scaled and rounded to 1/1024 pixel, without kerning and without ligatures.
class CairoFont final : public GraphicsFont {
    QORL_CLASS(CairoFont, GraphicsFont)

public:
    struct Decoration {
        double offset = 0;    ///< Of its centre below the baseline.
        double thickness = 0; ///< 0 when there is none.
    };

    /// `size` of the em square in logical pixels.
    CairoFont(std::string family, double size, uint32_t style, std::shared_ptr<CairoFontFace> face,
              std::shared_ptr<PangoShaper> shaper);

    const FontMetrics& getMetrics() const override { return metrics_; }
    double measureWidth(const ConstString& text) override;
    Geometry::Rect measureExtent(const ConstString& text) override;
    int32_t countFitting(const ConstString& text, double width) override;

    double measureLine(std::u16string_view line);
    /// Places a line with its baseline start at a device pixel, and hands each batch of glyphs to `draw`.
    template <typename Draw>
    void placeLine(std::u16string_view line, CmPoint origin, double scaleX, double scaleY, Draw draw);

    const Decoration& underline() const { return underline_; }
    const Decoration& strikeout() const { return strikeout_; }
    bool hasUnderline() const;
    bool hasStrikeout() const;

private:
    struct SimpleGlyph {
        uint32_t glyph = 0;
        int32_t advance = 0; ///< In 1/1024 pixel.
        enum class State : uint8_t { unknown, missing, present } state = State::unknown;
    };

    static constexpr uint32_t firstSimple = 0x20;
    static constexpr uint32_t endSimple = 0x250;

    void readFace();
    void readGlyphs(uint32_t first, uint32_t end);
    /// Null for a character that needs shaping.
    const SimpleGlyph* simpleGlyph(uint32_t character) {
        if (character - firstSimple >= endSimple - firstSimple)
            return nullptr;
        SimpleGlyph& glyph = simple_[character - firstSimple];
        if (glyph.state == SimpleGlyph::State::unknown)
            readGlyphs(character, character + 1);
        return glyph.state == SimpleGlyph::State::present ? &glyph : nullptr;
    }
    template <typename Char>
    bool measureSimple(std::basic_string_view<Char> line, int64_t& width);
    bool placeSimple(std::u16string_view line, CmPoint origin, double scaleX, double scaleY);
    void placeShaped(const ShapedRun& run, const ShapedRun::Segment& segment, CmPoint origin, double scaleX,
                     double scaleY);
    const ShapedRun& shaped(std::u16string_view line);

    std::string family_;
    double size_;
    uint32_t style_;
    std::shared_ptr<CairoFontFace> face_;
    std::shared_ptr<PangoShaper> shaper_;
    FontMetrics metrics_;
    Decoration underline_;
    Decoration strikeout_;
    std::array<SimpleGlyph, endSimple - firstSimple> simple_{};
    ShapedRunCache runs_;
    GlyphBatch batch_; ///< Kept for its memory.
};

template <typename Draw>
void CairoFont::placeLine(std::u16string_view line, CmPoint origin, double scaleX, double scaleY, Draw draw) {
    if (placeSimple(line, origin, scaleX, scaleY)) {
        draw(batch_);
        return;
    }
    const ShapedRun& run = shaped(line);
    for (const auto& segment : run.segments) {
        placeShaped(run, segment, origin, scaleX, scaleY);
        draw(batch_);
    }
}

} // namespace qorl

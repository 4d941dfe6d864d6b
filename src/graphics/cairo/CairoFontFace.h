#pragma once

#include "graphics/cairo/CairoHandle.h"

#include <qorl/Geometry.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace qorl {

/// Where the pixels of a glyph stand, in whole device pixels from its origin.
struct GlyphInk {
    enum class State : uint8_t { unknown, empty, drawn };

    int16_t left = 0;
    int16_t top = 0;
    int16_t right = 0;
    int16_t bottom = 0;
    State state = State::unknown;
};

/// A face at one size in device pixels.
class CairoScaledFont {
public:
    CairoScaledFont(cairo_font_face_t* face, const cairo_matrix_t& fontMatrix, double scaleX, double scaleY);

    cairo_scaled_font_t* get() const { return font_.get(); }
    bool isFor(double scaleX, double scaleY) const { return scaleX_ == scaleX && scaleY_ == scaleY; }

    /// Of a glyph that is known under a small number of its own.
    const GlyphInk& inkOf(uint32_t slot, uint32_t glyph) {
        if (slot >= ink_.size())
            ink_.resize(slot + 64);
        GlyphInk& ink = ink_[slot];
        if (ink.state == GlyphInk::State::unknown)
            ink = measureInk(glyph);
        return ink;
    }
    GlyphInk measureInk(uint32_t glyph) const;

private:
    double scaleX_;
    double scaleY_;
    CairoHandle<cairo_scaled_font_t> font_;
    std::vector<GlyphInk> ink_;
};

/// A face with its size in logical pixels, and the sizes in device pixels that it was drawn in.
class CairoFontFace {
public:
    /// Takes over the reference. `fontMatrix` maps the em square to logical pixels.
    CairoFontFace(CairoHandle<cairo_font_face_t> face, const cairo_matrix_t& fontMatrix)
        : face_(std::move(face)), fontMatrix_(fontMatrix) {}

    /// Valid until the next call.
    CairoScaledFont& at(double scaleX, double scaleY);

    /// Gray antialiasing, no hinting, metrics not hinted: what all text is measured and drawn with.
    static const cairo_font_options_t* options();
    static void releaseOptions();

private:
    static constexpr size_t mostSizes = 4;

    CairoHandle<cairo_font_face_t> face_;
    cairo_matrix_t fontMatrix_;
    std::vector<std::unique_ptr<CairoScaledFont>> sizes_; ///< Last used first.
};

} // namespace qorl

#include "graphics/cairo/CairoFontFace.h"

#include <algorithm>
#include <cmath>

namespace qorl {

namespace {

constinit cairo_font_options_t* fontOptions = nullptr;

int16_t toPixel(double place) {
    return static_cast<int16_t>(std::clamp(place, -32000.0, 32000.0));
}

} // namespace

CairoScaledFont::CairoScaledFont(cairo_font_face_t* face, const cairo_matrix_t& fontMatrix, double scaleX,
                                 double scaleY)
    : scaleX_(scaleX), scaleY_(scaleY) {
    cairo_matrix_t device;
    cairo_matrix_init_scale(&device, scaleX, scaleY);
    cairo_matrix_t matrix;
    cairo_matrix_multiply(&matrix, &fontMatrix, &device);
    cairo_matrix_t identity;
    cairo_matrix_init_identity(&identity);
    font_.reset(cairo_scaled_font_create(face, &matrix, &identity, CairoFontFace::options()));
}

GlyphInk CairoScaledFont::measureInk(uint32_t glyph) const {
    const cairo_glyph_t one{glyph, 0, 0};
    cairo_text_extents_t extents{};
    cairo_scaled_font_glyph_extents(font_.get(), &one, 1, &extents);
    if (extents.width <= 0 || extents.height <= 0)
        return {.state = GlyphInk::State::empty};
    // A pixel of room on each side for the rounding of the origin.
    return {toPixel(std::floor(extents.x_bearing) - 1), toPixel(std::floor(extents.y_bearing) - 1),
            toPixel(std::ceil(extents.x_bearing + extents.width) + 1),
            toPixel(std::ceil(extents.y_bearing + extents.height) + 1), GlyphInk::State::drawn};
}

CairoScaledFont& CairoFontFace::at(double scaleX, double scaleY) {
    if (!sizes_.empty() && sizes_.front()->isFor(scaleX, scaleY))
        return *sizes_.front();
    const auto found = std::find_if(sizes_.begin(), sizes_.end(),
                                    [&](const auto& size) { return size->isFor(scaleX, scaleY); });
    if (found != sizes_.end()) {
        std::rotate(sizes_.begin(), found, found + 1);
        return *sizes_.front();
    }
    if (sizes_.size() >= mostSizes)
        sizes_.pop_back();
    sizes_.insert(sizes_.begin(),
                  std::make_unique<CairoScaledFont>(face_.get(), fontMatrix_, scaleX, scaleY));
    return *sizes_.front();
}

const cairo_font_options_t* CairoFontFace::options() {
    if (!fontOptions) {
        fontOptions = cairo_font_options_create();
        cairo_font_options_set_antialias(fontOptions, CAIRO_ANTIALIAS_GRAY);
        cairo_font_options_set_hint_style(fontOptions, CAIRO_HINT_STYLE_NONE);
        cairo_font_options_set_hint_metrics(fontOptions, CAIRO_HINT_METRICS_OFF);
    }
    return fontOptions;
}

void CairoFontFace::releaseOptions() {
    if (fontOptions)
        cairo_font_options_destroy(fontOptions);
    fontOptions = nullptr;
}

} // namespace qorl

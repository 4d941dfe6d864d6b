#pragma once

#include "graphics/DrawTypes.h"

#include <cairo.h>
#include <cmath>
#include <cstdint>
#include <memory>

namespace qorl {

struct CairoDestroy {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_pattern_t* pattern) const { cairo_pattern_destroy(pattern); }
    void operator()(cairo_font_face_t* face) const { cairo_font_face_destroy(face); }
    void operator()(cairo_scaled_font_t* font) const { cairo_scaled_font_destroy(font); }
    void operator()(cairo_font_options_t* options) const { cairo_font_options_destroy(options); }
};

/// One reference on an object of Cairo.
template <typename T>
using CairoHandle = std::unique_ptr<T, CairoDestroy>;

/// What Cairo's fixed point numbers hold, and no infinities.
inline double bounded(double place) {
    constexpr double limit = 1 << 22;
    return place > -limit ? (place < limit ? place : limit) : -limit;
}

inline Geometry::Point bounded(Geometry::Point point) {
    return {bounded(point.x), bounded(point.y)};
}

/// A whole device pixel; coordinates that Cairo could not hold are cut to what it can.
inline int32_t toDevicePixel(double place) {
    const double shifted = bounded(place) + 0.5;
    const auto cut = static_cast<int32_t>(shifted);
    return cut - (shifted < cut ? 1 : 0);
}

} // namespace qorl

#pragma once

#include <cstdint>

namespace qorl {

enum class LineCap : uint32_t { butt = 0, round = 1, square = 2 };
enum class LineJoin : uint32_t { miter = 0, round = 1, bevel = 2 };

/// How lines end, meet and are broken into dashes. Pens hold it by pointer; lengths are in pen widths'
/// pixels.
struct LineStyle {
    static constexpr uint32_t maximumDashes = 12;

    LineCap cap = LineCap::butt;
    LineJoin join = LineJoin::miter;
    double miterLimit = 10.0;
    double dashOffset = 0.0;
    uint32_t dashCount = 0; ///< At most `maximumDashes`; 0 is a solid line.
    uint32_t reserved = 0;
    double dashLengths[maximumDashes] = {};

    friend bool operator==(const LineStyle& a, const LineStyle& b) = default;

    /// What a solid pen draws with: both end pixels belong to the line.
    static const LineStyle& solid();
    /// What a dotted pen draws with: one pixel on, one off.
    static const LineStyle& dotted();
};

static_assert(sizeof(LineStyle) == 128, "handed on as one block");

} // namespace qorl

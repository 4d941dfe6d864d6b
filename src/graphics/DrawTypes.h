#pragma once

#include <qorl/Geometry.h>

#include <cstdint>

namespace qorl {

/// Which parts of a shape are drawn: its outline with the pen, its inside with the brush.
enum class DrawMode : int32_t { stroke = 1, fill = 2, both = 3 };

constexpr bool strokes(DrawMode mode) {
    return (static_cast<int32_t>(mode) & 1) != 0;
}

constexpr bool fills(DrawMode mode) {
    return (static_cast<int32_t>(mode) & 2) != 0;
}

/// Where text goes in its rectangle, as clients say it. A combination of flags.
namespace Justify {
constexpr int32_t left = 0;
constexpr int32_t center = 1;
constexpr int32_t right = 2;
constexpr int32_t top = 0;
constexpr int32_t verticalCenter = 16;
constexpr int32_t bottom = 32;
} // namespace Justify

/// Where text goes in its rectangle, as back ends hear it: a horizontal number plus a vertical one.
namespace TextAlignment {
constexpr int32_t left = 0;
constexpr int32_t center = 1;
constexpr int32_t right = 2;
constexpr int32_t horizontalMask = 3;
constexpr int32_t verticalCenter = 4;
constexpr int32_t bottom = 8;
} // namespace TextAlignment

/// What a font needs above and below its baseline and between lines, in logical pixels, as the font says it.
struct FontMetrics {
    double ascent = 0;
    double descent = 0;
    double lineGap = 0;

    constexpr double lineHeight() const { return ascent + descent + lineGap; }
};

/// The same in whole logical pixels, rounded up, as clients lay out with it.
struct TextMetrics {
    int32_t ascent = 7;
    int32_t descent = 3;
    int32_t lineHeight = 10;
};

/// How a bitmap is drawn at another size than its own.
enum class Interpolation : int32_t { nearest = 0, linear = 1, best = 2 };

/// 2 pi as the clients of the device write it: a full circle.
constexpr double fullCircle = 6.2831855;

/// A coordinate that stays at the end of its range: sizes and places come from documents.
constexpr int32_t saturated(int64_t place) {
    return static_cast<int32_t>(place < INT32_MIN ? INT32_MIN : place > INT32_MAX ? INT32_MAX : place);
}

} // namespace qorl

#pragma once

#include <qorl/Geometry.h>

#include <algorithm>
#include <cstdint>

namespace qorl {

/// `number` cut to what a screen can ever need: sums of a few such numbers don't overflow. For numbers that
/// come from documents and files.
constexpr int32_t withinReach(int64_t number) {
    constexpr int64_t farthest = 1 << 28;
    return static_cast<int32_t>(std::clamp(number, -farthest, farthest));
}

constexpr CmPoint withinReach(CmPoint point) {
    return {withinReach(point.x), withinReach(point.y)};
}

constexpr CmSize withinReach(CmSize size) {
    return {withinReach(size.width), withinReach(size.height)};
}

} // namespace qorl

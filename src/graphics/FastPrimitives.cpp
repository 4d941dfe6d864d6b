#include "graphics/FastPrimitives.h"

#include <algorithm>

namespace qorl {

namespace {

/// Room that is taken at once; what lies beyond grows as it is filled.
constexpr size_t reserveLimit = 4096;

size_t capacityOf(int32_t wanted) {
    return static_cast<size_t>(std::max(wanted, 0));
}

} // namespace

FastLines::FastLines(int32_t capacity) : capacity_(capacityOf(capacity)) {
    lines_.reserve(std::min(capacity_, reserveLimit));
}

bool FastLines::add(Geometry::Point from, Geometry::Point to) {
    if (lines_.size() >= capacity_)
        return false;
    lines_.push_back({from, to});
    return true;
}

FastRects::FastRects(int32_t capacity) : capacity_(capacityOf(capacity)) {
    rects_.reserve(std::min(capacity_, reserveLimit));
}

bool FastRects::add(const Geometry::Rect& rect) {
    if (rects_.size() >= capacity_)
        return false;
    rects_.push_back(rect);
    return true;
}

} // namespace qorl

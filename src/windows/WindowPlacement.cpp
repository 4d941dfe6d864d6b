#include "windows/WindowPlacement.h"

#include <algorithm>

namespace qorl {

namespace {

int64_t areaOf(const CmRect& rect) {
    return int64_t{rect.width()} * rect.height();
}

int32_t fitted(int32_t start, int32_t extent, int32_t from, int32_t to) {
    return std::max(std::min(start, to - extent), from);
}

} // namespace

CmPoint movedInside(const CmRect& frame, const CmRect& area, int32_t titleHeight) {
    return {fitted(frame.left, frame.width(), area.left, area.right),
            fitted(frame.top, frame.height(), area.top + titleHeight, area.bottom)};
}

CmPoint correctedPosition(const CmRect& frame, std::span<const CmRect> workAreas, int32_t titleHeight) {
    const CmRect* best = nullptr;
    int64_t bestOverlap = -1;
    for (const CmRect& area : workAreas) {
        const CmRect overlap = frame.intersect(area);
        if (overlap.width() >= leastVisibleOfWindow && overlap.height() >= leastVisibleOfWindow)
            return frame.origin();
        if (areaOf(overlap) > bestOverlap) {
            bestOverlap = areaOf(overlap);
            best = &area;
        }
    }
    return best ? movedInside(frame, *best, titleHeight) : frame.origin();
}

} // namespace qorl

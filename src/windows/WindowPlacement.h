#pragma once

#include <qorl/Geometry.h>

#include <span>

namespace qorl {

/// How much of a window must be seen on one monitor, both ways, for its place to stand.
constexpr int32_t leastVisibleOfWindow = 50;

/// Where a window with `frame` (the client on the screen) may stand. The place stands when it overlaps one of
/// `workAreas` enough; else it moves into the one that it overlaps most, the first if none, with the title
/// bar, which is `titleHeight` above the frame, not above the top.
CmPoint correctedPosition(const CmRect& frame, std::span<const CmRect> workAreas, int32_t titleHeight);

/// `frame` moved into `area`; what is larger than it begins at its top left.
CmPoint movedInside(const CmRect& frame, const CmRect& area, int32_t titleHeight);

} // namespace qorl

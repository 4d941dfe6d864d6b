#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/FObject.h"
#include "graphics/DrawTypes.h"

#include <vector>

namespace qorl {

/// Collects lines that a back end draws in one call.
class FastLines : public FObject {
    QORL_CLASS(FastLines, FObject)

public:
    struct Line {
        Geometry::Point from;
        Geometry::Point to;
    };

    explicit FastLines(int32_t capacity);
    /// False when the collector is full.
    bool add(Geometry::Point from, Geometry::Point to);
    const std::vector<Line>& lines() const { return lines_; }

private:
    size_t capacity_;
    std::vector<Line> lines_;
};

/// Collects rectangles that a back end draws in one call.
class FastRects : public FObject {
    QORL_CLASS(FastRects, FObject)

public:
    explicit FastRects(int32_t capacity);
    /// False when the collector is full.
    bool add(const Geometry::Rect& rect);
    const std::vector<Geometry::Rect>& rects() const { return rects_; }

private:
    size_t capacity_;
    std::vector<Geometry::Rect> rects_;
};

} // namespace qorl

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
        DrawPoint from;
        DrawPoint to;
    };

    explicit FastLines(int32_t capacity);
    /// False when the collector is full.
    bool add(DrawPoint from, DrawPoint to);
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
    bool add(const DrawRect& rect);
    const std::vector<DrawRect>& rects() const { return rects_; }

private:
    size_t capacity_;
    std::vector<DrawRect> rects_;
};

} // namespace qorl

#pragma once

#include <qorl/Geometry.h>

#include <span>
#include <vector>

namespace qorl::platform {

/// A set of pixels as a list of rectangles that never overlap.
///
/// The list is in bands: rectangles of one band share `top` and `bottom` and stand from left to right with
/// gaps between them, bands stand from top to bottom, and two touching bands always differ. So one set of
/// pixels has exactly one list, however it was put together, and `==` compares sets. The union of n
/// rectangles that were added one by one costs O(n) each; regions of one rectangle, by far the most, allocate
/// once.
class Region {
public:
    Region() = default;
    Region(const CmRect& rect) { add(rect); }

    bool isEmpty() const { return rects_.empty(); }

    /// The bands' rectangles. Valid until the next change.
    std::span<const CmRect> getRects() const { return rects_; }

    /// The smallest rectangle that holds the region; empty for an empty one.
    CmRect getBounds() const;

    /// The number of pixels.
    int64_t getArea() const;

    bool contains(CmPoint point) const;
    bool contains(const CmRect& rect) const;
    bool intersects(const CmRect& rect) const;

    void clear() { rects_.clear(); }
    void add(const CmRect& rect);
    void add(const Region& other);
    void subtract(const CmRect& rect);
    void subtract(const Region& other);
    void intersect(const CmRect& rect);
    void intersect(const Region& other);
    void move(int32_t dx, int32_t dy);

    /// Makes the list short at the price of pixels: bands are merged from the cheapest pair on until at most
    /// `most` rectangles are left. The result holds the region. For lists that cost more to walk than to
    /// draw.
    void simplify(size_t most);

    /// Every edge times `factor`, rounded outward, so that no pixel of the region is lost.
    Region scaled(double factor) const;

    friend bool operator==(const Region& a, const Region& b) { return a.rects_ == b.rects_; }

private:
    std::vector<CmRect> rects_;
};

/// `rect` times `factor`, edges rounded outward. Edges within a thousandth of a whole number count as whole.
CmRect scaledOutward(const CmRect& rect, double factor);

/// The square of the distance from `point` to the nearest pixel of `rect`; 0 inside.
int64_t squaredDistance(const CmRect& rect, CmPoint point);

} // namespace qorl::platform

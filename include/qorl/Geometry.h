#pragma once

#include <cstdint>

namespace qorl {

/// A place in logical pixels. Which space it is in, the operation that takes it says.
struct CmPoint {
    int32_t x = 0;
    int32_t y = 0;

    constexpr CmPoint moved(int32_t dx, int32_t dy) const { return {x + dx, y + dy}; }

    friend constexpr bool operator==(const CmPoint& a, const CmPoint& b) { return a.x == b.x && a.y == b.y; }
    friend constexpr bool operator!=(const CmPoint& a, const CmPoint& b) { return !(a == b); }
    friend constexpr CmPoint operator+(const CmPoint& a, const CmPoint& b) { return {a.x + b.x, a.y + b.y}; }
    friend constexpr CmPoint operator-(const CmPoint& a, const CmPoint& b) { return {a.x - b.x, a.y - b.y}; }
};

/// An extent in logical pixels.
struct CmSize {
    int32_t width = 0;
    int32_t height = 0;

    constexpr bool isEmpty() const { return width <= 0 || height <= 0; }

    friend constexpr bool operator==(const CmSize& a, const CmSize& b) {
        return a.width == b.width && a.height == b.height;
    }
    friend constexpr bool operator!=(const CmSize& a, const CmSize& b) { return !(a == b); }
};

/// A rectangle in logical pixels; `right` and `bottom` lie outside of it.
struct CmRect {
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;

    static constexpr CmRect ofSize(CmPoint origin, CmSize size) {
        return {origin.x, origin.y, origin.x + size.width, origin.y + size.height};
    }

    constexpr int32_t width() const { return right - left; }
    constexpr int32_t height() const { return bottom - top; }
    constexpr CmPoint origin() const { return {left, top}; }
    constexpr CmSize size() const { return {width(), height()}; }
    constexpr bool isEmpty() const { return right <= left || bottom <= top; }

    constexpr bool contains(CmPoint p) const {
        return p.x >= left && p.x < right && p.y >= top && p.y < bottom;
    }
    constexpr bool contains(const CmRect& r) const {
        return r.left >= left && r.right <= right && r.top >= top && r.bottom <= bottom;
    }
    constexpr bool intersects(const CmRect& r) const {
        return left < r.right && r.left < right && top < r.bottom && r.top < bottom;
    }

    /// What both have in common; an empty rectangle at the origin if nothing.
    constexpr CmRect intersect(const CmRect& r) const {
        const CmRect common{left > r.left ? left : r.left, top > r.top ? top : r.top,
                            right < r.right ? right : r.right, bottom < r.bottom ? bottom : r.bottom};
        return common.isEmpty() ? CmRect{} : common;
    }

    /// The smallest rectangle that holds both; an empty one adds nothing.
    constexpr CmRect unite(const CmRect& r) const {
        if (isEmpty())
            return r;
        if (r.isEmpty())
            return *this;
        return {left < r.left ? left : r.left, top < r.top ? top : r.top, right > r.right ? right : r.right,
                bottom > r.bottom ? bottom : r.bottom};
    }

    constexpr CmRect moved(int32_t dx, int32_t dy) const {
        return {left + dx, top + dy, right + dx, bottom + dy};
    }
    constexpr CmRect moved(CmPoint by) const { return moved(by.x, by.y); }

    /// Grown by `dx` on the left and on the right and by `dy` above and below; negative numbers shrink it.
    constexpr CmRect grown(int32_t dx, int32_t dy) const {
        return {left - dx, top - dy, right + dx, bottom + dy};
    }

    friend constexpr bool operator==(const CmRect& a, const CmRect& b) {
        return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
    }
    friend constexpr bool operator!=(const CmRect& a, const CmRect& b) { return !(a == b); }
};

/// The same in doubles, as layouts and drawing systems work with: logical pixels of which a part counts, too.
namespace Geometry {

struct Point {
    double x = 0;
    double y = 0;

    friend constexpr bool operator==(const Point& a, const Point& b) { return a.x == b.x && a.y == b.y; }
    friend constexpr bool operator!=(const Point& a, const Point& b) { return !(a == b); }
};

struct Size {
    double width = 0;
    double height = 0;

    friend constexpr bool operator==(const Size& a, const Size& b) {
        return a.width == b.width && a.height == b.height;
    }
    friend constexpr bool operator!=(const Size& a, const Size& b) { return !(a == b); }
};

/// A rectangle as place and extent.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    constexpr double right() const { return x + width; }
    constexpr double bottom() const { return y + height; }
    constexpr bool isEmpty() const { return !(width > 0 && height > 0); }

    friend constexpr bool operator==(const Rect& a, const Rect& b) {
        return a.x == b.x && a.y == b.y && a.width == b.width && a.height == b.height;
    }
    friend constexpr bool operator!=(const Rect& a, const Rect& b) { return !(a == b); }
};

} // namespace Geometry

} // namespace qorl

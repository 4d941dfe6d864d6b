#include "graphics/GraphicsPath.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qorl {

void GraphicsPath::moveTo(Geometry::Point point) {
    verbs_.push_back(Verb::move);
    points_.push_back(point);
}

void GraphicsPath::lineTo(Geometry::Point point) {
    if (verbs_.empty()) {
        moveTo(point);
        return;
    }
    verbs_.push_back(Verb::line);
    points_.push_back(point);
}

void GraphicsPath::curveTo(Geometry::Point control1, Geometry::Point control2, Geometry::Point end) {
    if (verbs_.empty())
        moveTo(control1);
    verbs_.push_back(Verb::curve);
    points_.insert(points_.end(), {control1, control2, end});
}

void GraphicsPath::closeFigure() {
    if (!verbs_.empty() && verbs_.back() != Verb::close)
        verbs_.push_back(Verb::close);
}

void GraphicsPath::addRect(const Geometry::Rect& rect) {
    moveTo({rect.x, rect.y});
    lineTo({rect.right(), rect.y});
    lineTo({rect.right(), rect.bottom()});
    lineTo({rect.x, rect.bottom()});
    closeFigure();
}

void GraphicsPath::addRoundRect(const Geometry::Rect& rect, double radius) {
    radius = std::clamp(radius, 0.0, std::max(0.0, std::min(rect.width, rect.height) / 2));
    if (radius == 0) {
        addRect(rect);
        return;
    }
    constexpr double quarter = std::numbers::pi / 2;
    const double left = rect.x + radius;
    const double top = rect.y + radius;
    const double right = rect.right() - radius;
    const double bottom = rect.bottom() - radius;
    moveTo({rect.x, top});
    arcPieces({left, top}, radius, radius, 2 * quarter, quarter);
    lineTo({right, rect.y});
    arcPieces({right, top}, radius, radius, 3 * quarter, quarter);
    lineTo({rect.right(), bottom});
    arcPieces({right, bottom}, radius, radius, 0, quarter);
    lineTo({left, rect.bottom()});
    arcPieces({left, bottom}, radius, radius, quarter, quarter);
    closeFigure();
}

void GraphicsPath::addEllipse(const Geometry::Rect& rect) {
    const Geometry::Point center{rect.x + rect.width / 2, rect.y + rect.height / 2};
    moveTo({rect.right(), center.y});
    arcPieces(center, rect.width / 2, rect.height / 2, 0, 2 * std::numbers::pi);
    closeFigure();
}

void GraphicsPath::addArc(const Geometry::Rect& rect, double start, double sweep) {
    const Geometry::Point center{rect.x + rect.width / 2, rect.y + rect.height / 2};
    const double radiusX = rect.width / 2;
    const double radiusY = rect.height / 2;
    const Geometry::Point first{center.x + radiusX * std::cos(start), center.y + radiusY * std::sin(start)};
    if (verbs_.empty() || verbs_.back() == Verb::close)
        moveTo(first);
    else
        lineTo(first);
    arcPieces(center, radiusX, radiusY, start, sweep);
}

/// Pieces of at most a quarter, each a Bézier curve whose control points stand at 4/3 tan(angle / 4) of the
/// radius: off the true arc by less than 0.03 % of the radius.
void GraphicsPath::arcPieces(Geometry::Point center, double radiusX, double radiusY, double start,
                             double sweep) {
    constexpr double quarter = std::numbers::pi / 2;
    constexpr double mostTurns = 1000;
    if (!std::isfinite(start) || !std::isfinite(sweep))
        return;
    sweep = std::clamp(sweep, -mostTurns * 4 * quarter, mostTurns * 4 * quarter);
    const int pieces = std::max(1, static_cast<int>(std::ceil(std::abs(sweep) / quarter - 1e-9)));
    const double step = sweep / pieces;
    const double reach = 4.0 / 3.0 * std::tan(step / 4);
    for (int i = 0; i < pieces; ++i) {
        const double a = start + i * step;
        const double b = a + step;
        const double cosA = std::cos(a);
        const double sinA = std::sin(a);
        const double cosB = std::cos(b);
        const double sinB = std::sin(b);
        curveTo({center.x + radiusX * (cosA - reach * sinA), center.y + radiusY * (sinA + reach * cosA)},
                {center.x + radiusX * (cosB + reach * sinB), center.y + radiusY * (sinB - reach * cosB)},
                {center.x + radiusX * cosB, center.y + radiusY * sinB});
    }
}

void GraphicsPath::addPolyline(const Geometry::Point* points, size_t count) {
    if (count < 2)
        return;
    moveTo(points[0]);
    for (size_t i = 1; i < count; ++i)
        lineTo(points[i]);
}

void GraphicsPath::addPolygon(const Geometry::Point* points, size_t count) {
    addPolyline(points, count);
    if (count >= 2)
        closeFigure();
}

void GraphicsPath::clear() {
    verbs_.clear();
    points_.clear();
}

Geometry::Rect GraphicsPath::getBounds() const {
    if (points_.empty())
        return {};
    Geometry::Point low = points_.front();
    Geometry::Point high = low;
    for (const Geometry::Point& p : points_) {
        low = {std::min(low.x, p.x), std::min(low.y, p.y)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y)};
    }
    return {low.x, low.y, high.x - low.x, high.y - low.y};
}

} // namespace qorl

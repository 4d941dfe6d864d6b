#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/FObject.h"
#include "graphics/DrawTypes.h"

#include <vector>

namespace qorl {

/// A shape of figures, each a start point and pieces of line and curve. Angles in radians, clockwise on the
/// screen from the positive x axis.
class GraphicsPath : public FObject {
    QORL_CLASS(GraphicsPath, FObject)

public:
    enum class Verb : uint8_t { move, line, curve, close };

    void moveTo(Geometry::Point point);
    void lineTo(Geometry::Point point);
    /// A cubic Bézier curve. A path that has no point yet starts at `control1`.
    void curveTo(Geometry::Point control1, Geometry::Point control2, Geometry::Point end);
    void closeFigure();

    void addRect(const Geometry::Rect& rect);
    /// The radius is cut to half the shorter side.
    void addRoundRect(const Geometry::Rect& rect, double radius);
    void addEllipse(const Geometry::Rect& rect);
    /// Part of the ellipse in `rect`: joined to the current point by a line when there is one.
    void addArc(const Geometry::Rect& rect, double start, double sweep);
    /// Figures of straight lines; fewer than two points add nothing.
    void addPolyline(const Geometry::Point* points, size_t count);
    void addPolygon(const Geometry::Point* points, size_t count);

    void clear();
    bool isEmpty() const { return verbs_.empty(); }
    /// The box of all points, control points included; empty for an empty path.
    Geometry::Rect getBounds() const;

    /// The pieces in order; `points` holds one place for move and line, three for a curve, none for close.
    const std::vector<Verb>& verbs() const { return verbs_; }
    const std::vector<Geometry::Point>& points() const { return points_; }

private:
    void arcPieces(Geometry::Point center, double radiusX, double radiusY, double start, double sweep);

    std::vector<Verb> verbs_;
    std::vector<Geometry::Point> points_;
};

} // namespace qorl

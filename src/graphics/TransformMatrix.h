#pragma once

#include "foundation/CmObject.h"
#include "graphics/DrawTypes.h"

namespace qorl {

/// An affine map: x' = m11 x + m21 y + dx, y' = m12 x + m22 y + dy. The identity at the start.
struct TransformMatrix {
    double m11 = 1;
    double m12 = 0;
    double m21 = 0;
    double m22 = 1;
    double dx = 0;
    double dy = 0;

    static TransformMatrix translation(double dx, double dy) { return {1, 0, 0, 1, dx, dy}; }
    static TransformMatrix scaling(double x, double y) { return {x, 0, 0, y, 0, 0}; }
    /// Clockwise on the screen, in radians, about a point.
    static TransformMatrix rotation(double angle, Geometry::Point center = {});

    /// The map that does `first`, then this.
    TransformMatrix after(const TransformMatrix& first) const;
    constexpr Geometry::Point map(Geometry::Point p) const {
        return {m11 * p.x + m21 * p.y + dx, m12 * p.x + m22 * p.y + dy};
    }

    /// Whether rectangles stay upright rectangles.
    constexpr bool isUpright() const { return m12 == 0 && m21 == 0; }
    constexpr bool isIdentity() const { return *this == TransformMatrix{}; }
    constexpr double determinant() const { return m11 * m22 - m12 * m21; }
    /// False, and `out` untouched, for a map that flattens the plane.
    bool invert(TransformMatrix& out) const;

    friend constexpr bool operator==(const TransformMatrix&, const TransformMatrix&) = default;
};

/// A matrix where a counted object is needed.
class TransformMatrixObject : public CmObject {
    QORL_CLASS(TransformMatrixObject, CmObject)
    QORL_CLONE(TransformMatrixObject)

public:
    TransformMatrixObject() = default;
    explicit TransformMatrixObject(const TransformMatrix& matrix) : matrix_(matrix) {}

    const TransformMatrix& getMatrix() const { return matrix_; }
    void setMatrix(const TransformMatrix& matrix) { matrix_ = matrix; }

    bool isEqual(const CmObject* other) const override;

private:
    TransformMatrix matrix_;
};

} // namespace qorl

#include "graphics/TransformMatrix.h"

#include "foundation/Cast.h"

#include <cmath>

namespace qorl {

TransformMatrix TransformMatrix::rotation(double angle, Geometry::Point center) {
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    return {c, s, -s, c, center.x - c * center.x + s * center.y, center.y - s * center.x - c * center.y};
}

TransformMatrix TransformMatrix::after(const TransformMatrix& first) const {
    return {m11 * first.m11 + m21 * first.m12,    m12 * first.m11 + m22 * first.m12,
            m11 * first.m21 + m21 * first.m22,    m12 * first.m21 + m22 * first.m22,
            m11 * first.dx + m21 * first.dy + dx, m12 * first.dx + m22 * first.dy + dy};
}

bool TransformMatrix::invert(TransformMatrix& out) const {
    const double d = determinant();
    if (!std::isnormal(d))
        return false;
    out = {m22 / d, -m12 / d, -m21 / d, m11 / d, (m21 * dy - m22 * dx) / d, (m12 * dx - m11 * dy) / d};
    return true;
}

bool TransformMatrixObject::isEqual(const CmObject* other) const {
    const auto* object = cast<TransformMatrixObject>(other);
    return object && matrix_ == object->matrix_;
}

} // namespace qorl

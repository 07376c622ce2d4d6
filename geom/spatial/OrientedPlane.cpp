#include "geom/spatial/OrientedPlane.h"

#include "geom/spatial/detail/OrientedEdge.h"

namespace koGeom {

OrientedPlane::OrientedPlane(const koLinear::Point& origin, const koLinear::Normal& normal,
                             const koLinear::Normal& axisU, const koLinear::Normal& axisV,
                             double lengthU, double lengthV) noexcept {
    set(origin, normal, axisU, axisV, lengthU, lengthV);
}

void OrientedPlane::set(const koLinear::Point& origin, const koLinear::Normal& normal,
                        const koLinear::Normal& axisU, const koLinear::Normal& axisV,
                        double lengthU, double lengthV) noexcept {
    origin_ = origin;
    normal_ = normal;
    axisU_ = axisU;
    axisV_ = axisV;
    lengthU_ = lengthU;
    lengthV_ = lengthV;
}

koLinear::Point OrientedPlane::eval(double a, double b) const noexcept {
    return origin_ + axisU_ * (a * lengthU_) + axisV_ * (b * lengthV_);
}

void OrientedPlane::makeAtLeast(double s) noexcept {
    detail::growEdgeTo(origin_, axisU_, lengthU_, s);
    detail::growEdgeTo(origin_, axisV_, lengthV_, s);
}

void OrientedPlane::transform(const koLinear::AffineMatrix& m) noexcept {
    origin_ = origin_ * m;
    detail::transformEdge(axisU_, lengthU_, m);
    detail::transformEdge(axisV_, lengthV_, m);
    koLinear::AffineMatrix normalTransform;
    if (m.normalMatrix(normalTransform)) {
        normal_ = koLinear::Normal(normal_ * normalTransform);
    }
}

koLinear::ParamPlane OrientedPlane::asParamPlane() const noexcept {
    return {origin_, normal_, axisU_ * lengthU_, axisV_ * lengthV_};
}

koLinear::ParamPlane OrientedPlane::asParamPlane(double minSize) const noexcept {
    OrientedPlane grown = *this;
    grown.makeAtLeast(minSize);
    return grown.asParamPlane();
}

} // namespace koGeom

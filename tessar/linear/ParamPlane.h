#pragma once

#include "tessar/linear/AffineMatrix.h"
#include "tessar/linear/Normal.h"
#include "tessar/linear/Plane.h"
#include "tessar/linear/Point.h"
#include "tessar/linear/Vector.h"

namespace koLinear {

/// A parametric plane: an origin, a unit normal and two edge vectors. The point at
/// parameters (u, v) is origin + u · uEdge + v · vEdge, so (0, 0) to (1, 1) span the
/// parallelogram on the two edges. The normal is kept with the plane rather than derived
/// from the edges, so it may face either way.
class ParamPlane {
public:
    Point origin;
    Normal normal = Normal::unitZ();
    Vector uEdge{1.0, 0.0, 0.0};
    Vector vEdge{0.0, 1.0, 0.0};

    /// The unit square in the plane z = 0, normal +z.
    constexpr ParamPlane() noexcept = default;
    /// All four parts as given.
    constexpr ParamPlane(const Point& origin, const Normal& normal, const Vector& uEdge,
                         const Vector& vEdge) noexcept
        : origin(origin), normal(normal), uEdge(uEdge), vEdge(vEdge) {}
    /// The normal made from the edges: uEdge × vEdge, normalised (zero for parallel edges).
    ParamPlane(const Point& origin, const Vector& uEdge, const Vector& vEdge) noexcept
        : origin(origin), normal(cross(uEdge, vEdge)), uEdge(uEdge), vEdge(vEdge) {}

    /// The point at parameters (u, v).
    constexpr Point eval(double u, double v) const noexcept {
        return origin + uEdge * u + vEdge * v;
    }

    /// Sets (u, v) to the parameters of the point of the plane nearest to `p` and returns
    /// true; returns false and leaves them unchanged when the edges are parallel within
    /// `parallelTol`.
    constexpr bool projectParam(const Point& p, double& u, double& v) const noexcept {
        if (isParallel(uEdge, vEdge, parallelTol)) {
            return false;
        }
        // Least squares on the two edges: solve the 2×2 Gram system by Cramer's rule.
        const Vector d = p - origin;
        const double uu = uEdge.length2(), uv = dot(uEdge, vEdge), vv = vEdge.length2();
        const double du = dot(d, uEdge), dv = dot(d, vEdge);
        const double det = uu * vv - uv * uv;
        u = (du * vv - dv * uv) / det;
        v = (dv * uu - du * uv) / det;
        return true;
    }

    /// The infinite plane through the origin with the same normal.
    constexpr Plane asPlane() const noexcept { return {origin, normal}; }

    /// Transforms the plane by `m`: origin as a point, edges as vectors (a parameter pair
    /// names the same point before and after), the normal through `m`'s normal matrix and
    /// renormalised. When `m` is singular the normal is kept as it was and false is returned;
    /// the rest is transformed all the same.
    bool transform(const AffineMatrix& m) noexcept {
        origin = origin * m;
        uEdge = uEdge * m;
        vEdge = vEdge * m;
        AffineMatrix normalTransform;
        if (!m.normalMatrix(normalTransform)) {
            return false;
        }
        normal = Normal(normal * normalTransform);
        return true;
    }

    constexpr bool operator==(const ParamPlane&) const noexcept = default;
};

/// The plane transformed as by `ParamPlane::transform` (the normal kept for a singular `m`).
inline ParamPlane operator*(ParamPlane plane, const AffineMatrix& m) noexcept {
    plane.transform(m);
    return plane;
}

} // namespace koLinear

#pragma once

#include "tessar/linear/AffineMatrix.h"
#include "tessar/linear/Normal.h"
#include "tessar/linear/ParamPlane.h"
#include "tessar/linear/Point.h"

#include "geom/FormworkExport.h"

namespace koGeom {

/// A bounded rectangle in space with a normal, as a plain value in double precision: the
/// points origin + a · lengthU · axisU + b · lengthV · axisV for a, b in [0, 1]. The origin is
/// a corner; axisU and axisV are unit edge directions; the normal is kept beside them and is
/// not derived from them, so it may face either way.
///
/// A default-made plane is the empty rectangle at the origin: axes x and y, normal z, both
/// lengths 0.
class FORMWORK_EXPORT OrientedPlane {
public:
    OrientedPlane() noexcept = default;
    /// All parts as given; the directions are expected to be unit length.
    OrientedPlane(const koLinear::Point& origin, const koLinear::Normal& normal,
                  const koLinear::Normal& axisU, const koLinear::Normal& axisV, double lengthU,
                  double lengthV) noexcept;

    /// \name Parts
    /// @{
    void set(const koLinear::Point& origin, const koLinear::Normal& normal,
             const koLinear::Normal& axisU, const koLinear::Normal& axisV, double lengthU,
             double lengthV) noexcept;
    const koLinear::Point& origin() const noexcept { return origin_; }
    const koLinear::Normal& normal() const noexcept { return normal_; }
    const koLinear::Normal& axisU() const noexcept { return axisU_; }
    const koLinear::Normal& axisV() const noexcept { return axisV_; }
    double lengthU() const noexcept { return lengthU_; }
    double lengthV() const noexcept { return lengthV_; }
    /// The point at rectangle parameters (a, b): origin + axisU · (a · lengthU) +
    /// axisV · (b · lengthV).
    koLinear::Point eval(double a, double b) const noexcept;
    /// @}

    /// \name Changing
    /// @{

    /// Grows each side shorter than `s` to exactly `s`, keeping that side's middle where it
    /// was (the origin moves back by half the growth); longer sides are untouched.
    void makeAtLeast(double s) noexcept;

    /// Moves the rectangle by `m`: the origin as a point; each edge (axis · length) as a
    /// vector, whose length becomes the new length and whose direction the new axis. The
    /// normal goes through `m`'s normal matrix and is renormalised; when `m` is singular the
    /// normal is kept as it was.
    void transform(const koLinear::AffineMatrix& m) noexcept;
    /// @}

    /// \name As a parametric plane
    /// @{

    /// The origin, the normal and the two edge vectors axisU · lengthU and axisV · lengthV.
    koLinear::ParamPlane asParamPlane() const noexcept;
    /// As above, for a copy first grown with `makeAtLeast(minSize)`; this plane is unchanged.
    koLinear::ParamPlane asParamPlane(double minSize) const noexcept;
    /// @}

private:
    koLinear::Point origin_;
    koLinear::Normal normal_ = koLinear::Normal::unitZ();
    koLinear::Normal axisU_ = koLinear::Normal::unitX();
    koLinear::Normal axisV_ = koLinear::Normal::unitY();
    double lengthU_ = 0.0;
    double lengthV_ = 0.0;
};

} // namespace koGeom

#pragma once

#include "tessar/linear/Point.h"

namespace koGeom {

/// A sphere as a plain value in double precision: a centre and a radius. Nothing is
/// enforced; a negative radius is kept as given.
class Sphere {
public:
    constexpr Sphere(const koLinear::Point& centre, double radius) noexcept
        : centre_(centre), radius_(radius) {}

    /// The centre.
    constexpr const koLinear::Point& getPoint() const noexcept { return centre_; }
    constexpr double getRadius() const noexcept { return radius_; }
    constexpr void setPoint(const koLinear::Point& centre) noexcept { centre_ = centre; }
    constexpr void setRadius(double radius) noexcept { radius_ = radius; }

private:
    koLinear::Point centre_;
    double radius_;
};

} // namespace koGeom

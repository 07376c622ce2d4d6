#include "geom/spatial/OrientedBox.h"

#include <cmath>

#include "tessar/linear/Line.h"
#include "tessar/linear/Tolerance.h"

#include "geom/spatial/detail/OrientedEdge.h"

namespace koGeom {

OrientedBox::OrientedBox(const koLinear::Point& origin, const koLinear::Vector& a,
                         const koLinear::Vector& b, const koLinear::Vector& c) noexcept {
    set(origin, a, b, c);
}

OrientedBox::OrientedBox(const koLinear::Range3d& r) noexcept {
    const koLinear::Vector size = r.size();
    set(r.min, koLinear::Normal::unitX(), koLinear::Normal::unitY(), koLinear::Normal::unitZ(),
        size.x, size.y, size.z);
}

OrientedBox::OrientedBox(const koLinear::ParamPlane& p) noexcept { set(p); }

void OrientedBox::set(const koLinear::Point& origin, const koLinear::Vector& a,
                      const koLinear::Vector& b, const koLinear::Vector& c) noexcept {
    set(origin, koLinear::Normal(a), koLinear::Normal(b), koLinear::Normal(c), a.length(),
        b.length(), c.length());
}

void OrientedBox::set(const koLinear::Point& origin, const koLinear::Normal& axis0,
                      const koLinear::Normal& axis1, const koLinear::Normal& axis2, double length0,
                      double length1, double length2) noexcept {
    origin_ = origin;
    axis_[0] = axis0;
    axis_[1] = axis1;
    axis_[2] = axis2;
    length_[0] = length0;
    length_[1] = length1;
    length_[2] = length2;
}

void OrientedBox::set(const koLinear::ParamPlane& p) noexcept {
    set(p.origin, p.normal, koLinear::Normal(p.uEdge), koLinear::Normal(p.vEdge), 0.0,
        p.uEdge.length(), p.vEdge.length());
}

void OrientedBox::set(const koLinear::Point& p) noexcept {
    set(p, koLinear::Normal::unitX(), koLinear::Normal::unitY(), koLinear::Normal::unitZ(), 0.0,
        0.0, 0.0);
}

koLinear::Point OrientedBox::eval(double a, double b, double c) const noexcept {
    return origin_ + axis_[0] * (a * length_[0]) + axis_[1] * (b * length_[1]) +
           axis_[2] * (c * length_[2]);
}

koLinear::AffineMatrix OrientedBox::frame() const noexcept {
    koLinear::AffineMatrix m(1.0);
    m.setFrame(origin_, axis_[1], axis_[2], axis_[0]);
    return m;
}

koLinear::Range3d OrientedBox::axisAlignedExtent() const noexcept {
    koLinear::Range3d range(origin_, origin_);
    // Deliberate: only the origin corner and its three neighbours are taken; callers use it
    // on the flat boxes that plane intersections produce, and keep the smaller range.
    for (int i = 0; i < 3; ++i) {
        range.extend(origin_ + axis_[i] * length_[i]);
    }
    return range;
}

void OrientedBox::enlarge(double d) noexcept {
    for (double& length : length_) {
        length += d;
    }
    origin_ -= (axis_[0] + axis_[1] + axis_[2]) * (d / 2.0);
}

void OrientedBox::makeAtLeast(double s) noexcept {
    for (int i = 0; i < 3; ++i) {
        detail::growEdgeTo(origin_, axis_[i], length_[i], s);
    }
}

void OrientedBox::transform(const koLinear::AffineMatrix& m) noexcept {
    origin_ = origin_ * m;
    for (int i = 0; i < 3; ++i) {
        detail::transformEdge(axis_[i], length_[i], m);
    }
}

OrientedPlane OrientedBox::midPlane(int n, int u, int v) const noexcept {
    return {origin_ + axis_[n] * (length_[n] / 2.0),
            axis_[n],
            axis_[u],
            axis_[v],
            length_[u],
            length_[v]};
}

OrientedPlane OrientedBox::dominantMidPlane(const koLinear::Vector& d) const noexcept {
    const koLinear::Vector unit = d.normalized();
    const double a0 = std::fabs(dot(unit, axis_[0]));
    const double a1 = std::fabs(dot(unit, axis_[1]));
    const double a2 = std::fabs(dot(unit, axis_[2]));
    if (a1 >= a0) {
        return a2 > a1 ? midPlane(2, 0, 1) : midPlane(1, 0, 2);
    }
    return a0 > a2 ? midPlane(0, 2, 1) : midPlane(2, 0, 1);
}

OrientedPlane OrientedBox::uvMidplane() const noexcept { return midPlane(0, 2, 1); }

OrientedBox intersect(const koLinear::Range3d& r, const koLinear::Plane& p) {
    // The in-plane reference line: along x through p's point when p is horizontal, otherwise
    // where p crosses the plane z = 0.
    koLinear::Line line(p.origin, koLinear::Normal::unitX());
    if (!koLinear::isParallel(p.normal, koLinear::Normal::unitZ(), koLinear::parallelTol)) {
        koLinear::intersect(p, koLinear::Plane({}, koLinear::Normal::unitZ()), line);
    }
    const koLinear::Normal u(koLinear::Vector(line.direction));
    const koLinear::Normal v(cross(line.direction, p.normal));
    const koLinear::Normal w(koLinear::Vector(p.normal));
    const koLinear::Range1d uSpan = koLinear::projectParam(r, koLinear::Line({}, u));
    const koLinear::Range1d vSpan = koLinear::projectParam(r, koLinear::Line({}, v));
    const double t = koLinear::projectParam(p.origin, koLinear::Line({}, w));
    OrientedBox box;
    box.set(koLinear::Point(u * uSpan.min + v * vSpan.min + w * t), u, v, w, uSpan.size(),
            vSpan.size(), 0.0);
    return box;
}

} // namespace koGeom

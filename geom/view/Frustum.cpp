#include "geom/view/Frustum.h"

#include <algorithm>
#include <utility>

namespace koGeom {

Frustum::Frustum(double left, double right, double bottom, double top, double near, double far,
                 bool perspective)
    : planes_(std::make_unique<koLinear::Plane[]>(6)) {
    if (perspective) {
        setPersp(left, right, bottom, top, near, far);
    } else {
        setOrtho(left, right, bottom, top, near, far);
    }
    computePlanes();
}

Frustum::Frustum(const koLinear::Point& near0, const koLinear::Point& far0,
                 const koLinear::Point& near1, const koLinear::Point& far1,
                 const koLinear::Point& near2, const koLinear::Point& far2,
                 const koLinear::Point& near3, const koLinear::Point& far3)
    : planes_(std::make_unique<koLinear::Plane[]>(6)) {
    const koLinear::Point* given[8] = {&near0, &far0, &near1, &far1, &near2, &far2, &near3, &far3};
    for (int edge = 0; edge < 4; ++edge) {
        setCorner(edge, *given[2 * edge]);
        setCorner(edge + 4, *given[2 * edge + 1]);
    }
    computePlanes();
}

Frustum::Frustum(const Frustum& other) : planes_(std::make_unique<koLinear::Plane[]>(6)) {
    std::copy(other.points_, other.points_ + 24, points_);
    std::copy(other.planes_.get(), other.planes_.get() + 6, planes_.get());
}

Frustum& Frustum::operator=(const Frustum& other) {
    Frustum copy(other);
    swap(copy);
    return *this;
}

Frustum::~Frustum() = default;

void Frustum::swap(Frustum& other) noexcept {
    std::swap(points_, other.points_);
    planes_.swap(other.planes_);
}

koLinear::Line Frustum::getRay() const noexcept {
    return {getNearCenter(), koLinear::Normal(getVector())};
}

void Frustum::transform(const koLinear::AffineMatrix& m) noexcept {
    for (int k = 0; k < 8; ++k) {
        setCorner(k, corner(k) * m);
    }
    if (m.determinant() < 0.0) {
        // A mirror turns the corner order round; exchanging the corners across each edge
        // restores it, and with it the outward planes.
        swapCorners(0, 3);
        swapCorners(1, 2);
        swapCorners(4, 7);
        swapCorners(5, 6);
    }
    computePlanes();
}

void Frustum::setNearCorners(double left, double right, double bottom, double top,
                             double near) noexcept {
    setCorner(0, {right, top, -near});
    setCorner(1, {left, top, -near});
    setCorner(2, {left, bottom, -near});
    setCorner(3, {right, bottom, -near});
}

void Frustum::setPersp(double left, double right, double bottom, double top, double near,
                       double far) noexcept {
    setNearCorners(left, right, bottom, top, near);
    const double scale = far / near;
    for (int k = 0; k < 4; ++k) {
        const koLinear::Point p = corner(k);
        setCorner(k + 4, {p.x * scale, p.y * scale, p.z * scale});
    }
}

void Frustum::setOrtho(double left, double right, double bottom, double top, double near,
                       double far) noexcept {
    setNearCorners(left, right, bottom, top, near);
    for (int k = 0; k < 4; ++k) {
        const koLinear::Point p = corner(k);
        setCorner(k + 4, {p.x, p.y, -far});
    }
}

void Frustum::setCorner(int k, const koLinear::Point& p) noexcept {
    points_[3 * k] = p.x;
    points_[3 * k + 1] = p.y;
    points_[3 * k + 2] = p.z;
}

void Frustum::swapCorners(int a, int b) noexcept {
    const koLinear::Point p = corner(a);
    setCorner(a, corner(b));
    setCorner(b, p);
}

koLinear::Point Frustum::centre(int first) const noexcept {
    koLinear::Vector sum;
    for (int k = first; k < first + 4; ++k) {
        sum += koLinear::Vector(corner(k));
    }
    return koLinear::Point(sum * 0.25);
}

void Frustum::computePlanes() noexcept {
    for (int s = 0; s < 4; ++s) {
        computePlane(s, s + 4, (s + 1) % 4, planes_[s]);
    }
    computePlane(1, 2, 0, planes_[4]);
    computePlane(5, 4, 6, planes_[5]);
}

void Frustum::computePlane(int a, int b, int c, koLinear::Plane& out) const noexcept {
    out = koLinear::Plane(corner(a), corner(b), corner(c));
}

} // namespace koGeom

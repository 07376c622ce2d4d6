#include "geom/curve/Polyline.h"

#include <algorithm>

#include "geom/curve/detail/PolylineMath.h"

namespace koGeom {

using koLinear::Point;

Polyline::Polyline() noexcept = default;

Polyline::Polyline(const ko::vector<Point>& points, const ko::vector<double>& params) {
    initialize(points, params);
}

Polyline::Polyline(int n, const Point* points, const double* params) {
    initialize(n, points, params);
}

Polyline::Polyline(int n, const vertex* vertices) { initialize(n, vertices); }

Polyline::Polyline(const Polyline& other)
    : ReferenceCount(other), box_(other.box_), vertices_(other.vertices_), closed_(other.closed_) {}

Polyline& Polyline::operator=(const Polyline& other) {
    if (this != &other) {
        Polyline copy(other);
        swap(copy);
    }
    return *this;
}

Polyline::~Polyline() = default;

void Polyline::swap(Polyline& other) noexcept {
    std::swap(box_, other.box_);
    vertices_.swap(other.vertices_);
    std::swap(closed_, other.closed_);
}

void Polyline::initialize(const ko::vector<Point>& points, const ko::vector<double>& params) {
    const std::size_t n = std::min(points.size(), params.size());
    initialize(static_cast<int>(n), points.data(), params.data());
}

void Polyline::initialize(int n, const Point* points, const double* params) {
    detail::assignVertices(vertices_, n, points, params);
    modified();
}

void Polyline::initialize(int n, const vertex* vertices) {
    ko::vector<vertex>(vertices, vertices + std::max(n, 0)).swap(vertices_);
    modified();
}

void Polyline::initializeArcLength(int n, const Point* points) {
    detail::assignArcLength(vertices_, n, points);
    modified();
}

void Polyline::initializeUniform(int n, const Point* points) {
    detail::assignUniform(vertices_, n, points);
    modified();
}

koLinear::Range1d Polyline::getDomain() const noexcept { return detail::getDomain(vertices_); }

Point Polyline::eval(double t) const noexcept { return detail::eval(vertices_, t); }

int Polyline::findSpan(double t) const noexcept { return detail::findSpan(vertices_, t); }

void Polyline::getInterpolants(double t, int& span, double& w0, double& w1) const noexcept {
    detail::getInterpolants(vertices_, t, span, w0, w1);
}

double Polyline::getLength() const noexcept { return getLength(0, getNumVertices() - 1); }

double Polyline::getLength(int first, int last) const noexcept {
    return detail::lengthBetweenVertices(vertices_, first, last);
}

double Polyline::getLength(double a, double b) const noexcept {
    return detail::lengthBetweenParams(vertices_, a, b);
}

const koLinear::Range3d& Polyline::getBoundingBox() const noexcept {
    update();
    return box_;
}

bool Polyline::getClosed() const noexcept {
    update();
    return closed_;
}

void Polyline::modified() noexcept { box_.setUnbounded(); }

void Polyline::update() const noexcept {
    if (!box_.isEmpty()) {
        return;
    }
    detail::refreshBox(vertices_, box_);
    // Deliberate: the closed flag is refreshed only together with the box, so it answers for
    // the vertices as they were at the last modified(); callers that edit vertices in place
    // announce the edit with modified() before asking.
    closed_ = detail::endsMeet(vertices_);
}

} // namespace koGeom

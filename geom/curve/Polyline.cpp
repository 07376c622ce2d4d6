#include "geom/curve/Polyline.h"

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

Polyline::Polyline(const Polyline& other) = default;

Polyline& Polyline::operator=(const Polyline& other) {
    if (this != &other) {
        Polyline copy(other);
        swap(copy);
    }
    return *this;
}

Polyline::~Polyline() = default;

void Polyline::swap(Polyline& other) noexcept { swapBase(other); }

void Polyline::modified() noexcept { box_.setUnbounded(); }

void Polyline::update() const noexcept {
    if (!box_.isEmpty()) {
        return;
    }
    refreshBox();
    // Deliberate: the closed flag is refreshed only together with the box, so it answers for
    // the vertices as they were at the last modified(); callers that edit vertices in place
    // announce the edit with modified() before asking.
    closed_ = endsMeet();
}

} // namespace koGeom

#include "geom/curve/Polyline2d.h"

#include <algorithm>
#include <cmath>

#include "geom/curve/detail/PolylineMath.h"

namespace koGeom {

using koLinear::Point2;

namespace {

// True when the three points lie within `epsilonTol` of one line: the triangle's smallest
// height, its doubled area over its longest side, is below the tolerance, or all three
// points are that close together.
bool collinear(const Point2& a, const Point2& b, const Point2& c) noexcept {
    const double longest2 = std::max({distance2(a, b), distance2(b, c), distance2(c, a)});
    if (longest2 < koLinear::epsilon2Tol) {
        return true;
    }
    const double doubledArea = std::fabs(cross(b - a, c - a));
    return doubledArea < koLinear::epsilonTol * std::sqrt(longest2);
}

} // namespace

Polyline2d::Polyline2d() noexcept = default;

Polyline2d::Polyline2d(const ko::vector<Point2>& points, const ko::vector<double>& params) {
    initialize(points, params);
}

Polyline2d::Polyline2d(int n, const Point2* points, const double* params) {
    initialize(n, points, params);
}

Polyline2d::Polyline2d(int n, const vertex2d* vertices) { initialize(n, vertices); }

Polyline2d::Polyline2d(const Polyline2d& other)
    : ReferenceCount(other),
      box_(other.box_),
      vertices_(other.vertices_),
      closed_(other.closed_),
      order_(other.order_) {}

Polyline2d& Polyline2d::operator=(const Polyline2d& other) {
    if (this != &other) {
        Polyline2d copy(other);
        swap(copy);
    }
    return *this;
}

Polyline2d::~Polyline2d() = default;

void Polyline2d::swap(Polyline2d& other) noexcept {
    std::swap(box_, other.box_);
    vertices_.swap(other.vertices_);
    std::swap(closed_, other.closed_);
    std::swap(order_, other.order_);
}

void Polyline2d::initialize(const ko::vector<Point2>& points, const ko::vector<double>& params) {
    const std::size_t n = std::min(points.size(), params.size());
    initialize(static_cast<int>(n), points.data(), params.data());
}

void Polyline2d::initialize(int n, const Point2* points, const double* params) {
    detail::assignVertices(vertices_, n, points, params);
    modified();
}

void Polyline2d::initialize(int n, const vertex2d* vertices) {
    ko::vector<vertex2d>(vertices, vertices + std::max(n, 0)).swap(vertices_);
    modified();
}

void Polyline2d::initializeArcLength(int n, const Point2* points) {
    detail::assignArcLength(vertices_, n, points);
    modified();
}

void Polyline2d::initializeUniform(int n, const Point2* points) {
    detail::assignUniform(vertices_, n, points);
    modified();
}

koLinear::Range1d Polyline2d::getDomain() const noexcept { return detail::getDomain(vertices_); }

Point2 Polyline2d::eval(double t) const noexcept { return detail::eval(vertices_, t); }

int Polyline2d::findSpan(double t) const noexcept { return detail::findSpan(vertices_, t); }

void Polyline2d::getInterpolants(double t, int& span, double& w0, double& w1) const noexcept {
    detail::getInterpolants(vertices_, t, span, w0, w1);
}

double Polyline2d::getLength() const noexcept { return getLength(0, getNumVertices() - 1); }

double Polyline2d::getLength(int first, int last) const noexcept {
    return detail::lengthBetweenVertices(vertices_, first, last);
}

double Polyline2d::getLength(double a, double b) const noexcept {
    return detail::lengthBetweenParams(vertices_, a, b);
}

const koLinear::Range2d& Polyline2d::getBoundingBox() const noexcept {
    update();
    return box_;
}

bool Polyline2d::getClosed() const noexcept {
    update();
    return closed_;
}

void Polyline2d::modified() noexcept {
    box_.setUnbounded();
    order_ = Order::Unknown;
}

void Polyline2d::appendVertex(const Point2& p) {
    double param = 0.0;
    if (!vertices_.empty()) {
        param = vertices_.back().param + 1.0;
        if (equivalent(p, vertices_.back().point, koLinear::epsilonTol)) {
            return;
        }
        // Deliberate: vertex 0 is left out of the repeat test, so that appending the first
        // point again closes the outline.
        for (std::size_t i = 1; i < vertices_.size(); ++i) {
            if (equivalent(p, vertices_[i].point, koLinear::epsilonTol)) {
                return;
            }
        }
    }
    vertices_.push_back(vertex2d{p, param});
    modified();
}

void Polyline2d::makeUniform() noexcept {
    for (std::size_t i = 0; i < vertices_.size(); ++i) {
        vertices_[i].param = static_cast<double>(i);
    }
}

void Polyline2d::update() const noexcept {
    detail::refreshBox(vertices_, box_);
    if (order_ == Order::Unknown) {
        computeOrder();
    }
    closed_ = vertices_.size() >= 3 && detail::endsMeet(vertices_);
}

void Polyline2d::computeOrder() const noexcept {
    for (std::size_t i = 1; i + 1 < vertices_.size(); ++i) {
        const Point2& before = vertices_[i - 1].point;
        const Point2& corner = vertices_[i].point;
        const Point2& after = vertices_[i + 1].point;
        if (collinear(before, corner, after)) {
            continue;
        }
        const Order turn = cross(corner - before, after - corner) > 0.0 ? Order::CounterClockwise
                                                                        : Order::Clockwise;
        if (order_ == Order::Unknown) {
            order_ = turn;
        } else if (order_ != turn) {
            order_ = Order::Mixed;
            return;
        }
    }
}

} // namespace koGeom

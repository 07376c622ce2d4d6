// Template bodies of BasicPolyline, included at the foot of BasicPolyline.h.

#include <algorithm>
#include <cstddef>
#include <utility>

#include "tessar/linear/Tolerance.h"

namespace koGeom {

template <class Derived, class P>
template <class PointAt, class ParamAt>
void BasicPolyline<Derived, P>::assign(int n, PointAt point, ParamAt param) {
    // Made aside, so that a failed allocation leaves the old vertices.
    ko::vector<Vertex> made(static_cast<std::size_t>(std::max(n, 0)));
    for (int i = 0; i < n; ++i) {
        made[i] = Vertex{point(i), param(i)};
    }
    vertices_.swap(made);
    static_cast<Derived&>(*this).modified();
}

template <class Derived, class P>
void BasicPolyline<Derived, P>::initialize(const ko::vector<P>& points,
                                           const ko::vector<double>& params) {
    const std::size_t n = std::min(points.size(), params.size());
    initialize(static_cast<int>(n), points.data(), params.data());
}

template <class Derived, class P>
void BasicPolyline<Derived, P>::initialize(int n, const P* points, const double* params) {
    assign(n, pointsOf(points), [params](int i) { return params[i]; });
}

template <class Derived, class P>
void BasicPolyline<Derived, P>::initialize(int n, const Vertex* vertices) {
    assign(
        n, [vertices](int i) { return vertices[i].point; },
        [vertices](int i) { return vertices[i].param; });
}

template <class Derived, class P>
void BasicPolyline<Derived, P>::initializeArcLength(int n, const P* points) {
    double length = 0.0;
    assign(n, pointsOf(points), [points, &length](int i) {
        if (i > 0) {
            length += distance(points[i - 1], points[i]);
        }
        return length;
    });
}

template <class Derived, class P>
void BasicPolyline<Derived, P>::initializeUniform(int n, const P* points) {
    assign(n, pointsOf(points), [](int i) { return static_cast<double>(i); });
}

template <class Derived, class P>
koLinear::Range1d BasicPolyline<Derived, P>::getDomain() const noexcept {
    if (vertices_.empty()) {
        return {};
    }
    return {vertices_.front().param, vertices_.back().param};
}

// Binary search for the span i with t[i] ≤ t < t[i+1]; 0 when none is found. Callers keep t
// strictly inside the domain (t[0] < t < t[n-1]), so a probe at the last vertex fails its
// first comparison before it could look past the end.
template <class Derived, class P>
int BasicPolyline<Derived, P>::lowerBound(double t) const noexcept {
    int lo = 0;
    int hi = getNumVertices() - 1;
    while (lo <= hi) {
        const int mid = (lo + hi) / 2;
        const double start = vertices_[mid].param;
        if (t >= start && t < vertices_[mid + 1].param) {
            return mid;
        }
        if (t > start) {
            lo = mid + 1;
        } else {
            hi = mid - 1;
        }
    }
    return 0;
}

template <class Derived, class P>
int BasicPolyline<Derived, P>::findSpan(double t) const noexcept {
    if (vertices_.empty()) {
        return -1;
    }
    if (t <= vertices_.front().param) {
        return 0;
    }
    if (t >= vertices_.back().param) {
        return getNumVertices() - 2;
    }
    return lowerBound(t);
}

template <class Derived, class P>
P BasicPolyline<Derived, P>::eval(double t) const noexcept {
    if (vertices_.empty()) {
        return {};
    }
    if (t <= vertices_.front().param) {
        return vertices_.front().point;
    }
    if (t >= vertices_.back().param) {
        return vertices_.back().point;
    }
    const int i = lowerBound(t);
    const Vertex& a = vertices_[i];
    const Vertex& b = vertices_[i + 1];
    const double s = (t - a.param) / (b.param - a.param);
    return combine(a.point, 1.0 - s, b.point, s);
}

template <class Derived, class P>
void BasicPolyline<Derived, P>::getInterpolants(double t, int& span, double& w0,
                                                double& w1) const noexcept {
    span = findSpan(t);
    if (vertices_.size() < 2) {
        // No span to interpolate along: all weight on the only vertex, if any.
        w0 = 1.0;
        w1 = 0.0;
        return;
    }
    const double t0 = vertices_[span].param;
    w1 = (t - t0) / (vertices_[span + 1].param - t0);
    w0 = 1.0 - w1;
}

template <class Derived, class P>
double BasicPolyline<Derived, P>::getLength(int first, int last) const noexcept {
    double length = 0.0;
    for (int i = first + 1; i <= last; ++i) {
        length += distance(vertices_[i - 1].point, vertices_[i].point);
    }
    return length;
}

template <class Derived, class P>
double BasicPolyline<Derived, P>::getLength(double a, double b) const noexcept {
    double length = 0.0;
    for (int k = 1; k < getNumVertices(); ++k) {
        const Vertex& start = vertices_[k - 1];
        const Vertex& end = vertices_[k];
        if (a >= end.param) {
            continue;
        }
        if (start.param >= b) {
            break;
        }
        if (start.param >= a && b >= end.param) {
            length += distance(start.point, end.point);
            continue;
        }
        // The span is cut: measure the chord over the common part of [a, b] and the span.
        const double from = std::max(a, start.param);
        const double to = std::min(b, end.param);
        if (from <= to + koLinear::epsilonTol) {
            length += distance(eval(from), eval(to));
        }
    }
    return length;
}

template <class Derived, class P>
void BasicPolyline<Derived, P>::swapBase(BasicPolyline& other) noexcept {
    std::swap(box_, other.box_);
    vertices_.swap(other.vertices_);
    std::swap(closed_, other.closed_);
}

template <class Derived, class P>
void BasicPolyline<Derived, P>::refreshBox() const noexcept {
    if (!box_.isEmpty() || vertices_.empty()) {
        return;
    }
    box_.set(vertices_.front().point, vertices_.front().point);
    for (const Vertex& v : vertices_) {
        box_.extend(v.point);
    }
}

template <class Derived, class P>
bool BasicPolyline<Derived, P>::endsMeet() const noexcept {
    return !vertices_.empty() &&
           equivalent(vertices_.front().point, vertices_.back().point, koLinear::epsilonTol);
}

} // namespace koGeom

#pragma once

// The parametrised polyline arithmetic shared by the 3-D and the 2-D polyline: one template
// over the vertex kind, a point (`Point` or `Point2`) followed by its parameter. Vertices are
// kept in a vector of such records.

#include <algorithm>
#include <cstddef>

#include "tessar/core/Containers.h"
#include "tessar/linear/Range1d.h"
#include "tessar/linear/Tolerance.h"

namespace koGeom::detail {

template <class Vertex>
using PointOf = decltype(Vertex::point);

// Replaces the vertices by n points, vertex i getting parameter param(i). The new vertices
// are made aside, so a failed allocation leaves the old ones.
template <class Vertex, class Param>
void assignVertices(ko::vector<Vertex>& vertices, int n, const PointOf<Vertex>* points,
                    Param param) {
    ko::vector<Vertex> made(static_cast<std::size_t>(std::max(n, 0)));
    for (int i = 0; i < n; ++i) {
        made[i] = Vertex{points[i], param(i)};
    }
    vertices.swap(made);
}

template <class Vertex>
void assignVertices(ko::vector<Vertex>& vertices, int n, const PointOf<Vertex>* points,
                    const double* params) {
    assignVertices(vertices, n, points, [params](int i) { return params[i]; });
}

// Parameter 0 for the first point, then the running sum of the distances between neighbours.
template <class Vertex>
void assignArcLength(ko::vector<Vertex>& vertices, int n, const PointOf<Vertex>* points) {
    double length = 0.0;
    assignVertices(vertices, n, points, [points, &length](int i) {
        if (i > 0) {
            length += distance(points[i - 1], points[i]);
        }
        return length;
    });
}

// Parameter i for vertex i.
template <class Vertex>
void assignUniform(ko::vector<Vertex>& vertices, int n, const PointOf<Vertex>* points) {
    assignVertices(vertices, n, points, [](int i) { return static_cast<double>(i); });
}

template <class Vertex>
int vertexCount(const ko::vector<Vertex>& vertices) noexcept {
    return static_cast<int>(vertices.size());
}

// Binary search for the span i with t[i] ≤ t < t[i+1]; 0 when none is found. Callers keep t
// strictly inside the domain (t[0] < t < t[n-1]), so a probe at the last vertex fails its
// first comparison before it could look past the end.
template <class Vertex>
int lowerBound(const ko::vector<Vertex>& vertices, double t) noexcept {
    int lo = 0;
    int hi = vertexCount(vertices) - 1;
    while (lo <= hi) {
        const int mid = (lo + hi) / 2;
        const double start = vertices[mid].param;
        if (t >= start && t < vertices[mid + 1].param) {
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

// 0 at or before the first parameter, n − 2 at or after the last; -1 without vertices.
template <class Vertex>
int findSpan(const ko::vector<Vertex>& vertices, double t) noexcept {
    if (vertices.empty()) {
        return -1;
    }
    if (t <= vertices.front().param) {
        return 0;
    }
    if (t >= vertices.back().param) {
        return vertexCount(vertices) - 2;
    }
    return lowerBound(vertices, t);
}

template <class Vertex>
PointOf<Vertex> eval(const ko::vector<Vertex>& vertices, double t) noexcept {
    if (vertices.empty()) {
        return {};
    }
    if (t <= vertices.front().param) {
        return vertices.front().point;
    }
    if (t >= vertices.back().param) {
        return vertices.back().point;
    }
    const int i = lowerBound(vertices, t);
    const Vertex& a = vertices[i];
    const Vertex& b = vertices[i + 1];
    const double s = (t - a.param) / (b.param - a.param);
    return combine(a.point, 1.0 - s, b.point, s);
}

template <class Vertex>
void getInterpolants(const ko::vector<Vertex>& vertices, double t, int& span, double& w0,
                     double& w1) noexcept {
    span = findSpan(vertices, t);
    if (vertices.size() < 2) {
        // No span to interpolate along: all weight on the only vertex, if any.
        w0 = 1.0;
        w1 = 0.0;
        return;
    }
    const double t0 = vertices[span].param;
    w1 = (t - t0) / (vertices[span + 1].param - t0);
    w0 = 1.0 - w1;
}

template <class Vertex>
koLinear::Range1d getDomain(const ko::vector<Vertex>& vertices) noexcept {
    if (vertices.empty()) {
        return {};
    }
    return {vertices.front().param, vertices.back().param};
}

// The sum of the distances between neighbours from vertex `first` to vertex `last`.
template <class Vertex>
double lengthBetweenVertices(const ko::vector<Vertex>& vertices, int first, int last) noexcept {
    double length = 0.0;
    for (int i = first + 1; i <= last; ++i) {
        length += distance(vertices[i - 1].point, vertices[i].point);
    }
    return length;
}

// The length of the part of the polyline between parameters a and b: whole segments inside
// [a, b] count in full, the segments cut by a or b by the chord between the cut points.
template <class Vertex>
double lengthBetweenParams(const ko::vector<Vertex>& vertices, double a, double b) noexcept {
    double length = 0.0;
    for (int k = 1; k < vertexCount(vertices); ++k) {
        const Vertex& start = vertices[k - 1];
        const Vertex& end = vertices[k];
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
        const double from = std::max(a, start.param);
        const double to = std::min(b, end.param);
        if (from <= to + koLinear::epsilonTol) {
            length += distance(eval(vertices, from), eval(vertices, to));
        }
    }
    return length;
}

// Makes an empty box from the vertices; a box that is not empty is taken to be up to date.
// Without vertices the box stays empty.
template <class Vertex, class Range>
void refreshBox(const ko::vector<Vertex>& vertices, Range& box) noexcept {
    if (!box.isEmpty() || vertices.empty()) {
        return;
    }
    box.set(vertices.front().point, vertices.front().point);
    for (const Vertex& v : vertices) {
        box.extend(v.point);
    }
}

// True when the first and last vertices are within `epsilonTol` of each other.
template <class Vertex>
bool endsMeet(const ko::vector<Vertex>& vertices) noexcept {
    return !vertices.empty() &&
           equivalent(vertices.front().point, vertices.back().point, koLinear::epsilonTol);
}

} // namespace koGeom::detail

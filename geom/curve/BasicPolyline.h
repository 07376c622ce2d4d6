#pragma once

#include "tessar/core/Containers.h"
#include "tessar/core/ReferenceCount.h"
#include "tessar/linear/PointRange.h"
#include "tessar/linear/Range1d.h"

namespace koGeom {

/// What `Polyline` (points in space) and `Polyline2d` (points in the plane) share: a
/// parametrised polyline whose vertices are points `P` (`koLinear::Point` or `Point2`) each
/// with a parameter value, the parameters increasing with the vertex index (expected, not
/// checked). The polyline runs straight from vertex to vertex, the parameter proportional to
/// distance within each span.
///
/// A bounding box and a closed flag are cached and brought up to date lazily by the const
/// queries `getBoundingBox` and `getClosed`, through the polyline's own `update()`; after
/// changing vertices through `getVertex`, call its `modified()`. The `initialize` family does
/// that itself. Shared through `ko::Reference` when shared at all; one thread at a time, its
/// const queries included.
///
/// Indices are not checked. A polyline with no vertices is safe to query: it evaluates to the
/// origin, has an empty domain and box, span -1, length 0, and is not closed.
template <class Derived, class P>
class BasicPolyline : public ko::ReferenceCount {
public:
    using Range = koLinear::PointRange<P>;

    /// A point of the polyline and its parameter.
    struct Vertex {
        P point;
        double param = 0.0;
    };

    /// \name Setting the vertices
    /// Each replaces all vertices and marks the caches stale. O(n). Throws `std::bad_alloc`
    /// when the vertices cannot be stored, leaving the polyline unchanged.
    /// @{
    /// Points and parameters pairwise; from two vectors, as many as the shorter one holds.
    void initialize(const ko::vector<P>& points, const ko::vector<double>& params);
    void initialize(int n, const P* points, const double* params);
    void initialize(int n, const Vertex* vertices);
    /// Parameter 0 for the first point, then each parameter the one before plus the distance
    /// from the point before (cumulative chord length).
    void initializeArcLength(int n, const P* points);
    /// Parameter i for point i.
    void initializeUniform(int n, const P* points);
    /// @}

    /// \name Vertices
    /// @{
    int getNumVertices() const noexcept { return static_cast<int>(vertices_.size()); }
    Vertex& getVertex(int i) noexcept { return vertices_[i]; }
    const Vertex& getVertex(int i) const noexcept { return vertices_[i]; }
    /// From the first vertex's parameter to the last one's; empty without vertices.
    koLinear::Range1d getDomain() const noexcept;
    /// @}

    /// \name Evaluation
    /// Searches are binary: O(log n).
    /// @{
    /// The point at parameter t: the first point at or before the domain, the last at or
    /// after it, otherwise the affine combination of the two ends of t's span.
    P eval(double t) const noexcept;
    /// The span i (from vertex i to i + 1) that holds t: 0 at or before the first parameter,
    /// n − 2 at or after the last.
    int findSpan(double t) const noexcept;
    /// span := `findSpan(t)`; w1 := (t − t[span]) / (t[span+1] − t[span]) and w0 := 1 − w1.
    /// Not clamped: a t outside the domain gives weights outside 0…1. With fewer than two
    /// vertices, w0 = 1 and w1 = 0.
    void getInterpolants(double t, int& span, double& w0, double& w1) const noexcept;
    /// @}

    /// \name Length
    /// O(vertices involved).
    /// @{
    /// The length of the whole polyline.
    double getLength() const noexcept { return getLength(0, getNumVertices() - 1); }
    /// The sum of the distances between neighbours from vertex `first` to vertex `last`; 0
    /// when first + 1 > last.
    double getLength(int first, int last) const noexcept;
    /// The length of the part between parameters a and b: whole spans inside [a, b] in full,
    /// a span cut by a or b by the chord between the cut points.
    double getLength(double a, double b) const noexcept;
    /// @}

    /// \name Caches
    /// @{
    /// The box of the vertices, brought up to date first when it is stale (O(n)) together with
    /// the other caches; while the box is up to date nothing is refreshed.
    const Range& getBoundingBox() const noexcept {
        if (box_.isEmpty()) {
            derived().update();
        }
        return box_;
    }
    /// Brings the caches up to date and answers whether the polyline is closed (see the
    /// polyline's `update()` for when the flag is refreshed).
    bool getClosed() const noexcept {
        derived().update();
        return closed_;
    }
    /// @}

protected:
    BasicPolyline() noexcept = default;
    // The reference count stays with each object (see `ko::ReferenceCount`).
    BasicPolyline(const BasicPolyline&) = default;
    BasicPolyline& operator=(const BasicPolyline&) = delete;
    ~BasicPolyline() override = default;

    // Exchanges the vertices, the box and the closed flag.
    void swapBase(BasicPolyline& other) noexcept;
    // Makes an empty box from the vertices; a box that is not empty is up to date.
    void refreshBox() const noexcept;
    // True when there are vertices and the first and last are within `epsilonTol`.
    bool endsMeet() const noexcept;

    mutable Range box_;
    ko::vector<Vertex> vertices_;
    mutable bool closed_ = false;

private:
    // Replaces the vertices by n new ones, vertex i made of point(i) and param(i), and marks
    // the caches stale.
    template <class PointAt, class ParamAt>
    void assign(int n, PointAt point, ParamAt param);
    // The point reader of an array of points, for `assign`.
    static auto pointsOf(const P* points) noexcept {
        return [points](int i) { return points[i]; };
    }
    int lowerBound(double t) const noexcept;

    const Derived& derived() const noexcept { return static_cast<const Derived&>(*this); }
};

} // namespace koGeom

#include "geom/curve/BasicPolyline.inl"

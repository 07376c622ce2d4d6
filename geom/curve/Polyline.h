#pragma once

#include "tessar/core/Containers.h"
#include "tessar/core/ReferenceCount.h"
#include "tessar/linear/Point.h"
#include "tessar/linear/Range1d.h"
#include "tessar/linear/Range3d.h"

#include "geom/FormworkExport.h"

namespace koGeom {

/// A parametrised polyline in space: each vertex a point with a parameter value, the
/// parameters increasing with the vertex index (expected, not checked). The polyline runs
/// straight from vertex to vertex, parameter proportional to distance within each span.
///
/// A bounding box and a closed flag are cached and brought up to date lazily by the const
/// queries `getBoundingBox` and `getClosed`; after changing vertices through `getVertex`, call
/// `modified()`. The `initialize` family does that itself. Shared through `ko::Reference`
/// when shared at all; one thread at a time, its const queries included.
///
/// Indices are not checked. A polyline with no vertices is safe to query: it evaluates to the
/// origin, has an empty domain and box, span -1, length 0, and is not closed.
class FORMWORK_EXPORT Polyline : public ko::ReferenceCount {
public:
    /// A point of the polyline and its parameter.
    struct vertex {
        koLinear::Point point;
        double param = 0.0;
    };

    /// \name Construction
    /// Each constructor is the default one followed by the `initialize` of the same
    /// arguments.
    /// @{
    /// No vertices, an empty box, not closed.
    Polyline() noexcept;
    Polyline(const ko::vector<koLinear::Point>& points, const ko::vector<double>& params);
    Polyline(int n, const koLinear::Point* points, const double* params);
    Polyline(int n, const vertex* vertices);
    /// Copies the vertices and the caches; the reference count starts at 0.
    Polyline(const Polyline& other);
    /// Copies `other` into a temporary and swaps it in; a failed copy leaves this polyline
    /// unchanged.
    Polyline& operator=(const Polyline& other);
    ~Polyline() override;

    /// Exchanges the vertices and the caches.
    void swap(Polyline& other) noexcept;
    /// @}

    /// \name Setting the vertices
    /// Each replaces all vertices and marks the caches stale. O(n). Throws `std::bad_alloc`
    /// when the vertices cannot be stored, leaving the polyline unchanged.
    /// @{
    /// Points and parameters pairwise; from two vectors, as many as the shorter one holds.
    void initialize(const ko::vector<koLinear::Point>& points, const ko::vector<double>& params);
    void initialize(int n, const koLinear::Point* points, const double* params);
    void initialize(int n, const vertex* vertices);
    /// Parameter 0 for the first point, then each parameter the one before plus the distance
    /// from the point before (cumulative chord length).
    void initializeArcLength(int n, const koLinear::Point* points);
    /// Parameter i for point i.
    void initializeUniform(int n, const koLinear::Point* points);
    /// @}

    /// \name Vertices
    /// @{
    int getNumVertices() const noexcept { return static_cast<int>(vertices_.size()); }
    vertex& getVertex(int i) noexcept { return vertices_[i]; }
    const vertex& getVertex(int i) const noexcept { return vertices_[i]; }
    /// From the first vertex's parameter to the last one's.
    koLinear::Range1d getDomain() const noexcept;
    /// @}

    /// \name Evaluation
    /// Searches are binary: O(log n).
    /// @{
    /// The point at parameter t: the first point at or before the domain, the last at or
    /// after it, otherwise the affine combination of the two ends of t's span.
    koLinear::Point eval(double t) const noexcept;
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
    double getLength() const noexcept;
    /// The sum of the distances between neighbours from vertex `first` to vertex `last`; 0
    /// when first + 1 > last.
    double getLength(int first, int last) const noexcept;
    /// The length of the part between parameters a and b (clipped to the domain).
    double getLength(double a, double b) const noexcept;
    /// @}

    /// \name Caches
    /// @{
    /// The box of the vertices, recomputed first when it is stale (O(n)).
    const koLinear::Range3d& getBoundingBox() const noexcept;
    /// Whether the first and last vertices coincide within `koLinear::epsilonTol`. The flag
    /// is refreshed only when the box is: after editing vertices, call `modified()` first.
    bool getClosed() const noexcept;
    /// Marks the caches stale (the box is made empty).
    void modified() noexcept;
    /// @}

private:
    void update() const noexcept;

    mutable koLinear::Range3d box_;
    ko::vector<vertex> vertices_;
    mutable bool closed_ = false;
};

} // namespace koGeom

#pragma once

#include <cstdint>

#include "tessar/core/Containers.h"
#include "tessar/core/ReferenceCount.h"
#include "tessar/linear/Point2.h"
#include "tessar/linear/Range1d.h"
#include "tessar/linear/Range2d.h"

#include "geom/FormworkExport.h"

namespace koGeom {

/// A parametrised polyline in the plane: each vertex a 2-D point with a parameter value, the
/// parameters increasing with the vertex index (expected, not checked). It evaluates and
/// measures as `Polyline` does, and adds appending without repeats, uniform
/// re-parametrisation and the turning order of its corners, from which convexity is answered.
///
/// A bounding box, a closed flag and the turning order are cached. `getBoundingBox` and
/// `getClosed` bring them up to date; the order queries (`getOrder`, `isClockwise`,
/// `isCounterClockwise`, `isConvex`) read them as they stand. After changing vertices through
/// `getVertex`, call `modified()`; the `initialize` family and `appendVertex` do that
/// themselves. Shared through `ko::Reference` when shared at all; one thread at a time, its
/// const queries included.
///
/// Indices are not checked, nor is there a first or last vertex without vertices. A polyline
/// with no vertices is otherwise safe to query: it evaluates to the origin, has an empty
/// domain and box, span -1, length 0, and is not closed.
class FORMWORK_EXPORT Polyline2d : public ko::ReferenceCount {
public:
    /// A point of the polyline and its parameter.
    struct vertex2d {
        koLinear::Point2 point;
        double param = 0.0;
    };

    /// How the corners turn, walking from the first vertex to the last.
    enum class Order : std::int32_t {
        /// Not computed since the last `modified()`, or no corner turns (all collinear).
        Unknown = 0,
        /// Every corner turns clockwise.
        Clockwise = 1,
        /// Every corner turns counter-clockwise.
        CounterClockwise = 2,
        /// Some corners turn one way and some the other.
        Mixed = 3,
    };

    /// \name Construction
    /// Each constructor is the default one followed by the `initialize` of the same
    /// arguments.
    /// @{
    /// No vertices, an empty box, not closed, order unknown.
    Polyline2d() noexcept;
    Polyline2d(const ko::vector<koLinear::Point2>& points, const ko::vector<double>& params);
    Polyline2d(int n, const koLinear::Point2* points, const double* params);
    Polyline2d(int n, const vertex2d* vertices);
    /// Copies the vertices and the caches; the reference count starts at 0.
    Polyline2d(const Polyline2d& other);
    /// Copies `other` into a temporary and swaps it in; a failed copy leaves this polyline
    /// unchanged.
    Polyline2d& operator=(const Polyline2d& other);
    ~Polyline2d() override;

    /// Exchanges the vertices and the caches.
    void swap(Polyline2d& other) noexcept;
    /// @}

    /// \name Setting the vertices
    /// Each replaces all vertices and marks the caches stale. O(n). Throws `std::bad_alloc`
    /// when the vertices cannot be stored, leaving the polyline unchanged.
    /// @{
    /// Points and parameters pairwise; from two vectors, as many as the shorter one holds.
    void initialize(const ko::vector<koLinear::Point2>& points, const ko::vector<double>& params);
    void initialize(int n, const koLinear::Point2* points, const double* params);
    void initialize(int n, const vertex2d* vertices);
    /// Parameter 0 for the first point, then each parameter the one before plus the distance
    /// from the point before (cumulative chord length).
    void initializeArcLength(int n, const koLinear::Point2* points);
    /// Parameter i for point i.
    void initializeUniform(int n, const koLinear::Point2* points);

    /// Appends `p` with parameter 0 when there are no vertices, else the last parameter + 1,
    /// and marks the caches stale. Nothing is appended when `p` is within
    /// `koLinear::epsilonTol` of any vertex but the first: repeating the first point closes
    /// the polyline. O(n). Throws `std::bad_alloc` when the vertex cannot be stored.
    void appendVertex(const koLinear::Point2& p);
    /// Sets the parameter of vertex i to i for every vertex. The caches stay as they are,
    /// since parameters do not affect them. O(n).
    void makeUniform() noexcept;
    /// @}

    /// \name Vertices
    /// @{
    int getNumVertices() const noexcept { return static_cast<int>(vertices_.size()); }
    vertex2d& getVertex(int i) noexcept { return vertices_[i]; }
    const vertex2d& getVertex(int i) const noexcept { return vertices_[i]; }
    /// The first and last vertices; there must be one.
    vertex2d& getFirstVertex() noexcept { return vertices_.front(); }
    const vertex2d& getFirstVertex() const noexcept { return vertices_.front(); }
    vertex2d& getLastVertex() noexcept { return vertices_.back(); }
    const vertex2d& getLastVertex() const noexcept { return vertices_.back(); }
    /// From the first vertex's parameter to the last one's.
    koLinear::Range1d getDomain() const noexcept;
    /// Always false: appending already keeps repeats out.
    bool debugHasDuplicateVertices() const noexcept { return false; }
    /// @}

    /// \name Evaluation
    /// Searches are binary: O(log n).
    /// @{
    /// The point at parameter t: the first point at or before the domain, the last at or
    /// after it, otherwise the affine combination of the two ends of t's span.
    koLinear::Point2 eval(double t) const noexcept;
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
    /// The box of the vertices, brought up to date first with the other caches (O(n) when
    /// they are stale).
    const koLinear::Range2d& getBoundingBox() const noexcept;
    /// Brings the caches up to date and answers whether there are at least three vertices
    /// and the first and last coincide within `koLinear::epsilonTol`.
    bool getClosed() const noexcept;
    /// Marks the caches stale: the box is made empty and the order unknown.
    void modified() noexcept;
    /// @}

    /// \name Turning order
    /// These read the caches as they stand: after a change, call `getClosed()` or
    /// `getBoundingBox()` first, or they answer as for an unknown order (and a closed flag
    /// that may be out of date).
    /// @{
    // Deliberate: the order queries cost nothing and never recompute; callers refresh the
    // caches once with getClosed() after a batch of changes and then ask as often as they like.
    Order getOrder() const noexcept { return order_; }
    bool isClockwise() const noexcept { return order_ == Order::Clockwise; }
    bool isCounterClockwise() const noexcept { return order_ == Order::CounterClockwise; }
    /// True when every corner turns counter-clockwise, or when the polyline is closed and
    /// every corner turns clockwise: an open clockwise polyline is not convex, an open
    /// counter-clockwise one is.
    bool isConvex() const noexcept {
        // Deliberate: an open chain of left turns counts as convex, a chain of right turns
        // only once closed; outlines drawn counter-clockwise are tested as they grow.
        return order_ == Order::CounterClockwise || (closed_ && order_ == Order::Clockwise);
    }
    /// @}

private:
    void update() const noexcept;
    void computeOrder() const noexcept;

    mutable koLinear::Range2d box_;
    ko::vector<vertex2d> vertices_;
    mutable bool closed_ = false;
    mutable Order order_ = Order::Unknown;
};

} // namespace koGeom

#pragma once

#include <cstdint>

#include "tessar/core/Containers.h"
#include "tessar/linear/Point2.h"
#include "tessar/linear/Range2d.h"

#include "geom/FormworkExport.h"
#include "geom/curve/BasicPolyline.h"

namespace koGeom {

/// A parametrised polyline in the plane: its vertices are `koLinear::Point2`s with
/// parameters, and it evaluates, measures and caches its bounding box and closed flag as every
/// `BasicPolyline` does. It adds appending without repeats, uniform re-parametrisation and the
/// turning order of its corners, from which convexity is answered.
///
/// `getClosed` brings the box and the order up to date when they are stale and works out the
/// closed flag afresh each time; `getBoundingBox` does the same only when the box is stale
/// (after `modified()`), and otherwise refreshes nothing. The order queries (`getOrder`,
/// `isClockwise`, `isCounterClockwise`, `isConvex`) read the caches as they stand. After
/// changing vertices through `getVertex`, call `modified()`; the `initialize` family and
/// `appendVertex` do that themselves.
class FORMWORK_EXPORT Polyline2d : public BasicPolyline<Polyline2d, koLinear::Point2> {
public:
    /// A point of the polyline and its parameter.
    using vertex2d = Vertex;

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

    /// \name Editing
    /// @{
    /// Appends `p` with parameter 0 when there are no vertices, else the last parameter + 1,
    /// and marks the caches stale. Nothing is appended when `p` is within
    /// `koLinear::epsilonTol` of any vertex but the first: repeating the first point closes
    /// the polyline. O(n). Throws `std::bad_alloc` when the vertex cannot be stored.
    void appendVertex(const koLinear::Point2& p);
    /// Sets the parameter of vertex i to i for every vertex. The caches stay as they are,
    /// since parameters do not affect them. O(n).
    void makeUniform() noexcept;
    /// Marks the caches stale: the box is made empty and the order unknown.
    void modified() noexcept;
    /// @}

    /// \name Vertices
    /// @{
    /// The first and last vertices; there must be one.
    vertex2d& getFirstVertex() noexcept { return vertices_.front(); }
    const vertex2d& getFirstVertex() const noexcept { return vertices_.front(); }
    vertex2d& getLastVertex() noexcept { return vertices_.back(); }
    const vertex2d& getLastVertex() const noexcept { return vertices_.back(); }
    /// Always false: appending already keeps repeats out.
    bool debugHasDuplicateVertices() const noexcept { return false; }
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
    friend class BasicPolyline<Polyline2d, koLinear::Point2>;

    // Brings the box and the order up to date when they are stale, then works out the closed
    // flag: at least three vertices, the first and last within `epsilonTol`.
    void update() const noexcept;
    void computeOrder() const noexcept;

    mutable Order order_ = Order::Unknown;
};

} // namespace koGeom

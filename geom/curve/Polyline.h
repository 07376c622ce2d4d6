#pragma once

#include "tessar/core/Containers.h"
#include "tessar/linear/Point.h"
#include "tessar/linear/Range3d.h"

#include "geom/FormworkExport.h"
#include "geom/curve/BasicPolyline.h"

namespace koGeom {

/// A parametrised polyline in space: its vertices are `koLinear::Point`s with parameters, and
/// it evaluates, measures and caches its bounding box and closed flag as every
/// `BasicPolyline` does.
///
/// The closed flag (first and last vertices within `koLinear::epsilonTol` of each other) is
/// refreshed only together with the box, that is after `modified()`: vertices edited in
/// place leave both as they were until then.
class FORMWORK_EXPORT Polyline : public BasicPolyline<Polyline, koLinear::Point> {
public:
    /// A point of the polyline and its parameter.
    using vertex = Vertex;

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

    /// Marks the caches stale: the box is made empty.
    void modified() noexcept;

private:
    friend class BasicPolyline<Polyline, koLinear::Point>;

    // Brings the box, and with it the closed flag, up to date when the box is empty.
    void update() const noexcept;
};

} // namespace koGeom

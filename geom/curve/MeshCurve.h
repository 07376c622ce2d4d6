#pragma once

#include <deque>

#include "tessar/core/Reference.h"
#include "tessar/core/ReferenceCount.h"

#include "geom/FormworkExport.h"
#include "geom/curve/MeshCoord.h"
#include "geom/curve/Polyline.h"

namespace koGeom {

class CompactMesh;

/// A curve drawn on a triangle mesh: an ordered list of mesh coordinates, open or closed,
/// joined by straight segments between the points they name.
///
/// The curve keeps no link to a mesh: it can be evaluated on any mesh whose triangle indices
/// its coordinates match (the same mesh after its vertices moved, say). Nothing is checked
/// against the mesh. A reference-counted value: held through `ko::Reference` when shared, or
/// kept by value.
class FORMWORK_EXPORT MeshCurve : public ko::ReferenceCount {
public:
    /// \name Construction
    /// Copies and moves carry the coordinates and the closed flag; the reference count of the
    /// new or assigned curve is its own.
    /// @{
    /// No coordinates, open.
    MeshCurve();
    MeshCurve(const std::deque<MeshCoord>& coords, bool closed);
    MeshCurve(const MeshCurve& other);
    MeshCurve(MeshCurve&& other) noexcept;
    MeshCurve& operator=(const MeshCurve& other);
    MeshCurve& operator=(MeshCurve&& other) noexcept;
    ~MeshCurve() override;
    /// @}

    /// \name Contents
    /// @{
    std::deque<MeshCoord>& getCoords() noexcept { return coords_; }
    const std::deque<MeshCoord>& getCoords() const noexcept { return coords_; }
    /// Whether the last coordinate joins back to the first.
    bool isClosed() const noexcept { return closed_; }
    void setClosed(bool closed) noexcept { closed_ = closed; }
    /// @}

    /// The curve evaluated on `mesh`'s vertices and triangles as a polyline with parameters
    /// 0, 1, 2, … (one per coordinate); a closed curve repeats its first point at the end. A
    /// null reference when the curve has fewer than two coordinates. O(coordinates).
    ko::Reference<Polyline> asPolyline(const CompactMesh& mesh) const;

private:
    std::deque<MeshCoord> coords_;
    bool closed_ = false;
};

} // namespace koGeom

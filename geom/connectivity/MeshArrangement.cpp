#include "geom/connectivity/MeshArrangement.h"

#include "geom/mesh/CompactMesh.h"

namespace koGeom {

void addMeshToArrangement(ko::list<MeshPlacement>& arrangement, CompactMesh& mesh) {
    arrangement.push_back(MeshPlacement{koLinear::AffineMatrixFlt(1.0f), &mesh});
}

void addMeshToArrangement(ko::list<MeshPlacement>& arrangement, CompactMesh& mesh,
                          koLinear::AffineMatrixFlt& transform) {
    arrangement.push_back(MeshPlacement{transform, &mesh});
}

void deleteMeshesInArrangement(ko::list<MeshPlacement>& arrangement) {
    for (MeshPlacement& placement : arrangement) {
        if (placement.mesh != nullptr) {
            delete placement.mesh;
            placement.mesh = nullptr;
        }
    }
}

} // namespace koGeom

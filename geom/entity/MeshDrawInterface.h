#pragma once

namespace koGeom {

class CompactMesh;
class TopoMesh;

/// The mesh drawing interface that a host offers to the library's debug-drawing hooks
/// (`koDebugDraw::drawMesh` and the rest).
///
/// The host implements it and registers it with the platform's interface registry under
/// `meshDrawInterfaceName`, as a `MeshDrawInterface*` converted to `void*`:
///
///     koDebugDraw::registerIFace(koGeom::meshDrawInterfaceName,
///                                static_cast<koGeom::MeshDrawInterface*>(&drawer));
///
/// The host owns it; the library never disposes of it. Each hook forwards its argument to the
/// operation of the same name.
class MeshDrawInterface {
public:
    /// The host's disposal of the interface (called with 0 by whoever owns it).
    virtual void dispose(int flags) = 0;
    virtual void drawMesh(const CompactMesh& mesh) = 0;
    virtual void drawAddMesh(const CompactMesh& mesh) = 0;
    virtual void drawAddMeshPtr(const CompactMesh* mesh) = 0;
    virtual void drawTopoMesh(const TopoMesh& mesh) = 0;
    virtual void drawAddTopoMesh(const TopoMesh& mesh) = 0;
    virtual void drawAddTopoMeshPtr(const TopoMesh* mesh) = 0;

protected:
    ~MeshDrawInterface() = default;
};

/// The name under which the hooks look the interface up.
inline constexpr const char* meshDrawInterfaceName = "getMeshIFace";

} // namespace koGeom

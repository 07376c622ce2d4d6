#pragma once

namespace koGeom::packetFile::detail {

// The kinds with which the mesh packet reader defines the objects its packets make. A pointer
// read with one kind resolves only to an object defined with the same kind, so a packet that
// names an object of another type is caught instead of reinterpreting it. The half-edge mesh
// packets use `TopoMesh::packetMeshKind` and `TopoMesh::packetRecordKind` (all below
// 0x40010000): this one lies above them.
enum ReferenceKind : int {
    compactMeshKind = 0x4d435a4b, // "KZCM"
};

} // namespace koGeom::packetFile::detail

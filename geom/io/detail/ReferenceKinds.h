#pragma once

namespace koGeom::packetFile::detail {

// The kinds with which the library's packet readers define the objects their packets make.
// A pointer read with one kind resolves only to an object defined with the same kind, so a
// packet that names an object of another type is caught instead of reinterpreting it. Every
// reader of the library takes its kinds from here, so no two types share one.
enum ReferenceKind : int {
    compactMeshKind = 0x4d435a4b, // "KZCM"
};

} // namespace koGeom::packetFile::detail

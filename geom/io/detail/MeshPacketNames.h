#pragma once

namespace koGeom::packetFile::detail {

// The type names of the mesh packets, in the order their readers are registered.
inline constexpr const char* meshHeaderName = "ko.tz.mesh";
inline constexpr const char* meshVerticesName = "ko.tz.mesh.vertices";
inline constexpr const char* meshNormalsName = "ko.tz.mesh.normals";
inline constexpr const char* meshUVsName = "ko.tz.mesh.uvs";
inline constexpr const char* meshSTsName = "ko.tz.mesh.sts";
inline constexpr const char* meshColoursName = "ko.tz.mesh.colours";
inline constexpr const char* meshTrianglesName = "ko.tz.mesh.triangles";
inline constexpr const char* meshTriNormalsName = "ko.tz.mesh.trinormals";
inline constexpr const char* meshSeqArrayName = "ko.tz.mesh.seqarray";
inline constexpr const char* meshAttributesName = "ko.tz.mesh.attributes";

// Data packets carry at most this many elements (vertices, triangles or sequence entries).
inline constexpr int meshBlockSize = 1000;

// Sequence and array kinds of a seqarray packet.
inline constexpr int triStripKind = 0;
inline constexpr int triFanKind = 1;
inline constexpr int lineStripKind = 2;
inline constexpr int polyKind = 3;
inline constexpr int sequenceKindCount = 4;
inline constexpr int pointsArrayKind = 0;
inline constexpr int lengthsArrayKind = 1;

} // namespace koGeom::packetFile::detail

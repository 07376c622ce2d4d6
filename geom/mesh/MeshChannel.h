#pragma once

#include <cstdint>

#include "geom/FormworkExport.h"
#include "tessar/string/CString.h"

namespace koGeom {

/// The standard vertex channels of a mesh. A channel's value is also its bit number in the
/// masks of a mesh change notice.
enum class MeshChannel : std::int32_t {
    Vertices = 0, ///< "vertices": positions
    Normals = 1,  ///< "normals"
    UVs = 2,      ///< "uvs": texture coordinates
    STs = 3,      ///< "sts": second texture coordinates
    Colours = 4,  ///< "colours"
};

/// The number of standard vertex channels.
inline constexpr int numMeshChannels = 5;

/// \name Channel names
/// The names that select the standard channels, built when the library is loaded.
/// @{
FORMWORK_EXPORT extern const koString::CString meshVerticesName; ///< "vertices"
FORMWORK_EXPORT extern const koString::CString meshNormalsName;  ///< "normals"
FORMWORK_EXPORT extern const koString::CString meshUVsName;      ///< "uvs"
FORMWORK_EXPORT extern const koString::CString meshSTsName;      ///< "sts"
FORMWORK_EXPORT extern const koString::CString meshColoursName;  ///< "colours"

/// The name of a standard channel.
FORMWORK_EXPORT const koString::CString& meshChannelName(MeshChannel channel) noexcept;

/// The channel that `name` selects, as its value 0 to 4, or -1 when the name selects none.
/// The comparison is exact and case-sensitive: "Vertices" and "" select nothing.
FORMWORK_EXPORT int meshChannelIndex(const koString::CString& name) noexcept;
/// @}

} // namespace koGeom

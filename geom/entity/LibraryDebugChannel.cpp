#include "geom/entity/LibraryDebugChannel.h"

namespace koGeom {

koOS::DebugChannel& debugChannel() {
    static koOS::DebugChannel channel;
    return channel;
}

} // namespace koGeom

#include "geom/io/detail/GeomPacket.h"

#include <utility>

#include "crate/ioReadContext.h"

#include "geom/io/ReadInterface.h"

namespace koGeom::packetFile::detail {

geomPacket::geomPacket(std::string name, ReadInterface* target, Reader reader)
    : ioPacketType(std::move(name)), target_(target), reader_(reader) {}

geomPacket::~geomPacket() = default;

bool geomPacket::readPacket(ioReadContext& context) {
    if (target_ == nullptr || &target_->getContext() != &context) {
        context.invalidPacket("mesh packet read through a context its reader does not read");
        return true;
    }
    (target_->*reader_)();
    return true;
}

} // namespace koGeom::packetFile::detail

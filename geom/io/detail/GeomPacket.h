#pragma once

#include <string>

#include "crate/ioPacketType.h"

namespace koGeom::packetFile {

class ReadInterface;

namespace detail {

/// The packet type registered for each mesh packet name: it reads a packet by calling one
/// reader member of its `ReadInterface`, which reads through its own context.
class geomPacket : public ioPacketType {
public:
    using Reader = void (ReadInterface::*)();

    geomPacket(std::string name, ReadInterface* target, Reader reader);
    ~geomPacket() override;

    /// Calls the reader member on the target. A packet handed over through another context
    /// than the target's is marked invalid unread: the target would read elsewhere.
    bool readPacket(ioReadContext& context) override;

private:
    ReadInterface* target_;
    Reader reader_;
};

} // namespace detail
} // namespace koGeom::packetFile

#pragma once

#include <string>
#include <string_view>

#include "crate/CrateExport.h"

class ioReadContext;

/// How one type of packet is read: registered by its name in an `ioPacketRegistry`, which
/// calls `readPacket` for every packet of that name, with the context positioned at the
/// start of the packet's first chunk.
class CRATE_EXPORT ioPacketType {
public:
    explicit ioPacketType(std::string name);
    ioPacketType(const ioPacketType&) = delete;
    ioPacketType& operator=(const ioPacketType&) = delete;
    virtual ~ioPacketType();

    const std::string& getName() const noexcept { return name_; }

    /// Reads one packet of this type. Returns false when the packet is not accepted (it is
    /// then skipped as if `invalidPacket` had been called).
    virtual bool readPacket(ioReadContext& context) = 0;

    /// \name End of the read
    /// Called once the last packet has been read, for what the file left open.
    /// @{
    /// An object defined by a packet of this type that no pointer in the file named.
    virtual void memoryNotReferenced(ioReadContext& context, int reference, void* object);
    /// A pointer read by a packet of this type whose reference no packet defined: its slot
    /// was left null.
    virtual void hasUnresolvedPointer(ioReadContext& context, int reference);
    /// Called for each type that read at least one packet, in registration order, after the
    /// two notices above: the place to check and finish the objects its packets built.
    virtual void readFinished(ioReadContext& context);
    /// @}

private:
    std::string name_;
};

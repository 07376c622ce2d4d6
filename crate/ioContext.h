#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "crate/CrateExport.h"
#include "crate/ioError.h"

/// What reading and writing a packet file share: the first error, and the table of object
/// references (numbers that name objects across packets, 1, 2, ... in the order the file
/// first mentions them; 0 is the null reference).
class CRATE_EXPORT ioContext {
public:
    ioContext();
    ioContext(const ioContext&) = delete;
    ioContext& operator=(const ioContext&) = delete;
    virtual ~ioContext();

    /// \name Errors
    /// @{
    /// True while no error has occurred.
    bool ok() const noexcept { return !error_.isSet(); }
    /// The first error, or an empty one.
    const ioError& error() const noexcept { return error_; }
    /// @}

    /// \name References
    /// @{
    /// True when an object has been defined for `reference` (on reading: by a packet's
    /// `defineReference`; on writing: by a packet started for that object).
    bool isReferenceDefined(int reference) const noexcept;
    /// The object defined for `reference`, or null when none is (yet).
    void* getReferenceDefinition(int reference) const noexcept;
    /// @}

    /// \name Invalid packets
    /// @{
    /// Marks the current packet invalid: the rest of it is skipped, any pointer fix-ups it
    /// recorded are dropped (so no slot of a discarded object is ever patched), and the read
    /// goes on with the next packet. `reason` is kept, with the packet's index, type name and
    /// offset, for the caller (see `invalidPackets`). Not an error: `ok()` stays true.
    /// Outside a packet (a type's `readFinished` finding that what its packets built does not
    /// hold) only the reason is kept, with packet index -1.
    void invalidPacket(std::string_view reason = {});
    /// True when the current packet has been marked invalid.
    bool isPacketInvalid() const noexcept { return packetInvalid_; }
    /// The packets marked invalid so far, in file order (at most the first 1000 are kept with
    /// their reasons; `invalidPacketCount` counts them all).
    const std::vector<ioError>& invalidPackets() const noexcept { return invalidPackets_; }
    std::uint64_t invalidPacketCount() const noexcept { return invalidPacketCount_; }
    /// @}

protected:
    /// Records the first error; later calls are ignored.
    void fail(ioError error);
    /// Hooks for the derived context: where the current packet is.
    virtual ioError locate(std::string message) const = 0;
    /// Called by `invalidPacket` so that the derived context can drop the packet's fix-ups
    /// and skip its remaining bytes. Returns false when no packet is open (nothing to mark).
    virtual bool onPacketInvalid() = 0;

    void setPacketInvalid(bool invalid) noexcept { packetInvalid_ = invalid; }
    /// The reference table: `definitions_[r]` is the object of reference r (index 0 unused).
    std::vector<void*> definitions_;

private:
    ioError error_;
    bool packetInvalid_ = false;
    std::vector<ioError> invalidPackets_;
    std::uint64_t invalidPacketCount_ = 0;
};

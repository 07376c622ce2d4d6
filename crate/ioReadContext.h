#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "crate/CrateExport.h"
#include "crate/ioContext.h"
#include "crate/ioValueKind.h"

class ioClientReadContext;
class ioPacketRegistry;

/// Reads a packet file, from a file or from memory, one packet at a time.
///
/// `readAll` drives a whole read: each packet's type is found in a registry and its
/// `ioPacketType::readPacket` reads the values, in the order they were written, through the
/// members below. Unknown packet types are skipped and counted; values a reader leaves unread
/// at the end of a chunk are skipped; a chunk the writer did not write reads as absent.
///
/// Safe on any input: every length is checked against the bytes left before it is used, every
/// packet's checksum is verified before any of its values are handed out, and nothing is
/// sized from a number the bytes have not proven. The first failure (damage, a value of
/// another kind than asked for, an array larger than the caller's room) is an error that
/// names the packet, its type and the byte offset; from then on every read returns a zero
/// value and `readAll` stops.
///
/// Whatever a reader skips (an unknown packet, unread values, chunks it does not ask for) is
/// still walked for the references its pointers name, so that the numbering stays in step;
/// a value malformed there is an error too.
///
/// A packet marked invalid (`invalidPacket`, or `readPacket` returning false) is skipped: the
/// pointer fix-ups it recorded are dropped and the definitions it made are undone, so no slot
/// of a discarded object is patched and no later pointer resolves to it.
///
/// Cost: a file is read through a 1 MiB window (larger only for a larger packet, whose length
/// the file's size has proven); values are read in place, arrays with one copy each. Each type
/// id is looked up by name once per `readAll`. A reference costs 16 bytes; a pointer waiting
/// for its object 24, reused once it is patched.
class CRATE_EXPORT ioReadContext : public ioContext {
public:
    /// Reads the file at `path`; an error when it cannot be opened or is not a packet file.
    explicit ioReadContext(const std::string& path);
    /// Reads `size` bytes at `data`, which must stay valid while the context reads.
    ioReadContext(const void* data, std::size_t size);
    ~ioReadContext() override;

    /// \name The whole read
    /// @{
    /// Reads every packet left through `registry`, calling `client`'s `prePacketRead` and
    /// `postPacketRead` around each packet of a known type. At the end, when no error
    /// occurred, it tells each defining type of its objects that no pointer named
    /// (`memoryNotReferenced`, in reference order), then each reading type of its pointers
    /// left unresolved (`hasUnresolvedPointer`); then, also after an error, it calls
    /// `readFinished` of every type that read a packet, in registration order. The registry
    /// must not change during the read. Returns `ok()`.
    bool readAll(ioPacketRegistry& registry, ioClientReadContext* client = nullptr);
    /// Number of packets skipped because no type was registered for their name.
    std::uint64_t skippedPacketCount() const noexcept;
    /// @}

    /// The minor version of the file's format (a reader accepts any minor version of its
    /// major version); 0 when the file could not be opened.
    std::uint16_t getMinorVersion() const noexcept;
    /// The bytes of the input: the buffer's size, or the file's when it can be measured;
    /// UINT64_MAX for a file that cannot (a pipe). A reader bounds by it what the counts in a
    /// file may claim.
    std::uint64_t getInputSize() const noexcept;

    /// \name Stepping through packets (without a registry)
    /// @{
    /// Moves to the first chunk of the next packet. False at the end of the file or on error.
    bool nextPacket();
    std::string_view getPacketTypeName() const noexcept;
    /// The object reference of the current packet, 0 when it defines none.
    int getPacketReference() const noexcept;
    /// Index of the current packet (0 for the first); -1 before the first.
    std::int64_t getPacketIndex() const noexcept;
    /// Offset of the current packet's first byte.
    std::uint64_t getPacketOffset() const noexcept;
    /// Bytes of the current packet's payload (its chunks), 0 outside a packet.
    std::uint64_t getPacketPayloadLength() const noexcept;
    /// @}

    /// \name Chunks and sub-packets
    /// @{
    /// Skips what is left of the current chunk (of the innermost open packet or sub-packet)
    /// and moves to the next one. False when there is none (the chunk is absent).
    bool nextChunk();
    /// Enters the sub-packet that is the next value of the current chunk. False, without an
    /// error, when the chunk has no values left; false with an error when the next value is
    /// not a sub-packet.
    bool startSubPacket();
    /// Skips what is left of the sub-packet and continues after it in the enclosing chunk.
    /// Does nothing when no sub-packet is open (so a reader may pair it with a
    /// `startSubPacket` that found none).
    void endSubPacket();
    /// How many sub-packets are open (0 in the packet's own chunks).
    int getSubPacketDepth() const noexcept;
    /// @}

    /// \name Generic access
    /// For a reader that does not know the packet's layout (a file listing): what comes next,
    /// where, and a way past it.
    /// @{
    /// The kind of the next value of the current chunk; `ioValueKind::none` when the chunk
    /// has no values left (no error) and with an error when the next byte is no value tag.
    ioValueKind peekValueKind();
    /// Offset in the file of the next value (or of the end of the chunk).
    std::uint64_t getValueOffset() const noexcept;
    /// Bytes left in the current chunk.
    std::uint64_t getChunkLength() const noexcept;
    /// Skips the next value (a pointer, or one inside a skipped sub-packet, is still taken
    /// note of).
    void skipValue();
    /// @}

    /// \name Values
    /// Each reads the next value of the current chunk; a missing value or one of another kind
    /// is an error, and the result is then zero (false, empty). In a packet marked invalid
    /// every read returns zero without an error.
    /// @{
    std::int32_t readInt();
    std::uint32_t readUInt();
    std::int64_t readInt64();
    float readFloat();
    double readDouble();
    bool readBool();
    std::string readString();
    /// @}

    /// \name Arrays
    /// Read the next value, an array of the given element kind, into `values`, which has
    /// room for `room` elements. Return the number of elements read. An array longer than
    /// `room` is an error and nothing is written.
    /// @{
    /// The element count of the array that is the next value, without reading it (0 with an
    /// error when the next value is not an array).
    std::size_t peekArrayCount();
    std::size_t readFloatArray(float* values, std::size_t room);
    std::size_t readDoubleArray(double* values, std::size_t room);
    std::size_t readIntArray(std::int32_t* values, std::size_t room);
    std::size_t readUIntArray(std::uint32_t* values, std::size_t room);
    std::size_t readByteArray(std::uint8_t* values, std::size_t room);
    /// @}

    /// \name References
    /// @{
    /// Reads a pointer into `*slot`: null for the null reference, the object when its
    /// reference is defined, and otherwise null for now, with `slot` patched when the
    /// definition arrives (the slot must stay valid until the read ends, or until the
    /// packet is marked invalid, which drops its fix-ups). `kind` is the kind of object the
    /// slot holds: a reference defined with another kind is an error. False on error.
    bool readPointer(void** slot, int kind = 0);
    template <class T>
    bool readPointer(T** slot, int kind = 0) {
        return readPointer(reinterpret_cast<void**>(slot), kind);
    }
    /// Reads a pointer as its reference number (0 for null), without resolving it.
    int readReferenceId();
    /// Defines `object`, of the given kind, as the object of `reference` (usually
    /// `getPacketReference()`), patching the slots that waited for it. Defining a reference
    /// twice, or one the file never named, a null object or a negative kind is an error.
    void defineReference(int reference, void* object, int kind = 0);
    /// The kind an object was defined with; -1 when `reference` is not defined.
    int getReferenceKind(int reference) const noexcept;
    /// @}

protected:
    ioError locate(std::string message) const override;
    bool onPacketInvalid() override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

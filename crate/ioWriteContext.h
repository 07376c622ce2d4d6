#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "crate/CrateExport.h"
#include "crate/ioContext.h"

/// Writes a packet file, to a file or to memory.
///
/// A packet is opened with `startPacket(typeName, object)` and closed with `endPacket()`;
/// between them the values of its first chunk are written, `nextChunk()` starts the next
/// chunk, and `startSubPacket()`/`endSubPacket()` nest a sub-packet (with chunks of its own)
/// as one value. One packet is held in memory until `endPacket()` frames it (type, object
/// reference, length, checksum) and passes it on.
///
/// Objects are named by reference numbers given at first sight: the packet started for an
/// object, or the first pointer written to it, whichever comes first. A pointer may name an
/// object whose packet comes later (a forward reference).
///
/// Misuse (a value outside a packet, `endPacket` with a sub-packet open, a type name of 0 or
/// more than 255 bytes, sub-packets nested deeper than 255, a packet after `close`) and failed
/// output (a full disk) are errors: `ok()` turns false, the message says what happened, and
/// every later call does nothing.
///
/// `invalidPacket` discards the open packet: nothing of it reaches the output, and the type
/// and reference numbers it introduced are forgotten (to be given again later).
///
/// Cost: each value is appended to a packet buffer reused from packet to packet; `endPacket`
/// frames the packet straight into the output (a 1 MiB block for a file) and checksums it
/// once. Numbering an object is one look-up in an open-addressing map.
class CRATE_EXPORT ioWriteContext : public ioContext {
public:
    /// Writes to memory; the bytes are in `buffer()` after `close()`.
    ioWriteContext();
    /// Writes to the file at `path`, created or truncated; an error when it cannot be opened.
    explicit ioWriteContext(const std::string& path);
    /// Closes the file (see `close`).
    ~ioWriteContext() override;

    /// Flushes everything written and closes the file. Returns `ok()`. A packet still open
    /// is an error. Idempotent.
    bool close();
    /// The bytes written to memory so far (complete packets only); empty for a file.
    const std::vector<std::uint8_t>& buffer() const noexcept { return buffer_; }

    /// \name Packets, chunks and sub-packets
    /// @{
    /// Opens a packet of type `typeName` whose object (the thing other packets refer to) is
    /// `object`, or none when `object` is null.
    void startPacket(std::string_view typeName, const void* object = nullptr);
    void endPacket();
    /// Ends the current chunk of the innermost open packet or sub-packet and starts the next.
    void nextChunk();
    void startSubPacket();
    void endSubPacket();
    /// @}

    /// \name Values
    /// @{
    void writeInt(std::int32_t value);
    void writeUInt(std::uint32_t value);
    void writeInt64(std::int64_t value);
    void writeFloat(float value);
    void writeDouble(double value);
    void writeBool(bool value);
    /// A text; a null `text` is written as the empty string.
    void writeString(const char* text);
    void writeString(std::string_view text);
    /// A reference to `object` (null writes the null reference).
    void writePointer(const void* object);
    void writeNullPointer();
    /// Arrays: a count and the raw little-endian elements, written in one block.
    void writeFloatArray(const float* values, std::size_t count);
    void writeDoubleArray(const double* values, std::size_t count);
    void writeIntArray(const std::int32_t* values, std::size_t count);
    void writeUIntArray(const std::uint32_t* values, std::size_t count);
    void writeByteArray(const std::uint8_t* values, std::size_t count);
    /// @}

    /// The reference number of `object` (numbering it now at first sight); 0 for null.
    /// Numbers must reach the file in order: a number given here must be written (as a
    /// pointer or a packet's object) before any object first seen after it, or the later
    /// write is an error.
    int referenceOf(const void* object);

protected:
    ioError locate(std::string message) const override;
    bool onPacketInvalid() override;

private:
    /// True when a value may be written now; an error when no packet is open.
    bool acceptsValue(const char* what);
    void writeArray(std::uint8_t tag, const void* values, std::size_t count);

    struct Impl;
    std::unique_ptr<Impl> impl_;
    std::vector<std::uint8_t> buffer_;
};

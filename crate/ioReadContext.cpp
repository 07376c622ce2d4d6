#include "crate/ioReadContext.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <utility>

#include "crate/detail/ByteBuffer.h"
#include "crate/detail/Checksum.h"
#include "crate/detail/Wire.h"
#include "crate/ioClientReadContext.h"
#include "crate/ioPacketRegistry.h"
#include "crate/ioPacketType.h"

using namespace crateWire;

namespace {

/// File input arrives in blocks of this size (more when one packet is larger).
constexpr std::size_t inputBlockSize = std::size_t{1} << 20;

std::string kindText(std::uint8_t tag) {
    if (tag >= 1 && tag <= lastTag) {
        return ioValueKindName(static_cast<ioValueKind>(tag));
    }
    return "an unknown value (tag " + std::to_string(tag) + ")";
}

std::string arrayText(std::uint64_t count, std::uint8_t tag) {
    const char* element = "";
    switch (tag) {
        case tagFloatArray:
            element = " floats";
            break;
        case tagDoubleArray:
            element = " doubles";
            break;
        case tagInt32Array:
            element = " int32s";
            break;
        case tagUInt32Array:
            element = " uint32s";
            break;
        default:
            element = " bytes";
            break;
    }
    return "array of " + std::to_string(count) + element;
}

/// A type name met in the file, with the registered type it stands for in this read.
struct TypeSlot {
    std::string name;
    ioPacketType* type = nullptr;
    bool resolved = false;
    bool used = false;
};

/// An open packet or sub-packet: where it ends, and where its current chunk ends.
struct Level {
    const std::uint8_t* end;
    const std::uint8_t* chunkEnd;
};

constexpr std::uint32_t noFixup = UINT32_MAX;

/// What the reader knows of one reference number (16 bytes: a file may name millions).
struct ReferenceInfo {
    int kind = -1;
    std::uint32_t pendingHead = noFixup; // newest fix-up waiting for the definition
    std::uint32_t definer = 0;           // 1 + the type slot of the defining packet, 0: none
    bool named = false;                  // a pointer read named it
};

enum class FixupState : std::uint8_t { pending, patched, dropped, free };

/// A pointer slot waiting for its reference to be defined (24 bytes). The fix-ups of one
/// reference form a list through `next`, newest first; spent ones are reused through a
/// free list, so the table holds about as many as wait at one time.
struct Fixup {
    void** slot;
    std::uint32_t next;
    int reference;
    int kind;
    std::uint32_t reader : 29; // 1 + the type slot of the packet that read the pointer
    std::uint32_t fresh : 1;   // made by the current packet
    std::uint32_t state : 2;

    FixupState getState() const noexcept { return static_cast<FixupState>(state); }
    void setState(FixupState s) noexcept { state = static_cast<std::uint32_t>(s) & 3u; }
};

/// A definition made by the current packet, undone when the packet is marked invalid.
struct DefinitionLog {
    int reference;
    std::uint32_t oldHead;
};

} // namespace

struct ioReadContext::Impl {
    // The bytes: all of a memory buffer, or a window on the file.
    std::FILE* file = nullptr;
    ByteBuffer window;
    const std::uint8_t* base = nullptr;
    std::size_t begin = 0; // the cursor: the next unread byte
    std::size_t end = 0;   // end of the valid bytes
    std::uint64_t baseOffset = 0;
    bool sizeKnown = false;
    std::uint64_t size = 0;
    bool readFailed = false;
    int readErrno = 0; // why, when the file could not be read

    std::vector<TypeSlot> types;

    // The current packet.
    bool inPacket = false;
    std::int64_t index = -1;
    std::size_t typeSlot = SIZE_MAX;
    int objectReference = 0;
    std::uint64_t packetOffset = 0;
    const std::uint8_t* packetStart = nullptr;
    std::uint64_t payloadLength = 0;
    std::vector<Level> levels;
    const std::uint8_t* pos = nullptr;
    ioPacketType* currentType = nullptr;

    // References.
    std::vector<ReferenceInfo> references{ReferenceInfo{}};
    int maxReference = 0;
    std::vector<Fixup> fixups;
    std::uint32_t freeFixups = noFixup;
    std::vector<std::uint32_t> fixupsMade;    // by the current packet
    std::vector<std::uint32_t> fixupsPatched; // by the current packet's definitions
    std::vector<DefinitionLog> packetDefinitions;

    std::uint64_t skipped = 0;
    std::uint16_t minorVersion = 0;
    ioReadContext* self = nullptr;

    std::uint64_t cursorOffset() const noexcept { return baseOffset + begin; }
    std::uint64_t offsetOf(const std::uint8_t* at) const noexcept {
        return packetOffset + static_cast<std::uint64_t>(at - packetStart);
    }

    /// Makes up to `wanted` bytes available at the cursor; returns how many are.
    std::size_t fill(std::size_t wanted);

    std::string typeName() const {
        return typeSlot < types.size() ? types[typeSlot].name : std::string();
    }
    /// Records the error of the current packet found at `where` (in the packet's bytes).
    void fault(const std::uint8_t* where, std::string message) {
        self->fail(ioError{std::move(message), index, typeName(), offsetOf(where)});
    }
    bool parsePacket();
    bool openChunk();
    /// True when values may be read now; an error when no packet is open.
    bool readable(const char* what);
    /// The bytes after the tag of the next value, which must be of kind `tag`; null (with an
    /// error) when it is not, or when nothing may be read.
    const std::uint8_t* beginValue(std::uint8_t tag);
    /// The count of the array at the cursor, whose bytes must fit its chunk; sets `data` to
    /// its elements. False with an error otherwise.
    bool arrayAt(std::uint8_t tag, std::uint64_t& count, const std::uint8_t*& data);
    std::size_t readArray(std::uint8_t tag, void* values, std::size_t room);
    template <class T>
    T readScalar(std::uint8_t tag) {
        const std::uint8_t* at = beginValue(tag);
        if (at == nullptr) {
            return T{};
        }
        if (static_cast<std::size_t>(levels.back().chunkEnd - at) < sizeof(T)) {
            fault(pos, std::string("the ") + kindText(tag) + " runs past the end of its chunk");
            return T{};
        }
        pos = at + sizeof(T);
        return load<T>(at);
    }
    /// The reference of the pointer at the cursor, -1 on failure; a reference new to the file
    /// must be the next number.
    std::int64_t readReference();
    void rollBackPacket();
    /// Takes note of reference `reference` met in the file at `where`: a new one must be the
    /// next number. False with an error otherwise.
    bool meetReference(std::uint64_t reference, const std::uint8_t* where);
    /// Walks values in [from, to) (or chunks of values, when `chunked`) without reading them,
    /// for the references their pointers name. False with an error when one is malformed.
    bool scan(const std::uint8_t* from, const std::uint8_t* to, bool chunked, std::size_t depth);
    /// The end of the value at `at` (its tag known valid), or null with an error when it runs
    /// past `end`.
    const std::uint8_t* valueEnd(const std::uint8_t* at, const std::uint8_t* end);
    /// Skips the rest of the open packet (walking it for references) and closes it.
    bool finishPacket();
};

std::size_t ioReadContext::Impl::fill(std::size_t wanted) {
    if (end - begin >= wanted || file == nullptr) {
        return std::min(end - begin, wanted);
    }
    if (sizeKnown) {
        // Never ask for more than the file holds: its size proves every length.
        const std::uint64_t left = size - cursorOffset();
        if (wanted > left) {
            wanted = static_cast<std::size_t>(left);
        }
    }
    if (begin != 0) {
        std::memmove(window.data(), window.data() + begin, end - begin);
        baseOffset += begin;
        end -= begin;
        begin = 0;
    }
    window.resize(end);
    while (end < wanted) {
        if (window.capacity() == end) {
            // Grow at most twice over what was read, so an unproven length costs nothing.
            window.reserve(std::max(inputBlockSize, std::min(wanted, 2 * end)));
        }
        const std::size_t room = window.capacity() - end;
        const std::size_t got = std::fread(window.data() + end, 1, room, file);
        end += got;
        window.resize(end);
        if (got == 0) {
            readFailed = std::ferror(file) != 0;
            readErrno = errno;
            break;
        }
    }
    base = window.data();
    return std::min(end - begin, wanted);
}

// ---- opening -------------------------------------------------------------------------------

namespace {

std::string headerProblem(const std::uint8_t* header, std::size_t available,
                          std::uint64_t& offset) {
    offset = 0;
    if (available < fileHeaderSize) {
        offset = available;
        return available == 0 ? "empty file: not a packet file"
                              : "file header cut short: not a packet file";
    }
    if (std::memcmp(header, magic, 4) != 0) {
        return "not a packet file (no \"FWPK\" at its start)";
    }
    const std::uint16_t major = load<std::uint16_t>(header + 4);
    if (major != majorVersion) {
        offset = 4;
        return "packet file version " + std::to_string(major) + "." +
               std::to_string(load<std::uint16_t>(header + 6)) +
               " is not supported (this reader reads version " + std::to_string(majorVersion) +
               ".x)";
    }
    return {};
}

} // namespace

ioReadContext::ioReadContext(const std::string& path) : impl_(std::make_unique<Impl>()) {
    Impl& d = *impl_;
    d.self = this;
    d.levels.reserve(maxSubPacketDepth + 2);
    definitions_.push_back(nullptr);
    d.file = std::fopen(path.c_str(), "rb");
    if (d.file == nullptr) {
        fail(ioError{"cannot open '" + path + "': " + std::strerror(errno), -1, {}, 0});
        return;
    }
    if (std::fseek(d.file, 0, SEEK_END) == 0) {
        const long size = std::ftell(d.file);
        if (size >= 0 && std::fseek(d.file, 0, SEEK_SET) == 0) {
            d.sizeKnown = true;
            d.size = static_cast<std::uint64_t>(size);
        }
    }
    if (!d.sizeKnown) {
        std::clearerr(d.file);
    }
    d.window.reserve(d.sizeKnown ? static_cast<std::size_t>(std::min<std::uint64_t>(
                                       inputBlockSize, std::max<std::uint64_t>(d.size, 64)))
                                 : inputBlockSize);
    const std::size_t available = d.fill(fileHeaderSize);
    if (d.readFailed) {
        fail(ioError{"cannot read '" + path + "': " + std::strerror(d.readErrno), -1, {}, 0});
        return;
    }
    std::uint64_t offset = 0;
    std::string problem = headerProblem(d.base + d.begin, available, offset);
    if (!problem.empty()) {
        fail(ioError{std::move(problem), -1, {}, offset});
        return;
    }
    d.minorVersion = load<std::uint16_t>(d.base + d.begin + 6);
    d.begin += fileHeaderSize;
}

ioReadContext::ioReadContext(const void* data, std::size_t size) : impl_(std::make_unique<Impl>()) {
    Impl& d = *impl_;
    d.self = this;
    d.levels.reserve(maxSubPacketDepth + 2);
    definitions_.push_back(nullptr);
    d.base = static_cast<const std::uint8_t*>(data);
    d.end = data == nullptr ? 0 : size;
    d.sizeKnown = true;
    d.size = d.end;
    std::uint64_t offset = 0;
    std::string problem = headerProblem(d.base, d.end, offset);
    if (!problem.empty()) {
        fail(ioError{std::move(problem), -1, {}, offset});
        return;
    }
    d.minorVersion = load<std::uint16_t>(d.base + 6);
    d.begin = fileHeaderSize;
}

ioReadContext::~ioReadContext() {
    if (impl_->file != nullptr) {
        std::fclose(impl_->file);
    }
}

ioError ioReadContext::locate(std::string message) const {
    const Impl& d = *impl_;
    ioError error{std::move(message), d.index, {}, d.packetOffset};
    if (d.typeSlot < d.types.size()) {
        error.typeName = d.types[d.typeSlot].name;
    }
    return error;
}

// ---- packets -------------------------------------------------------------------------------

namespace {

const char* varintProblem(VarintStatus status) {
    return status == VarintStatus::truncated ? " runs past the end of the file"
                                             : " is not a valid varint";
}

} // namespace

bool ioReadContext::nextPacket() {
    Impl& d = *impl_;
    if (!ok()) {
        return false;
    }
    if (!d.finishPacket()) {
        return false;
    }
    d.typeSlot = SIZE_MAX;
    setPacketInvalid(false);
    if (d.fill(1) == 0) {
        if (d.readFailed) {
            fail(ioError{std::string("cannot read the file: ") + std::strerror(d.readErrno),
                         d.index,
                         {},
                         d.cursorOffset()});
        }
        return false; // the end of the file
    }
    return d.parsePacket();
}

bool ioReadContext::Impl::parsePacket() {
    // From here on every error belongs to the packet that starts at the cursor.
    ++index;
    packetOffset = cursorOffset();
    const std::size_t available = fill(maxPacketPrefix);
    packetStart = base + begin;
    const std::uint8_t* at = packetStart;
    const std::uint8_t* limit = at + available;

    std::uint64_t typeId = 0;
    VarintStatus status = loadVarint(at, limit, typeId);
    if (status != VarintStatus::ok) {
        fault(at, std::string("the type id") + varintProblem(status));
        return false;
    }
    std::size_t nameAt = 0;
    std::size_t nameLength = 0;
    if (typeId == 0) {
        std::uint64_t length = 0;
        const std::uint8_t* lengthAt = at;
        status = loadVarint(at, limit, length);
        if (status != VarintStatus::ok) {
            fault(lengthAt, std::string("the type name length") + varintProblem(status));
            return false;
        }
        if (length == 0 || length > maxTypeNameLength) {
            fault(lengthAt,
                  "type name of " + std::to_string(length) + " bytes (a name has 1 to 255)");
            return false;
        }
        if (static_cast<std::uint64_t>(limit - at) < length) {
            fault(limit, "the type name runs past the end of the file");
            return false;
        }
        nameAt = static_cast<std::size_t>(at - packetStart);
        nameLength = static_cast<std::size_t>(length);
        at += nameLength;
    } else if (typeId <= types.size()) {
        typeSlot = static_cast<std::size_t>(typeId - 1); // named in errors from here on
    }
    std::uint64_t reference = 0;
    const std::size_t referenceAt = static_cast<std::size_t>(at - packetStart);
    status = loadVarint(at, limit, reference);
    if (status != VarintStatus::ok) {
        fault(at, std::string("the object reference") + varintProblem(status));
        return false;
    }
    std::uint64_t length = 0;
    const std::uint8_t* lengthAt = at;
    status = loadVarint(at, limit, length);
    if (status != VarintStatus::ok) {
        fault(at, std::string("the payload length") + varintProblem(status));
        return false;
    }
    const std::size_t prefixLength = static_cast<std::size_t>(at - packetStart);

    // The whole packet must be in the file before any length in it is believed.
    const std::uint64_t left = sizeKnown ? size - packetOffset : UINT64_MAX;
    if (length > left - prefixLength || left - prefixLength - length < checksumSize ||
        length > SIZE_MAX / 4) {
        std::string message =
            "payload of " + std::to_string(length) + " bytes runs past the end of the file";
        if (sizeKnown) {
            message += " (" + std::to_string(left - prefixLength) + " bytes left)";
        }
        fault(lengthAt, std::move(message));
        return false;
    }
    const std::size_t bodyLength = prefixLength + static_cast<std::size_t>(length);
    const std::size_t total = bodyLength + checksumSize;
    const std::size_t got = fill(total);
    packetStart = base + begin; // the window may have moved
    if (got < total) {
        fault(packetStart + got,
              readFailed ? std::string("cannot read the file: ") + std::strerror(readErrno)
                         : std::string("the packet runs past the end of the "
                                       "file"));
        return false;
    }
    if (checksum(packetStart, bodyLength) != load<std::uint64_t>(packetStart + bodyLength)) {
        fault(packetStart + bodyLength, "checksum mismatch");
        return false;
    }

    // Proven by its checksum: now what the prefix says may take effect.
    if (typeId == 0) {
        if (types.size() >= (std::size_t{1} << 29) - 2) {
            fault(packetStart, "more than 536870910 packet types");
            return false;
        }
        types.push_back(
            TypeSlot{std::string(reinterpret_cast<const char*>(packetStart + nameAt), nameLength)});
        typeSlot = types.size() - 1;
    } else if (typeId > types.size()) {
        fault(packetStart, "unknown type id " + std::to_string(typeId) + " (" +
                               std::to_string(types.size()) + " types introduced so far)");
        return false;
    }
    if (!meetReference(reference, packetStart + referenceAt)) {
        return false;
    }
    objectReference = static_cast<int>(reference);
    payloadLength = length;
    begin += total;

    const std::uint8_t* payload = packetStart + prefixLength;
    levels.push_back(Level{payload + length, payload});
    pos = payload;
    if (!openChunk()) {
        return false;
    }
    inPacket = true;
    return true;
}

bool ioReadContext::Impl::openChunk() {
    Level& level = levels.back();
    const char* container = levels.size() == 1 ? "packet" : "sub-packet";
    if (pos == level.end) {
        fault(pos, std::string("the ") + container + " has no first chunk");
        return false;
    }
    std::uint64_t length = 0;
    const std::uint8_t* at = pos;
    const VarintStatus status = loadVarint(at, level.end, length);
    if (status != VarintStatus::ok || length > static_cast<std::uint64_t>(level.end - at)) {
        fault(pos, std::string("a chunk runs past the end of its ") + container);
        return false;
    }
    level.chunkEnd = at + length;
    pos = at;
    return true;
}

std::string_view ioReadContext::getPacketTypeName() const noexcept {
    const Impl& d = *impl_;
    return d.inPacket ? std::string_view(d.types[d.typeSlot].name) : std::string_view();
}

int ioReadContext::getPacketReference() const noexcept {
    return impl_->inPacket ? impl_->objectReference : 0;
}

std::uint16_t ioReadContext::getMinorVersion() const noexcept { return impl_->minorVersion; }

std::uint64_t ioReadContext::getInputSize() const noexcept {
    return impl_->sizeKnown ? impl_->size : UINT64_MAX;
}

std::int64_t ioReadContext::getPacketIndex() const noexcept { return impl_->index; }

std::uint64_t ioReadContext::getPacketOffset() const noexcept { return impl_->packetOffset; }

std::uint64_t ioReadContext::getPacketPayloadLength() const noexcept {
    return impl_->inPacket ? impl_->payloadLength : 0;
}

std::uint64_t ioReadContext::skippedPacketCount() const noexcept { return impl_->skipped; }

// ---- chunks and sub-packets ----------------------------------------------------------------

bool ioReadContext::Impl::readable(const char* what) {
    if (!self->ok() || self->isPacketInvalid()) {
        return false;
    }
    if (!inPacket) {
        self->fail(ioError{std::string(what) + " outside a packet", index, {}, cursorOffset()});
        return false;
    }
    return true;
}

bool ioReadContext::nextChunk() {
    Impl& d = *impl_;
    if (!d.readable("nextChunk")) {
        return false;
    }
    Level& level = d.levels.back();
    if (!d.scan(d.pos, level.chunkEnd, false, d.levels.size() - 1)) {
        return false;
    }
    d.pos = level.chunkEnd;
    if (d.pos == level.end) {
        return false; // absent: the writer wrote no more chunks here
    }
    return d.openChunk();
}

bool ioReadContext::startSubPacket() {
    Impl& d = *impl_;
    if (!d.readable("startSubPacket")) {
        return false;
    }
    if (d.pos == d.levels.back().chunkEnd) {
        return false; // the chunk holds no more values
    }
    if (*d.pos != tagSubPacket) {
        d.fault(d.pos, "expected a sub-packet, found " + kindText(*d.pos));
        return false;
    }
    if (d.levels.size() > maxSubPacketDepth) {
        d.fault(d.pos, "sub-packets nested deeper than 255");
        return false;
    }
    const std::uint8_t* at = d.pos + 1;
    std::uint64_t length = 0;
    const std::uint8_t* chunkEnd = d.levels.back().chunkEnd;
    if (loadVarint(at, chunkEnd, length) != VarintStatus::ok ||
        length > static_cast<std::uint64_t>(chunkEnd - at)) {
        d.fault(d.pos, "a sub-packet runs past the end of its chunk");
        return false;
    }
    d.levels.push_back(Level{at + length, at});
    d.pos = at;
    return d.openChunk();
}

void ioReadContext::endSubPacket() {
    Impl& d = *impl_;
    if (!d.inPacket || d.levels.size() < 2 || !ok() || isPacketInvalid()) {
        return; // no sub-packet open (its start found none): nothing to leave
    }
    const Level level = d.levels.back();
    if (!d.scan(d.pos, level.chunkEnd, false, d.levels.size() - 1) ||
        !d.scan(level.chunkEnd, level.end, true, d.levels.size() - 1)) {
        return;
    }
    d.pos = level.end;
    d.levels.pop_back();
}

int ioReadContext::getSubPacketDepth() const noexcept {
    const Impl& d = *impl_;
    return d.inPacket ? static_cast<int>(d.levels.size()) - 1 : 0;
}

// ---- values --------------------------------------------------------------------------------

const std::uint8_t* ioReadContext::Impl::beginValue(std::uint8_t tag) {
    if (!readable(ioValueKindName(static_cast<ioValueKind>(tag)))) {
        return nullptr;
    }
    if (pos == levels.back().chunkEnd) {
        fault(pos, std::string("expected ") + kindText(tag) + ", but the chunk has no values left");
        return nullptr;
    }
    if (*pos != tag) {
        fault(pos, std::string("expected ") + kindText(tag) + ", found " + kindText(*pos));
        return nullptr;
    }
    return pos + 1;
}

std::int32_t ioReadContext::readInt() { return impl_->readScalar<std::int32_t>(tagInt32); }

std::uint32_t ioReadContext::readUInt() { return impl_->readScalar<std::uint32_t>(tagUInt32); }

std::int64_t ioReadContext::readInt64() { return impl_->readScalar<std::int64_t>(tagInt64); }

float ioReadContext::readFloat() { return impl_->readScalar<float>(tagFloat); }

double ioReadContext::readDouble() { return impl_->readScalar<double>(tagDouble); }

bool ioReadContext::readBool() {
    Impl& d = *impl_;
    const std::uint8_t* valueAt = d.pos;
    const std::uint8_t byte = d.readScalar<std::uint8_t>(tagBool);
    if (byte > 1) {
        d.fault(valueAt, "bool of value " + std::to_string(byte) + " (a bool is 0 or 1)");
        return false;
    }
    return byte == 1;
}

std::string ioReadContext::readString() {
    Impl& d = *impl_;
    const std::uint8_t* at = d.beginValue(tagString);
    if (at == nullptr) {
        return {};
    }
    std::uint64_t length = 0;
    const std::uint8_t* chunkEnd = d.levels.back().chunkEnd;
    if (loadVarint(at, chunkEnd, length) != VarintStatus::ok ||
        length > static_cast<std::uint64_t>(chunkEnd - at)) {
        d.fault(d.pos, "the string runs past the end of its chunk");
        return {};
    }
    d.pos = at + length;
    return std::string(reinterpret_cast<const char*>(at), static_cast<std::size_t>(length));
}

bool ioReadContext::Impl::arrayAt(std::uint8_t tag, std::uint64_t& count,
                                  const std::uint8_t*& data) {
    const std::uint8_t* at = beginValue(tag);
    if (at == nullptr) {
        return false;
    }
    const std::uint8_t* chunkEnd = levels.back().chunkEnd;
    if (loadVarint(at, chunkEnd, count) != VarintStatus::ok ||
        count > static_cast<std::uint64_t>(chunkEnd - at) / arrayElementSize(tag)) {
        fault(pos, "the " + (count == 0 ? std::string("array") : arrayText(count, tag)) +
                       " runs past the end of its chunk");
        return false;
    }
    data = at;
    return true;
}

std::size_t ioReadContext::Impl::readArray(std::uint8_t tag, void* values, std::size_t room) {
    std::uint64_t count = 0;
    const std::uint8_t* data = nullptr;
    if (!arrayAt(tag, count, data)) {
        return 0;
    }
    if (count > room) {
        fault(pos, arrayText(count, tag) + " exceeds the room of " + std::to_string(room));
        return 0;
    }
    const std::size_t elementSize = arrayElementSize(tag);
    copyLittleEndian(values, data, static_cast<std::size_t>(count), elementSize);
    pos = data + count * elementSize;
    return static_cast<std::size_t>(count);
}

std::size_t ioReadContext::peekArrayCount() {
    Impl& d = *impl_;
    if (!d.readable("array")) {
        return 0;
    }
    const std::uint8_t tag = d.pos < d.levels.back().chunkEnd ? *d.pos : 0;
    if (arrayElementSize(tag) == 0) {
        d.fault(d.pos, tag == 0 || d.pos == d.levels.back().chunkEnd
                           ? std::string("expected an array, but the chunk has no values left")
                           : "expected an array, found " + kindText(tag));
        return 0;
    }
    std::uint64_t count = 0;
    const std::uint8_t* data = nullptr;
    return d.arrayAt(tag, count, data) ? static_cast<std::size_t>(count) : 0;
}

std::size_t ioReadContext::readFloatArray(float* values, std::size_t room) {
    return impl_->readArray(tagFloatArray, values, room);
}

std::size_t ioReadContext::readDoubleArray(double* values, std::size_t room) {
    return impl_->readArray(tagDoubleArray, values, room);
}

std::size_t ioReadContext::readIntArray(std::int32_t* values, std::size_t room) {
    return impl_->readArray(tagInt32Array, values, room);
}

std::size_t ioReadContext::readUIntArray(std::uint32_t* values, std::size_t room) {
    return impl_->readArray(tagUInt32Array, values, room);
}

std::size_t ioReadContext::readByteArray(std::uint8_t* values, std::size_t room) {
    return impl_->readArray(tagByteArray, values, room);
}

// ---- generic access ------------------------------------------------------------------------

ioValueKind ioReadContext::peekValueKind() {
    Impl& d = *impl_;
    if (!d.readable("a value")) {
        return ioValueKind::none;
    }
    if (d.pos == d.levels.back().chunkEnd) {
        return ioValueKind::none;
    }
    const std::uint8_t tag = *d.pos;
    if (tag == 0 || tag > lastTag) {
        d.fault(d.pos, "unknown value tag " + std::to_string(tag));
        return ioValueKind::none;
    }
    return static_cast<ioValueKind>(tag);
}

std::uint64_t ioReadContext::getValueOffset() const noexcept {
    const Impl& d = *impl_;
    return d.inPacket ? d.offsetOf(d.pos) : 0;
}

std::uint64_t ioReadContext::getChunkLength() const noexcept {
    const Impl& d = *impl_;
    if (!d.inPacket || d.levels.empty()) {
        return 0;
    }
    return static_cast<std::uint64_t>(d.levels.back().chunkEnd - d.pos);
}

void ioReadContext::skipValue() {
    Impl& d = *impl_;
    if (peekValueKind() == ioValueKind::none) {
        return;
    }
    // One value is a chunk's worth of values that ends where that value does.
    const std::uint8_t* chunkEnd = d.levels.back().chunkEnd;
    const std::uint8_t* at = d.pos;
    const std::uint8_t* next = d.valueEnd(at, chunkEnd);
    if (next != nullptr && d.scan(at, next, false, d.levels.size() - 1)) {
        d.pos = next;
    }
}

// ---- skipping ------------------------------------------------------------------------------

bool ioReadContext::Impl::meetReference(std::uint64_t reference, const std::uint8_t* where) {
    if (reference <= static_cast<std::uint64_t>(maxReference)) {
        return true;
    }
    if (reference != static_cast<std::uint64_t>(maxReference) + 1 || maxReference == INT_MAX) {
        fault(where, "reference " + std::to_string(reference) +
                         " out of sequence (the next new reference is " +
                         std::to_string(static_cast<std::int64_t>(maxReference) + 1) + ")");
        return false;
    }
    ++maxReference;
    references.emplace_back();
    self->definitions_.push_back(nullptr);
    return true;
}

bool ioReadContext::Impl::scan(const std::uint8_t* from, const std::uint8_t* to, bool chunked,
                               std::size_t depth) {
    const std::uint8_t* at = from;
    while (at < to) {
        const std::uint8_t* chunkEnd = to;
        if (chunked) {
            std::uint64_t length = 0;
            const std::uint8_t* lengthAt = at;
            if (loadVarint(at, to, length) != VarintStatus::ok ||
                length > static_cast<std::uint64_t>(to - at)) {
                fault(lengthAt, "a chunk runs past the end of its packet");
                return false;
            }
            chunkEnd = at + length;
        }
        // The values of one chunk (or the rest of the current one).
        while (at < chunkEnd) {
            const std::uint8_t tag = *at;
            if (tag == 0 || tag > lastTag) {
                fault(at, "unknown value tag " + std::to_string(tag));
                return false;
            }
            const std::uint8_t* next = valueEnd(at, chunkEnd);
            if (next == nullptr) {
                return false;
            }
            if (tag == tagPointer) {
                std::uint64_t reference = 0;
                const std::uint8_t* number = at + 1;
                loadVarint(number, next, reference);
                if (!meetReference(reference, at)) {
                    return false;
                }
                if (reference != 0) {
                    references[static_cast<std::size_t>(reference)].named = true;
                }
            } else if (tag == tagSubPacket) {
                const std::uint8_t* inner = at + 1;
                std::uint64_t length = 0;
                loadVarint(inner, next, length);
                if (depth >= maxSubPacketDepth) {
                    fault(at, "sub-packets nested deeper than 255");
                    return false;
                }
                if (inner == next) {
                    fault(inner, "the sub-packet has no first chunk");
                    return false;
                }
                if (!scan(inner, next, true, depth + 1)) {
                    return false;
                }
            }
            at = next;
        }
    }
    return true;
}

bool ioReadContext::Impl::finishPacket() {
    const bool wasOpen = inPacket;
    inPacket = false;
    packetDefinitions.clear();
    for (const std::uint32_t i : fixupsMade) {
        fixups[i].fresh = 0;
    }
    fixupsMade.clear();
    for (const std::uint32_t i : fixupsPatched) { // spent: free for the next forward pointer
        fixups[i].setState(FixupState::free);
        fixups[i].next = freeFixups;
        freeFixups = i;
    }
    fixupsPatched.clear();
    if (!wasOpen || !self->ok()) {
        levels.clear();
        return true;
    }
    // The rest of the innermost chunk, the rest of its packet or sub-packet, and so outwards.
    while (!levels.empty()) {
        const Level level = levels.back();
        const std::size_t depth = levels.size() - 1;
        if (!scan(pos, level.chunkEnd, false, depth) ||
            !scan(level.chunkEnd, level.end, true, depth)) {
            levels.clear();
            return false;
        }
        pos = level.end;
        levels.pop_back();
    }
    return true;
}

// ---- references ----------------------------------------------------------------------------

std::int64_t ioReadContext::Impl::readReference() {
    const std::uint8_t* at = beginValue(tagPointer);
    if (at == nullptr) {
        return -1;
    }
    std::uint64_t reference = 0;
    if (loadVarint(at, levels.back().chunkEnd, reference) != VarintStatus::ok) {
        fault(pos, "the pointer runs past the end of its chunk");
        return -1;
    }
    if (!meetReference(reference, pos)) {
        return -1;
    }
    pos = at;
    if (reference != 0) {
        references[static_cast<std::size_t>(reference)].named = true;
    }
    return static_cast<std::int64_t>(reference);
}

int ioReadContext::readReferenceId() {
    const std::int64_t reference = impl_->readReference();
    return reference < 0 ? 0 : static_cast<int>(reference);
}

bool ioReadContext::readPointer(void** slot, int kind) {
    Impl& d = *impl_;
    if (slot != nullptr) {
        *slot = nullptr;
    }
    const std::int64_t reference = d.readReference();
    if (reference <= 0) {
        return reference == 0;
    }
    const std::size_t r = static_cast<std::size_t>(reference);
    void* object = definitions_[r];
    if (object != nullptr) {
        if (d.references[r].kind != kind) {
            d.fault(d.pos, "pointer of kind " + std::to_string(kind) + " to reference " +
                               std::to_string(reference) + ", an object of kind " +
                               std::to_string(d.references[r].kind));
            return false;
        }
        if (slot != nullptr) {
            *slot = object;
        }
        return true;
    }
    if (slot != nullptr) {
        // Patched when a packet defines the reference (or dropped with an invalid packet).
        std::uint32_t index = d.freeFixups;
        if (index != noFixup) {
            d.freeFixups = d.fixups[index].next;
        } else if (d.fixups.size() < noFixup) {
            index = static_cast<std::uint32_t>(d.fixups.size());
            d.fixups.emplace_back();
        } else {
            d.fault(d.pos, "more than 4294967294 pointers wait for their objects");
            return false;
        }
        ReferenceInfo& info = d.references[r];
        const std::uint32_t reader =
            d.currentType != nullptr ? static_cast<std::uint32_t>(d.typeSlot) + 1 : 0;
        d.fixups[index] = Fixup{slot, info.pendingHead, static_cast<int>(r), kind, reader, 1, 0};
        d.fixups[index].setState(FixupState::pending);
        info.pendingHead = index;
        d.fixupsMade.push_back(index);
    }
    return true;
}

void ioReadContext::defineReference(int reference, void* object, int kind) {
    Impl& d = *impl_;
    if (!d.readable("defineReference")) {
        return;
    }
    const std::uint64_t at = d.packetOffset;
    auto problem = [&](std::string message) {
        fail(ioError{std::move(message), d.index, d.typeName(), at});
    };
    if (reference <= 0 || reference > d.maxReference) {
        problem("defines reference " + std::to_string(reference) + ", which the file never named");
        return;
    }
    const std::size_t r = static_cast<std::size_t>(reference);
    if (definitions_[r] != nullptr) {
        problem("defines reference " + std::to_string(reference) + " twice");
        return;
    }
    if (object == nullptr || kind < 0) {
        problem(
            "defines reference " + std::to_string(reference) +
            (object == nullptr ? " as null" : " with the negative kind " + std::to_string(kind)));
        return;
    }
    ReferenceInfo& info = d.references[r];
    const std::size_t patchedBefore = d.fixupsPatched.size();
    for (std::uint32_t i = info.pendingHead; i != noFixup; i = d.fixups[i].next) {
        Fixup& fixup = d.fixups[i];
        if (fixup.getState() != FixupState::pending) {
            continue;
        }
        if (fixup.kind != kind) {
            // Leave no slot holding an object of another kind than it asked for.
            for (std::size_t k = patchedBefore; k < d.fixupsPatched.size(); ++k) {
                Fixup& patched = d.fixups[d.fixupsPatched[k]];
                *patched.slot = nullptr;
                patched.setState(FixupState::pending);
            }
            d.fixupsPatched.resize(patchedBefore);
            problem("defines reference " + std::to_string(reference) + " as an object of kind " +
                    std::to_string(kind) + ", which a pointer read as kind " +
                    std::to_string(fixup.kind));
            return;
        }
        *fixup.slot = object;
        fixup.setState(FixupState::patched);
        d.fixupsPatched.push_back(i);
    }
    d.packetDefinitions.push_back(DefinitionLog{reference, info.pendingHead});
    info.pendingHead = noFixup;
    info.kind = kind;
    info.definer = d.currentType != nullptr ? static_cast<std::uint32_t>(d.typeSlot) + 1 : 0;
    definitions_[r] = object;
}

int ioReadContext::getReferenceKind(int reference) const noexcept {
    const Impl& d = *impl_;
    if (reference <= 0 || reference > d.maxReference ||
        definitions_[static_cast<std::size_t>(reference)] == nullptr) {
        return -1;
    }
    return d.references[static_cast<std::size_t>(reference)].kind;
}

void ioReadContext::Impl::rollBackPacket() {
    // Definitions made by the packet are undone: the slots they patched in earlier packets
    // wait again, and the slots of this packet's own (discarded) objects are never touched.
    for (auto log = packetDefinitions.rbegin(); log != packetDefinitions.rend(); ++log) {
        const std::size_t r = static_cast<std::size_t>(log->reference);
        for (std::uint32_t i = log->oldHead; i != noFixup; i = fixups[i].next) {
            Fixup& fixup = fixups[i];
            if (fixup.getState() == FixupState::patched) {
                if (fixup.fresh == 0) {
                    *fixup.slot = nullptr;
                }
                fixup.setState(FixupState::pending);
            }
        }
        references[r].pendingHead = log->oldHead;
        references[r].kind = -1;
        references[r].definer = 0;
        self->definitions_[r] = nullptr;
    }
    packetDefinitions.clear();
    fixupsPatched.clear();
    // The packet's own fix-ups are the newest of their lists: unlink them, then free them.
    for (const std::uint32_t i : fixupsMade) {
        fixups[i].setState(FixupState::dropped);
    }
    for (const std::uint32_t i : fixupsMade) {
        std::uint32_t& head = references[static_cast<std::size_t>(fixups[i].reference)].pendingHead;
        while (head != noFixup && fixups[head].getState() == FixupState::dropped) {
            head = fixups[head].next;
        }
    }
    for (const std::uint32_t i : fixupsMade) {
        fixups[i].setState(FixupState::free);
        fixups[i].fresh = 0;
        fixups[i].next = freeFixups;
        freeFixups = i;
    }
    fixupsMade.clear();
}

bool ioReadContext::onPacketInvalid() {
    Impl& d = *impl_;
    if (!d.inPacket) {
        return false;
    }
    d.rollBackPacket();
    return true;
}

// ---- the whole read ------------------------------------------------------------------------

bool ioReadContext::readAll(ioPacketRegistry& registry, ioClientReadContext* client) {
    Impl& d = *impl_;
    for (TypeSlot& slot : d.types) {
        slot.resolved = false;
        slot.used = false;
    }
    while (nextPacket()) {
        TypeSlot& slot = d.types[d.typeSlot];
        if (!slot.resolved) { // one look-up by name per type, not per packet
            slot.type = registry.findType(slot.name);
            slot.resolved = true;
        }
        if (slot.type == nullptr) {
            ++d.skipped;
            continue;
        }
        ioPacketType& type = *slot.type;
        slot.used = true;
        d.currentType = &type;
        if (client != nullptr) {
            client->prePacketRead(type);
        }
        const bool accepted = type.readPacket(*this);
        if (!accepted && ok() && !isPacketInvalid()) {
            invalidPacket("not accepted by its reader");
        }
        if (client != nullptr) {
            client->postPacketRead(type, ok() && !isPacketInvalid());
        }
        d.currentType = nullptr;
    }
    d.finishPacket();
    d.currentType = nullptr;

    if (ok()) {
        for (std::size_t r = 1; r < d.references.size(); ++r) {
            const ReferenceInfo& info = d.references[r];
            ioPacketType* definer = info.definer != 0 ? d.types[info.definer - 1].type : nullptr;
            if (definitions_[r] != nullptr && !info.named && definer != nullptr) {
                definer->memoryNotReferenced(*this, static_cast<int>(r), definitions_[r]);
            }
        }
        for (const Fixup& fixup : d.fixups) {
            ioPacketType* reader = fixup.reader != 0 ? d.types[fixup.reader - 1].type : nullptr;
            if (fixup.getState() == FixupState::pending && reader != nullptr) {
                reader->hasUnresolvedPointer(*this, fixup.reference);
            }
        }
    }
    for (std::size_t i = 0; i < registry.size(); ++i) {
        ioPacketType* type = registry.typeAt(i);
        const bool used = std::any_of(d.types.begin(), d.types.end(), [&](const TypeSlot& slot) {
            return slot.used && slot.type == type;
        });
        if (used) {
            type->readFinished(*this);
        }
    }
    return ok();
}

const std::uint8_t* ioReadContext::Impl::valueEnd(const std::uint8_t* at, const std::uint8_t* end) {
    const std::uint8_t tag = *at;
    const std::uint8_t* cursor = at + 1;
    if (scalarSize(tag) != 0) {
        if (static_cast<std::size_t>(end - cursor) < scalarSize(tag)) {
            fault(at, "the " + kindText(tag) + " runs past the end of its chunk");
            return nullptr;
        }
        return cursor + scalarSize(tag);
    }
    std::uint64_t number = 0;
    if (loadVarint(cursor, end, number) != VarintStatus::ok) {
        fault(at, "the " + kindText(tag) + " runs past the end of its chunk");
        return nullptr;
    }
    if (tag == tagPointer) {
        return cursor;
    }
    const std::size_t unit = arrayElementSize(tag) != 0 ? arrayElementSize(tag) : 1;
    if (number > static_cast<std::uint64_t>(end - cursor) / unit) {
        fault(at, "the " + kindText(tag) + " runs past the end of its chunk");
        return nullptr;
    }
    return cursor + number * unit;
}

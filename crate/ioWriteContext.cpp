#include "crate/ioWriteContext.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <functional>
#include <unordered_map>
#include <utility>

#include "crate/detail/ByteBuffer.h"
#include "crate/detail/Checksum.h"
#include "crate/detail/PointerMap.h"
#include "crate/detail/Wire.h"

using namespace crateWire;

namespace {

/// File output leaves in blocks of this size.
constexpr std::size_t outputBlockSize = std::size_t{1} << 20;

struct NameHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view name) const noexcept {
        return std::hash<std::string_view>{}(name);
    }
};

/// Where a chunk or sub-packet length goes in the payload, and (once closed) its value.
struct LengthMark {
    std::size_t position;
    std::uint64_t length;
};

/// An open packet or sub-packet with its open chunk. `extra` counts the length bytes of the
/// chunks and sub-packets closed inside, which sit between the payload's value bytes.
struct OpenLevel {
    std::size_t containerMark; // of the sub-packet; unused for the packet
    std::uint64_t containerExtra;
    std::size_t chunkMark;
    std::uint64_t chunkExtra;
};

} // namespace

struct ioWriteContext::Impl {
    // The payload buffer is never null, so that copying an empty packet's values is defined.
    Impl() { payload.reserve(4096); }

    std::FILE* file = nullptr;
    bool toFile = false;
    bool closed = false;
    ByteBuffer block;
    /// Bytes passed on: the file header and every packet ended so far.
    std::uint64_t emitted = 0;

    std::unordered_map<std::string, std::uint64_t, NameHash, std::equal_to<>> typeIds;
    std::uint64_t typeCount = 0;
    std::string lastTypeName; // the type of the previous packet, checked before the map
    std::uint64_t lastTypeId = 0;

    PointerMap numbers;
    int given = 0;   // numbers handed out
    int written = 0; // numbers that have reached the file, which must come in order

    // The open packet.
    bool open = false;
    std::int64_t packetIndex = -1;
    std::string typeName;
    std::uint64_t typeId = 0;
    bool newType = false;
    int objectReference = 0;
    ByteBuffer payload;
    std::vector<LengthMark> marks;
    std::vector<OpenLevel> levels;

    // What the open packet changed, undone when it is discarded.
    std::vector<const void*> numberedInPacket;
    int givenAtStart = 0;
    int writtenAtStart = 0;
};

ioWriteContext::ioWriteContext() : impl_(std::make_unique<Impl>()) {
    buffer_.resize(fileHeaderSize);
    std::uint8_t* at = buffer_.data();
    std::memcpy(at, magic, 4);
    at = store<std::uint16_t>(at + 4, majorVersion);
    at = store<std::uint16_t>(at, minorVersion);
    at = store<std::uint32_t>(at, 0);
    store<std::uint32_t>(at, 0);
    impl_->emitted = fileHeaderSize;
    definitions_.push_back(nullptr);
}

ioWriteContext::ioWriteContext(const std::string& path) : ioWriteContext() {
    impl_->toFile = true;
    impl_->file = std::fopen(path.c_str(), "wb");
    if (impl_->file == nullptr) {
        fail(ioError{"cannot open '" + path + "' for writing: " + std::strerror(errno), -1, {}, 0});
        return;
    }
    // Output is buffered here in large blocks; stdio's own buffer would only copy it again.
    std::setvbuf(impl_->file, nullptr, _IONBF, 0);
    impl_->block.reserve(outputBlockSize);
    impl_->block.append(buffer_.data(), buffer_.size());
    buffer_.clear();
}

ioWriteContext::~ioWriteContext() { close(); }

ioError ioWriteContext::locate(std::string message) const {
    ioError error{std::move(message), -1, {}, impl_->emitted};
    if (impl_->open) {
        error.packetIndex = impl_->packetIndex;
        error.typeName = impl_->typeName;
    }
    return error;
}

namespace {

bool flushBlock(std::FILE* file, ByteBuffer& block, std::uint64_t emitted, ioError& failure) {
    const std::size_t size = block.size();
    block.clear();
    if (size == 0 || std::fwrite(block.data(), 1, size, file) == size) {
        return true;
    }
    failure = ioError{
        std::string("cannot write the file: ") + std::strerror(errno), -1, {}, emitted - size};
    return false;
}

} // namespace

bool ioWriteContext::close() {
    Impl& d = *impl_;
    if (d.closed) {
        return ok();
    }
    if (d.open && ok()) {
        fail(locate("closed with a packet still open"));
    }
    d.open = false;
    d.closed = true;
    if (d.file != nullptr) {
        ioError failure;
        if (ok() && !flushBlock(d.file, d.block, d.emitted, failure)) {
            fail(std::move(failure));
        }
        if (std::fclose(d.file) != 0 && ok()) {
            fail(ioError{
                std::string("cannot close the file: ") + std::strerror(errno), -1, {}, d.emitted});
        }
        d.file = nullptr;
    }
    return ok();
}

// ---- references ------------------------------------------------------------------------

int ioWriteContext::referenceOf(const void* object) {
    if (object == nullptr) {
        return 0;
    }
    Impl& d = *impl_;
    int number = d.numbers.find(object);
    if (number == 0) {
        if (d.given == INT_MAX) {
            fail(locate("more than 2147483647 objects named"));
            return 0;
        }
        number = ++d.given;
        d.numbers.insert(object, number);
        definitions_.push_back(nullptr);
        if (d.open) {
            d.numberedInPacket.push_back(object);
        }
    }
    return number;
}

namespace {

/// Reference numbers must reach the file in the order 1, 2, ...: a reader grows its table one
/// new reference at a time. A number given by `referenceOf` and not yet written breaks that.
bool noteWritten(int number, int& written, std::string& problem) {
    if (number > written + 1) {
        problem = "reference " + std::to_string(number) + " written before reference " +
                  std::to_string(written + 1) + " (numbered by referenceOf but not yet written)";
        return false;
    }
    if (number == written + 1) {
        written = number;
    }
    return true;
}

} // namespace

// ---- packets, chunks, sub-packets -----------------------------------------------------------

void ioWriteContext::startPacket(std::string_view typeName, const void* object) {
    Impl& d = *impl_;
    if (!ok()) {
        return;
    }
    if (d.closed) {
        fail(locate("startPacket after close"));
        return;
    }
    if (d.open) {
        fail(locate("startPacket with the previous packet still open"));
        return;
    }
    if (typeName.empty() || typeName.size() > maxTypeNameLength) {
        fail(locate("type name of " + std::to_string(typeName.size()) +
                    " bytes (a name has 1 to 255)"));
        return;
    }
    d.open = true;
    ++d.packetIndex;
    d.typeName.assign(typeName);
    d.givenAtStart = d.given;
    d.writtenAtStart = d.written;
    d.numberedInPacket.clear();
    setPacketInvalid(false);

    d.newType = false;
    if (typeName == d.lastTypeName && d.lastTypeId != 0) {
        d.typeId = d.lastTypeId;
    } else {
        auto found = d.typeIds.find(typeName);
        if (found != d.typeIds.end()) {
            d.typeId = found->second;
        } else {
            d.typeId = ++d.typeCount;
            d.typeIds.emplace(std::string(typeName), d.typeId);
            d.newType = true;
        }
        d.lastTypeName.assign(typeName);
        d.lastTypeId = d.typeId;
    }

    d.objectReference = referenceOf(object);
    if (d.objectReference != 0) {
        std::string problem;
        if (!noteWritten(d.objectReference, d.written, problem)) {
            fail(locate(std::move(problem)));
            return;
        }
        definitions_[static_cast<std::size_t>(d.objectReference)] = const_cast<void*>(object);
    }

    d.payload.clear();
    d.marks.clear();
    d.levels.clear();
    d.levels.push_back({0, 0, 0, 0});
    d.marks.push_back({0, 0});
}

namespace {

void openChunk(std::vector<LengthMark>& marks, std::vector<OpenLevel>& levels,
               std::size_t position) {
    marks.push_back({position, 0});
    levels.back().chunkMark = marks.size() - 1;
    levels.back().chunkExtra = 0;
}

void closeChunk(std::vector<LengthMark>& marks, std::vector<OpenLevel>& levels,
                std::size_t position) {
    OpenLevel& level = levels.back();
    LengthMark& mark = marks[level.chunkMark];
    mark.length = (position - mark.position) + level.chunkExtra;
    level.containerExtra += level.chunkExtra + varintSize(mark.length);
}

} // namespace

void ioWriteContext::nextChunk() {
    Impl& d = *impl_;
    if (!ok() || isPacketInvalid()) {
        return;
    }
    if (!d.open) {
        fail(locate("nextChunk outside a packet"));
        return;
    }
    closeChunk(d.marks, d.levels, d.payload.size());
    openChunk(d.marks, d.levels, d.payload.size());
}

void ioWriteContext::startSubPacket() {
    Impl& d = *impl_;
    if (!ok() || isPacketInvalid()) {
        return;
    }
    if (!d.open) {
        fail(locate("startSubPacket outside a packet"));
        return;
    }
    if (d.levels.size() > maxSubPacketDepth) {
        fail(locate("sub-packets nested deeper than 255"));
        return;
    }
    *d.payload.extend(1) = tagSubPacket;
    d.marks.push_back({d.payload.size(), 0});
    d.levels.push_back({d.marks.size() - 1, 0, 0, 0});
    openChunk(d.marks, d.levels, d.payload.size());
}

void ioWriteContext::endSubPacket() {
    Impl& d = *impl_;
    if (!ok() || isPacketInvalid()) {
        return;
    }
    if (!d.open || d.levels.size() < 2) {
        fail(locate("endSubPacket without an open sub-packet"));
        return;
    }
    const std::size_t end = d.payload.size();
    closeChunk(d.marks, d.levels, end);
    const OpenLevel sub = d.levels.back();
    d.levels.pop_back();
    LengthMark& mark = d.marks[sub.containerMark];
    mark.length = (end - mark.position) + sub.containerExtra;
    d.levels.back().chunkExtra += sub.containerExtra + varintSize(mark.length);
}

void ioWriteContext::endPacket() {
    Impl& d = *impl_;
    if (!ok()) {
        return;
    }
    if (!d.open) {
        fail(locate("endPacket without an open packet"));
        return;
    }
    if (isPacketInvalid()) { // discarded: nothing of it reaches the output
        d.open = false;
        setPacketInvalid(false);
        return;
    }
    if (d.levels.size() != 1) {
        fail(locate("endPacket with a sub-packet still open"));
        return;
    }
    closeChunk(d.marks, d.levels, d.payload.size());
    const std::uint64_t payloadLength = d.payload.size() + d.levels.back().containerExtra;
    const std::uint64_t typeField = d.newType ? 0 : d.typeId;
    std::size_t prefixLength =
        varintSize(typeField) + varintSize(d.objectReference) + varintSize(payloadLength);
    if (d.newType) {
        prefixLength += varintSize(d.typeName.size()) + d.typeName.size();
    }
    const std::size_t total = prefixLength + payloadLength + checksumSize;

    // Frame the packet straight into the output: the memory buffer, or the file block.
    std::uint8_t* out;
    if (d.toFile) {
        if (d.block.size() + total > outputBlockSize && d.block.size() != 0) {
            ioError failure;
            if (!flushBlock(d.file, d.block, d.emitted, failure)) {
                d.open = false;
                fail(std::move(failure));
                return;
            }
        }
        out = d.block.extend(total);
    } else {
        const std::size_t old = buffer_.size();
        buffer_.resize(old + total);
        out = buffer_.data() + old;
    }
    std::uint8_t* at = storeVarint(out, typeField);
    if (d.newType) {
        at = storeVarint(at, d.typeName.size());
        std::memcpy(at, d.typeName.data(), d.typeName.size());
        at += d.typeName.size();
    }
    at = storeVarint(at, static_cast<std::uint64_t>(d.objectReference));
    at = storeVarint(at, payloadLength);
    // The value bytes, with each chunk and sub-packet length put back where it was opened.
    const std::uint8_t* values = d.payload.data();
    std::size_t from = 0;
    for (const LengthMark& mark : d.marks) {
        std::memcpy(at, values + from, mark.position - from);
        at += mark.position - from;
        at = storeVarint(at, mark.length);
        from = mark.position;
    }
    std::memcpy(at, values + from, d.payload.size() - from);
    at += d.payload.size() - from;
    store<std::uint64_t>(at, checksum(out, prefixLength + payloadLength));

    d.emitted += total;
    d.open = false;
    if (d.toFile && d.block.size() >= outputBlockSize) {
        ioError failure;
        if (!flushBlock(d.file, d.block, d.emitted, failure)) {
            fail(std::move(failure));
        }
    }
}

bool ioWriteContext::onPacketInvalid() {
    Impl& d = *impl_;
    if (!d.open) {
        return false;
    }
    // Forget what the packet introduced, so that the file stays numbered in order.
    for (const void* object : d.numberedInPacket) {
        d.numbers.erase(object);
    }
    d.given = d.givenAtStart;
    d.written = d.writtenAtStart;
    definitions_.resize(static_cast<std::size_t>(d.given) + 1);
    if (d.newType) {
        d.typeIds.erase(d.typeName);
        --d.typeCount;
        d.lastTypeId = 0;
    }
    return true;
}

// ---- values ----------------------------------------------------------------------------

namespace {

template <class T>
void putScalar(ByteBuffer& payload, std::uint8_t tag, T value) {
    std::uint8_t* at = payload.extend(1 + sizeof(T));
    *at = tag;
    store<T>(at + 1, value);
}

} // namespace

bool ioWriteContext::acceptsValue(const char* what) {
    if (!ok() || isPacketInvalid()) {
        return false;
    }
    if (!impl_->open) {
        fail(locate(std::string(what) + " written outside a packet"));
        return false;
    }
    return true;
}

void ioWriteContext::writeInt(std::int32_t value) {
    if (acceptsValue("int32")) {
        putScalar(impl_->payload, tagInt32, value);
    }
}

void ioWriteContext::writeUInt(std::uint32_t value) {
    if (acceptsValue("uint32")) {
        putScalar(impl_->payload, tagUInt32, value);
    }
}

void ioWriteContext::writeInt64(std::int64_t value) {
    if (acceptsValue("int64")) {
        putScalar(impl_->payload, tagInt64, value);
    }
}

void ioWriteContext::writeFloat(float value) {
    if (acceptsValue("float")) {
        putScalar(impl_->payload, tagFloat, value);
    }
}

void ioWriteContext::writeDouble(double value) {
    if (acceptsValue("double")) {
        putScalar(impl_->payload, tagDouble, value);
    }
}

void ioWriteContext::writeBool(bool value) {
    if (acceptsValue("bool")) {
        putScalar<std::uint8_t>(impl_->payload, tagBool, value ? 1 : 0);
    }
}

void ioWriteContext::writeString(const char* text) {
    writeString(text == nullptr ? std::string_view() : std::string_view(text));
}

void ioWriteContext::writeString(std::string_view text) {
    if (!acceptsValue("string")) {
        return;
    }
    std::uint8_t* at = impl_->payload.extend(1 + varintSize(text.size()) + text.size());
    *at = tagString;
    at = storeVarint(at + 1, text.size());
    if (!text.empty()) {
        std::memcpy(at, text.data(), text.size());
    }
}

void ioWriteContext::writePointer(const void* object) {
    if (!acceptsValue("pointer")) {
        return;
    }
    const int number = referenceOf(object);
    std::string problem;
    if (!noteWritten(number, impl_->written, problem)) {
        fail(locate(std::move(problem)));
        return;
    }
    std::uint8_t* at = impl_->payload.extend(1 + varintSize(static_cast<std::uint64_t>(number)));
    *at = tagPointer;
    storeVarint(at + 1, static_cast<std::uint64_t>(number));
}

void ioWriteContext::writeNullPointer() { writePointer(nullptr); }

void ioWriteContext::writeArray(std::uint8_t tag, const void* values, std::size_t count) {
    const std::size_t elementSize = arrayElementSize(tag);
    if (!acceptsValue("array")) {
        return;
    }
    if (count != 0 && values == nullptr) {
        fail(locate("array of " + std::to_string(count) + " elements from a null pointer"));
        return;
    }
    if (count > (SIZE_MAX / 2) / elementSize) {
        fail(locate("array of " + std::to_string(count) + " elements is too large"));
        return;
    }
    std::uint8_t* at = impl_->payload.extend(1 + varintSize(count) + count * elementSize);
    *at = tag;
    at = storeVarint(at + 1, count);
    copyLittleEndian(at, values, count, elementSize);
}

void ioWriteContext::writeFloatArray(const float* values, std::size_t count) {
    writeArray(tagFloatArray, values, count);
}

void ioWriteContext::writeDoubleArray(const double* values, std::size_t count) {
    writeArray(tagDoubleArray, values, count);
}

void ioWriteContext::writeIntArray(const std::int32_t* values, std::size_t count) {
    writeArray(tagInt32Array, values, count);
}

void ioWriteContext::writeUIntArray(const std::uint32_t* values, std::size_t count) {
    writeArray(tagUInt32Array, values, count);
}

void ioWriteContext::writeByteArray(const std::uint8_t* values, std::size_t count) {
    writeArray(tagByteArray, values, count);
}

#include "crate/ioPacketWalker.h"

#include <algorithm>
#include <string>
#include <vector>

ioPacketVisitor::~ioPacketVisitor() = default;
void ioPacketVisitor::startPacket(const Packet&) {}
void ioPacketVisitor::startChunk(const Chunk&) {}
void ioPacketVisitor::value(const Value&) {}
void ioPacketVisitor::startSubPacket(std::uint64_t) {}
void ioPacketVisitor::endSubPacket() {}
void ioPacketVisitor::endPacket() {}

namespace {

/// Buffers kept across the walk, one per element type, for the arrays it reads.
struct ArrayBuffers {
    std::vector<float> floats;
    std::vector<double> doubles;
    std::vector<std::int32_t> ints;
    std::vector<std::uint32_t> uints;
    std::vector<std::uint8_t> bytes;
};

template <class T, class Read>
void readArray(std::vector<T>& buffer, std::size_t count, Read read, ioPacketVisitor::Value& v) {
    // The count has been checked against the bytes of the chunk: the buffer is bounded by them.
    if (buffer.size() < count) {
        buffer.resize(count);
    }
    read(buffer.data(), count);
    v.head = buffer.data();
}

class Walk {
public:
    Walk(ioReadContext& in, ioPacketVisitor& visitor, std::size_t arrayHead)
        : in_(in), visitor_(visitor), arrayHead_(arrayHead) {}

    void chunks() {
        int index = 0;
        do {
            visitor_.startChunk({index++, in_.getValueOffset(), in_.getChunkLength()});
            if (!values()) {
                return;
            }
        } while (in_.nextChunk());
    }

private:
    bool values() {
        for (ioValueKind kind = in_.peekValueKind(); kind != ioValueKind::none;
             kind = in_.peekValueKind()) {
            ioPacketVisitor::Value v;
            v.kind = kind;
            v.offset = in_.getValueOffset();
            if (kind == ioValueKind::subPacket) {
                visitor_.startSubPacket(v.offset);
                if (!in_.startSubPacket()) {
                    return false;
                }
                chunks();
                if (!in_.ok()) {
                    return false;
                }
                in_.endSubPacket();
                visitor_.endSubPacket();
                continue;
            }
            read(v);
            if (!in_.ok()) {
                return false;
            }
            visitor_.value(v);
        }
        return in_.ok();
    }

    void read(ioPacketVisitor::Value& v) {
        switch (v.kind) {
            case ioValueKind::int32:
                v.integer = in_.readInt();
                break;
            case ioValueKind::uint32:
                v.unsignedInteger = in_.readUInt();
                break;
            case ioValueKind::int64:
                v.integer = in_.readInt64();
                break;
            case ioValueKind::float32:
                v.real = in_.readFloat();
                break;
            case ioValueKind::float64:
                v.real = in_.readDouble();
                break;
            case ioValueKind::boolean:
                v.integer = in_.readBool() ? 1 : 0;
                break;
            case ioValueKind::string:
                text_ = in_.readString();
                v.text = text_;
                v.count = text_.size();
                break;
            case ioValueKind::pointer:
                v.integer = in_.readReferenceId();
                break;
            default:
                readArrayValue(v);
                break;
        }
    }

    void readArrayValue(ioPacketVisitor::Value& v) {
        const std::size_t count = in_.peekArrayCount();
        if (!in_.ok()) {
            return;
        }
        v.count = count;
        v.headCount = std::min(count, arrayHead_);
        switch (v.kind) {
            case ioValueKind::floatArray:
                readArray(
                    buffers_.floats, count,
                    [&](float* to, std::size_t n) { in_.readFloatArray(to, n); }, v);
                break;
            case ioValueKind::doubleArray:
                readArray(
                    buffers_.doubles, count,
                    [&](double* to, std::size_t n) { in_.readDoubleArray(to, n); }, v);
                break;
            case ioValueKind::int32Array:
                readArray(
                    buffers_.ints, count,
                    [&](std::int32_t* to, std::size_t n) { in_.readIntArray(to, n); }, v);
                break;
            case ioValueKind::uint32Array:
                readArray(
                    buffers_.uints, count,
                    [&](std::uint32_t* to, std::size_t n) { in_.readUIntArray(to, n); }, v);
                break;
            default:
                readArray(
                    buffers_.bytes, count,
                    [&](std::uint8_t* to, std::size_t n) { in_.readByteArray(to, n); }, v);
                break;
        }
    }

    ioReadContext& in_;
    ioPacketVisitor& visitor_;
    std::size_t arrayHead_;
    ArrayBuffers buffers_;
    std::string text_;
};

} // namespace

bool walkPacketFile(ioReadContext& context, ioPacketVisitor& visitor, std::size_t arrayHead) {
    Walk walk(context, visitor, arrayHead);
    while (context.nextPacket()) {
        visitor.startPacket({context.getPacketIndex(), context.getPacketOffset(),
                             context.getPacketTypeName(), context.getPacketReference(),
                             context.getPacketPayloadLength()});
        walk.chunks();
        if (!context.ok()) {
            break;
        }
        visitor.endPacket();
    }
    return context.ok();
}

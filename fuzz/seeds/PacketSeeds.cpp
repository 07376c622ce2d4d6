// Seeds of the raw packet walker: files with every value kind, nested sub-packets, chunks,
// forward references, unknown types and the edges of the format (empty values, the longest
// type name, many small packets, one large array).

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "fuzz/seeds/SeedFiles.h"

namespace {

int objects[64];

void everyKind(ioWriteContext& out) {
    const float floats[] = {1.0f, -0.0f, std::numeric_limits<float>::quiet_NaN(), 1e-40f};
    const double doubles[] = {-1e300, std::numeric_limits<double>::infinity()};
    const std::int32_t ints[] = {INT32_MIN, 0, INT32_MAX};
    const std::uint32_t uints[] = {0, 0xffffffffu};
    const std::uint8_t bytes[] = {0, 1, 255};
    out.startPacket("fuzz.a", &objects[0]);
    out.writeInt(-5);
    out.writeUInt(7);
    out.writeInt64(INT64_MIN);
    out.writeFloat(0.5f);
    out.writeDouble(-0.0);
    out.writeBool(true);
    out.writeString("text");
    out.writeString("");
    out.writePointer(&objects[1]);
    out.writeNullPointer();
    out.writeFloatArray(floats, 4);
    out.writeDoubleArray(doubles, 2);
    out.writeIntArray(ints, 3);
    out.writeUIntArray(uints, 2);
    out.writeByteArray(bytes, 3);
    out.writeFloatArray(nullptr, 0);
    out.endPacket();
    out.startPacket("fuzz.b", &objects[1]);
    out.writePointer(&objects[0]);
    out.endPacket();
}

void nested(ioWriteContext& out) {
    out.startPacket("fuzz.a", &objects[0]);
    out.writeInt(1);
    out.nextChunk();
    out.startSubPacket();
    out.writeInt(2);
    out.startSubPacket();
    out.writePointer(&objects[2]);
    out.nextChunk();
    out.startSubPacket();
    out.writeBool(false);
    out.endSubPacket();
    out.endSubPacket();
    out.nextChunk();
    out.writeDouble(3.0);
    out.endSubPacket();
    out.nextChunk();
    out.nextChunk(); // an empty chunk
    out.writeString("after");
    out.endPacket();
    out.startPacket("fuzz.b", &objects[2]);
    out.writePointer(&objects[0]);
    out.endPacket();
}

void forwardChain(ioWriteContext& out) {
    // Each packet points to the next ones; the last points back to the first.
    for (int i = 0; i < 16; ++i) {
        out.startPacket(i % 3 == 0 ? "fuzz.b" : "fuzz.a", &objects[i]);
        out.writeInt(i);
        out.writePointer(&objects[(i + 1) % 16]);
        out.writePointer(&objects[(i + 5) % 16]);
        out.endPacket();
    }
}

void unknownTypes(ioWriteContext& out) {
    out.startPacket("fuzz.unknown", &objects[0]);
    out.writePointer(&objects[1]); // the first sight of 2, in a packet nobody reads
    out.startSubPacket();
    out.writePointer(&objects[2]);
    out.endSubPacket();
    out.endPacket();
    out.startPacket(std::string(255, 'n'));
    out.writeString(std::string(300, 's'));
    out.endPacket();
    out.startPacket("fuzz.a", &objects[1]);
    out.writeInt(-1); // rejected by the fuzz target's reader
    out.writePointer(&objects[2]);
    out.endPacket();
    out.startPacket("fuzz.b", &objects[2]);
    out.writePointer(&objects[1]);
    out.endPacket();
}

void manySmall(ioWriteContext& out) {
    for (int i = 0; i < 200; ++i) {
        out.startPacket("fuzz.b", &objects[i % 64]);
        out.writePointer(&objects[(i * 7) % 64]);
        out.endPacket();
    }
}

void largeArray(ioWriteContext& out) {
    std::vector<float> values(5000);
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = static_cast<float>(i) * 0.25f;
    }
    out.startPacket("fuzz.a");
    out.writeInt(static_cast<int>(values.size()));
    out.writeFloatArray(values.data(), values.size());
    out.endPacket();
}

void empty(ioWriteContext&) {}

[[maybe_unused]] const bool registered = formworkFuzz::registerSeeds({
    {"packetWalkerFuzz", "every-kind", everyKind},
    {"packetWalkerFuzz", "nested", nested},
    {"packetWalkerFuzz", "forward-chain", forwardChain},
    {"packetWalkerFuzz", "unknown-types", unknownTypes},
    {"packetWalkerFuzz", "many-small", manySmall},
    {"packetWalkerFuzz", "large-array", largeArray},
    {"packetWalkerFuzz", "empty", empty},
});

} // namespace

#include "tests/crate/PacketBytes.h"

#include <xxhash.h>

#include <cmath>
#include <cstring>

#include "crate/ioWriteContext.h"

namespace crateTest {

Bytes fileHeader(std::uint16_t major, std::uint16_t minor) {
    Bytes bytes = {'F',
                   'W',
                   'P',
                   'K',
                   static_cast<std::uint8_t>(major),
                   static_cast<std::uint8_t>(major >> 8),
                   static_cast<std::uint8_t>(minor),
                   static_cast<std::uint8_t>(minor >> 8)};
    bytes.resize(16, 0);
    return bytes;
}

void appendVarint(Bytes& bytes, std::uint64_t value) {
    for (; value >= 0x80; value >>= 7) {
        bytes.push_back(static_cast<std::uint8_t>(value | 0x80));
    }
    bytes.push_back(static_cast<std::uint8_t>(value));
}

Bytes chunk(const Bytes& values) {
    Bytes bytes;
    appendVarint(bytes, values.size());
    bytes.insert(bytes.end(), values.begin(), values.end());
    return bytes;
}

void appendPacket(Bytes& file, std::uint64_t typeId, std::string_view newName,
                  std::uint64_t reference, const Bytes& payload) {
    const std::size_t start = file.size();
    appendVarint(file, typeId);
    if (typeId == 0) {
        appendVarint(file, newName.size());
        file.insert(file.end(), newName.begin(), newName.end());
    }
    appendVarint(file, reference);
    appendVarint(file, payload.size());
    file.insert(file.end(), payload.begin(), payload.end());
    const std::uint64_t sum = XXH3_64bits(file.data() + start, file.size() - start);
    for (int i = 0; i < 8; ++i) {
        file.push_back(static_cast<std::uint8_t>(sum >> (8 * i)));
    }
}

Bytes sampleFile() {
    static int objects[3];
    const float floats[] = {1.0f, -0.0f, NAN, 3.5f};
    const double doubles[] = {2.0, -1e300};
    const std::int32_t ints[] = {-7, 0, 7};
    const std::uint32_t uints[] = {4000000000u};
    const std::uint8_t bytes[] = {1, 2, 3, 255};
    ioWriteContext out;
    out.startPacket("test.header", &objects[0]);
    out.writeInt(-3);
    out.writePointer(&objects[2]); // forward
    out.nextChunk();
    out.writeUInt(9);
    out.writeInt64(-(std::int64_t{1} << 40));
    out.writeString("name");
    out.writeString("");
    out.startSubPacket();
    out.writeFloat(0.25f);
    out.startSubPacket();
    out.writeBool(true);
    out.nextChunk();
    out.writeDouble(-0.0);
    out.endSubPacket();
    out.nextChunk();
    out.writeIntArray(ints, 3);
    out.endSubPacket();
    out.writeFloatArray(floats, 4);
    out.endPacket();
    out.startPacket("test.other", &objects[1]);
    out.writeDoubleArray(doubles, 2);
    out.writeUIntArray(uints, 1);
    out.writeByteArray(bytes, 4);
    out.writeFloatArray(nullptr, 0);
    out.writePointer(&objects[0]);
    out.endPacket();
    out.startPacket("test.header", &objects[2]);
    out.writeInt(5);
    out.writeNullPointer();
    out.endPacket();
    out.close();
    return out.buffer();
}

} // namespace crateTest

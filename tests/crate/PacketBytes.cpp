#include "tests/crate/PacketBytes.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>

#include "crate/ioWriteContext.h"

namespace crateTest {

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

Bytes sealedFile(std::uint64_t typeId, std::string_view newName, std::uint64_t reference,
                 const Bytes& payload) {
    Bytes file = {'F', 'W', 'P', 'K', 1, 0, 0, 0}; // version 1.0, then flags and reserved
    file.resize(16, 0);
    appendVarint(file, typeId);
    if (typeId == 0) {
        appendVarint(file, newName.size());
        file.insert(file.end(), newName.begin(), newName.end());
    }
    appendVarint(file, reference);
    appendVarint(file, payload.size());
    file.insert(file.end(), payload.begin(), payload.end());
    file.resize(file.size() + 8); // the checksum
    resealPackets(file);
    return file;
}

TempDir::TempDir() {
    const auto* info = testing::UnitTest::GetInstance()->current_test_info();
    path_ = std::filesystem::temp_directory_path() /
            ("crateTests-" + std::string(info->name()) + "-" + std::to_string(::getpid()));
    std::filesystem::create_directories(path_);
}

TempDir::~TempDir() { std::filesystem::remove_all(path_); }

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

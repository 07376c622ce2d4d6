#include "crate/ioReadContext.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "crate/ioWriteContext.h"
#include "tests/crate/PacketBytes.h"

namespace {

std::vector<std::uint8_t> written(ioWriteContext& out) {
    EXPECT_TRUE(out.close()) << out.error().toString();
    return out.buffer();
}

TEST(IoReadContext, EveryValueKindRoundTripsBitForBit) {
    const float nanPayload = std::bit_cast<float>(std::uint32_t{0x7fa12345});
    const double nanDouble = std::bit_cast<double>(std::uint64_t{0xfff0000000000abcULL});
    const float floats[] = {1.5f, -0.0f, nanPayload, std::numeric_limits<float>::denorm_min()};
    const double doubles[] = {-0.0, nanDouble, 1e308, std::numeric_limits<double>::infinity()};
    const std::int32_t ints[] = {INT32_MIN, -1, 0, INT32_MAX};
    const std::uint32_t uints[] = {0, 1, 0xffffffffu};
    const std::uint8_t bytes[] = {0, 255, 7};
    const std::string longName(255, 'n');
    const std::string text("h\0llo\xff", 6);

    ioWriteContext out;
    out.startPacket(longName);
    out.writeInt(INT32_MIN);
    out.writeUInt(0xfedcba98u);
    out.writeInt64(INT64_MIN);
    out.writeFloat(nanPayload);
    out.writeDouble(nanDouble);
    out.writeDouble(-0.0);
    out.writeBool(true);
    out.writeBool(false);
    out.writeString(text);
    out.writeString(static_cast<const char*>(nullptr));
    out.writeFloatArray(floats, 4);
    out.writeDoubleArray(doubles, 4);
    out.writeIntArray(ints, 4);
    out.writeUIntArray(uints, 3);
    out.writeByteArray(bytes, 3);
    out.writeFloatArray(nullptr, 0);
    out.endPacket();
    const std::vector<std::uint8_t> file = written(out);

    ioReadContext in(file.data(), file.size());
    ASSERT_TRUE(in.nextPacket()) << in.error().toString();
    EXPECT_EQ(in.getPacketTypeName(), longName);
    EXPECT_EQ(in.readInt(), INT32_MIN);
    EXPECT_EQ(in.readUInt(), 0xfedcba98u);
    EXPECT_EQ(in.readInt64(), INT64_MIN);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(in.readFloat()), 0x7fa12345u);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(in.readDouble()), 0xfff0000000000abcULL);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(in.readDouble()), 0x8000000000000000ULL);
    EXPECT_TRUE(in.readBool());
    EXPECT_FALSE(in.readBool());
    EXPECT_EQ(in.readString(), text);
    EXPECT_EQ(in.readString(), "");
    // Each array read back whole into room of its size, then compared byte for byte.
    const auto readsBack = [&in](const auto& values, auto read) {
        std::remove_cvref_t<decltype(values)> back;
        return (in.*read)(back, std::size(back)) == std::size(back) &&
               std::memcmp(back, values, sizeof back) == 0;
    };
    EXPECT_TRUE(readsBack(floats, &ioReadContext::readFloatArray));
    EXPECT_TRUE(readsBack(doubles, &ioReadContext::readDoubleArray));
    EXPECT_TRUE(readsBack(ints, &ioReadContext::readIntArray));
    EXPECT_TRUE(readsBack(uints, &ioReadContext::readUIntArray));
    EXPECT_TRUE(readsBack(bytes, &ioReadContext::readByteArray));
    EXPECT_EQ(in.readFloatArray(nullptr, 0), 0u);
    EXPECT_TRUE(in.ok()) << in.error().toString();
    EXPECT_FALSE(in.nextPacket());
    EXPECT_TRUE(in.ok());
}

TEST(IoReadContext, ChunksAbsentOrUnreadAndSubPacketsNestedAreSkipped) {
    ioWriteContext out;
    out.startPacket("t");
    out.writeInt(1);
    out.writeString("left unread");
    out.startSubPacket(); // unread: skipped whole
    out.writeInt(2);
    out.endSubPacket();
    out.nextChunk();
    out.startSubPacket();
    out.writeInt(3);
    out.startSubPacket();
    out.writeInt(4);
    out.nextChunk();
    out.writeInt(5);
    out.endSubPacket();
    out.writeInt(6);
    out.nextChunk();
    out.writeInt(7);
    out.endSubPacket();
    out.writeInt(8);
    out.endPacket();
    out.startPacket("t");
    out.writeInt(9);
    out.endPacket();
    const std::vector<std::uint8_t> file = written(out);

    ioReadContext in(file.data(), file.size());
    ASSERT_TRUE(in.nextPacket());
    EXPECT_EQ(in.readInt(), 1);
    ASSERT_TRUE(in.nextChunk());
    ASSERT_TRUE(in.startSubPacket());
    EXPECT_EQ(in.readInt(), 3);
    ASSERT_TRUE(in.startSubPacket());
    EXPECT_EQ(in.getSubPacketDepth(), 2);
    in.endSubPacket(); // 4 and the chunk holding 5 skipped
    EXPECT_EQ(in.readInt(), 6);
    ASSERT_TRUE(in.nextChunk());
    EXPECT_EQ(in.readInt(), 7);
    EXPECT_FALSE(in.nextChunk()); // the sub-packet has no third chunk
    EXPECT_FALSE(in.startSubPacket());
    in.endSubPacket();
    EXPECT_EQ(in.readInt(), 8);
    EXPECT_FALSE(in.startSubPacket()); // no values left: false without an error
    EXPECT_FALSE(in.nextChunk());      // a chunk the writer did not write reads as absent
    ASSERT_TRUE(in.nextPacket());
    EXPECT_EQ(in.getPacketIndex(), 1);
    EXPECT_EQ(in.readInt(), 9);
    EXPECT_FALSE(in.nextPacket());
    EXPECT_TRUE(in.ok()) << in.error().toString();
}

// A packet of type "ab" at byte 16: 00 02 'a' 'b' 00 0f | chunk length 0e at 22 | int32 7 at 23
// | double 1.0 at 28 | checksum at 37. Again from byte 45: 01 00 0f, values, checksum at 63.
std::vector<std::uint8_t> twoPackets() {
    ioWriteContext out;
    for (int i = 0; i < 2; ++i) {
        out.startPacket("ab");
        out.writeInt(7);
        out.writeDouble(1.0);
        out.endPacket();
    }
    return written(out);
}

struct ErrorCase {
    const char* name;
    std::function<void(std::vector<std::uint8_t>&)> damage;
    std::function<void(ioReadContext&)> read;
    std::int64_t packetIndex;
    const char* typeName;
    std::uint64_t byteOffset;
    const char* message;
};

TEST(IoReadContext, ErrorsNameTheirPacketTypeAndOffset) {
    const auto none = [](std::vector<std::uint8_t>&) {};
    const auto readAllOf = [](ioReadContext& in) {
        while (in.nextPacket()) {
        }
    };
    const auto first = [](std::function<void(ioReadContext&)> then) {
        return [then](ioReadContext& in) {
            ASSERT_TRUE(in.nextPacket());
            then(in);
        };
    };
    float room[2] = {-1.0f, -1.0f};
    const ErrorCase cases[] = {
        {"WrongKind", none, first([](ioReadContext& in) { in.readDouble(); }), 0, "ab", 23,
         "expected double, found int32"},
        {"WrongKindLater", none, first([](ioReadContext& in) { in.readInt(), in.readInt(); }), 0,
         "ab", 28, "expected int32, found double"},
        {"NoValueLeft", none,
         first([](ioReadContext& in) { in.readInt(), in.readDouble(), in.readString(); }), 0, "ab",
         37, "expected string, but the chunk has no values left"},
        {"NotAnArray", none, first([](ioReadContext& in) { in.peekArrayCount(); }), 0, "ab", 23,
         "expected an array, found int32"},
        {"BadMagic", [](auto& f) { f[1] = 'X'; }, readAllOf, -1, "", 0,
         "not a packet file (no \"FWPK\" at its start)"},
        {"OtherMajorVersion", [](auto& f) { f[4] = 2; }, readAllOf, -1, "", 4,
         "packet file version 2.0 is not supported (this reader reads version 1.x)"},
        {"HeaderCutShort", [](auto& f) { f.resize(3); }, readAllOf, -1, "", 3,
         "file header cut short: not a packet file"},
        {"ChecksumOfNewType", [](auto& f) { f[25] ^= 1; }, readAllOf, 0, "", 37,
         "checksum mismatch"},
        {"ChecksumOfKnownType", [](auto& f) { f[60] ^= 0x40; }, readAllOf, 1, "ab", 63,
         "checksum mismatch"},
        {"PayloadPastTheEnd", [](auto& f) { f.resize(40); }, readAllOf, 0, "", 21,
         "payload of 15 bytes runs past the end of the file (18 bytes left)"},
        {"ChecksumCut", [](auto& f) { f.resize(70); }, readAllOf, 1, "ab", 47,
         "payload of 15 bytes runs past the end of the file (22 bytes left)"},
    };
    for (const ErrorCase& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<std::uint8_t> file = twoPackets();
        ASSERT_EQ(file.size(), 71u);
        c.damage(file);
        ioReadContext in(file.data(), file.size());
        c.read(in);
        EXPECT_FALSE(in.ok());
        EXPECT_EQ(in.error().message, c.message);
        EXPECT_EQ(in.error().packetIndex, c.packetIndex);
        EXPECT_EQ(in.error().typeName, c.typeName);
        EXPECT_EQ(in.error().byteOffset, c.byteOffset);
        // After the first error every read is a zero value and the packets stop.
        EXPECT_EQ(in.readInt(), 0);
        EXPECT_EQ(in.readFloatArray(room, 2), 0u);
        EXPECT_FALSE(in.nextPacket());
    }
    EXPECT_EQ(room[0], -1.0f);
}

TEST(IoReadContext, ArrayLongerThanRoomWritesNothing) {
    const float values[] = {1, 2, 3};
    ioWriteContext out;
    out.startPacket("v");
    out.writeFloatArray(values, 3);
    out.endPacket();
    const std::vector<std::uint8_t> file = written(out);
    ioReadContext in(file.data(), file.size());
    ASSERT_TRUE(in.nextPacket());
    EXPECT_EQ(in.peekArrayCount(), 3u);
    float room[3] = {-1, -1, -1};
    EXPECT_EQ(in.readFloatArray(room, 2), 0u);
    EXPECT_EQ(in.error().message, "array of 3 floats exceeds the room of 2");
    EXPECT_EQ(in.error().toString(),
              "packet 0 (v) at byte 22: array of 3 floats exceeds the room of 2");
    EXPECT_EQ(room[0], -1.0f);
    EXPECT_EQ(room[2], -1.0f);
}

// Sealed packets whose contents no writer makes: each is an error, never garbage.
TEST(IoReadContext, HostileSealedPacketsAreErrors) {
    using namespace crateTest;
    struct Case {
        const char* name;
        Bytes file;
        const char* message;
        std::uint64_t byteOffset;
    };
    Bytes deep = chunk({});
    for (int i = 0; i < 300; ++i) {
        Bytes sub = {14};
        appendVarint(sub, deep.size());
        sub.insert(sub.end(), deep.begin(), deep.end());
        deep = chunk(sub);
    }
    const Case cases[] = {
        {"BoolOfTwo", sealedFile(0, "t", 0, chunk({6, 2})), "bool of value 2 (a bool is 0 or 1)",
         22},
        {"UnknownTag", sealedFile(0, "t", 0, chunk({99})), "unknown value tag 99", 22},
        {"EmptyPayload", sealedFile(0, "t", 0, {}), "the packet has no first chunk", 21},
        {"ChunkPastPayload", sealedFile(0, "t", 0, {5, 1}),
         "a chunk runs past the end of its packet", 21},
        {"UnknownTypeId", sealedFile(3, "", 0, chunk({})),
         "unknown type id 3 (0 types introduced so far)", 16},
        {"ReferenceOutOfSequence", sealedFile(0, "t", 2, chunk({})),
         "reference 2 out of sequence (the next new reference is 1)", 19},
        {"PointerOutOfSequence", sealedFile(0, "t", 1, chunk({8, 3})),
         "reference 3 out of sequence (the next new reference is 2)", 22},
        {"NameOfZeroBytes", sealedFile(0, "", 0, chunk({})),
         "type name of 0 bytes (a name has 1 to 255)", 17},
        {"NestedTooDeep", sealedFile(0, "t", 0, deep), "sub-packets nested deeper than 255", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ioReadContext in(c.file.data(), c.file.size());
        while (in.nextPacket()) {
            while (in.peekValueKind() != ioValueKind::none) {
                if (in.peekValueKind() == ioValueKind::boolean) {
                    in.readBool();
                } else {
                    in.skipValue();
                }
            }
        }
        EXPECT_EQ(in.error().message, c.message);
        if (c.byteOffset != 0) {
            EXPECT_EQ(in.error().byteOffset, c.byteOffset);
        }
        EXPECT_EQ(in.error().packetIndex, 0);
    }
}

} // namespace

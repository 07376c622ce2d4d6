#include "crate/ioReadContext.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "crate/ioWriteContext.h"

namespace {

std::vector<std::uint8_t> written(ioWriteContext& out) {
    EXPECT_TRUE(out.close()) << out.error().toString();
    return out.buffer();
}

TEST(ioReadContext, EveryValueKindRoundTripsBitForBit) {
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
    float floatsBack[4];
    double doublesBack[4];
    std::int32_t intsBack[4];
    std::uint32_t uintsBack[3];
    std::uint8_t bytesBack[3];
    EXPECT_EQ(in.readFloatArray(floatsBack, 4), 4u);
    EXPECT_EQ(in.readDoubleArray(doublesBack, 4), 4u);
    EXPECT_EQ(in.readIntArray(intsBack, 4), 4u);
    EXPECT_EQ(in.readUIntArray(uintsBack, 3), 3u);
    EXPECT_EQ(in.readByteArray(bytesBack, 3), 3u);
    EXPECT_EQ(std::memcmp(floatsBack, floats, sizeof floats), 0);
    EXPECT_EQ(std::memcmp(doublesBack, doubles, sizeof doubles), 0);
    EXPECT_EQ(std::memcmp(intsBack, ints, sizeof ints), 0);
    EXPECT_EQ(std::memcmp(uintsBack, uints, sizeof uints), 0);
    EXPECT_EQ(std::memcmp(bytesBack, bytes, sizeof bytes), 0);
    EXPECT_EQ(in.readFloatArray(nullptr, 0), 0u);
    EXPECT_TRUE(in.ok()) << in.error().toString();
    EXPECT_FALSE(in.nextPacket());
    EXPECT_TRUE(in.ok());
}

} // namespace

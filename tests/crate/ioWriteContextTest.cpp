#include "crate/ioWriteContext.h"

#include <gtest/gtest.h>

#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include "crate/ioReadContext.h"
#include "tests/crate/PacketBytes.h"

namespace {

using crateTest::TempDir;

TEST(IoWriteContext, FileRoundTripAcrossOutputBlocksAndOneHugePacket) {
    // 3000 packets of 1000 floats (12 MB, many 1 MiB blocks), then one 3 MB packet.
    TempDir dir;
    const std::string path = dir.file("blocks.fwpk");
    std::vector<float> values(3000 * 1000);
    std::iota(values.begin(), values.end(), 0.5f);
    std::vector<double> huge(400000);
    std::iota(huge.begin(), huge.end(), -7.0);
    {
        ioWriteContext out(path);
        for (int p = 0; p < 3000; ++p) {
            out.startPacket("block");
            out.writeInt(p);
            out.writeFloatArray(values.data() + p * 1000, 1000);
            out.endPacket();
        }
        out.startPacket("huge");
        out.writeDoubleArray(huge.data(), huge.size());
        out.endPacket();
        ASSERT_TRUE(out.close()) << out.error().toString();
        EXPECT_TRUE(out.buffer().empty());
    }
    ioReadContext in(path);
    std::vector<float> back(values.size(), -1.0f);
    for (int p = 0; p < 3000; ++p) {
        ASSERT_TRUE(in.nextPacket()) << in.error().toString();
        ASSERT_EQ(in.readInt(), p);
        ASSERT_EQ(in.readFloatArray(back.data() + p * 1000, 1000), 1000u);
    }
    EXPECT_EQ(back, values);
    std::vector<double> hugeBack(huge.size());
    ASSERT_TRUE(in.nextPacket());
    EXPECT_EQ(in.getPacketTypeName(), "huge");
    EXPECT_EQ(in.readDoubleArray(hugeBack.data(), hugeBack.size()), huge.size());
    EXPECT_EQ(hugeBack, huge);
    EXPECT_FALSE(in.nextPacket());
    EXPECT_TRUE(in.ok()) << in.error().toString();
}

TEST(IoWriteContext, FailedOutputIsReported) {
    {
        ioWriteContext out("/dev/full");
        out.startPacket("p");
        out.writeInt(1);
        out.endPacket();
        EXPECT_FALSE(out.close());
        EXPECT_EQ(out.error().message, "cannot write the file: No space left on device");
        EXPECT_EQ(out.error().byteOffset, 0u);
    }
    ioWriteContext missing("/nonexistent-directory/x.fwpk");
    EXPECT_FALSE(missing.ok());
    EXPECT_EQ(missing.error().message,
              "cannot open '/nonexistent-directory/x.fwpk' for writing: No such file or directory");
    missing.startPacket("p"); // does nothing after the error
    EXPECT_FALSE(missing.close());
    ioReadContext folder("/tmp");
    EXPECT_EQ(folder.error().message, "cannot read '/tmp': Is a directory");
    ioReadContext absent("/nonexistent-directory/x.fwpk");
    EXPECT_EQ(absent.error().message,
              "cannot open '/nonexistent-directory/x.fwpk': No such file or directory");

    // A full disk found mid-file (a flush of a full block) names the bytes that were lost.
    ioWriteContext big("/dev/full");
    std::vector<std::uint8_t> block(300000);
    for (int p = 0; p < 8 && big.ok(); ++p) {
        big.startPacket("p");
        big.writeByteArray(block.data(), block.size());
        big.endPacket();
    }
    EXPECT_FALSE(big.ok());
    EXPECT_EQ(big.error().byteOffset, 0u);
    EXPECT_FALSE(big.close());
}

TEST(IoWriteContext, MisuseIsAnErrorThatStopsTheWrite) {
    struct Case {
        const char* name;
        std::function<void(ioWriteContext&)> misuse;
        const char* message;
        std::int64_t packetIndex;
    };
    const Case cases[] = {
        {"ValueOutsidePacket", [](ioWriteContext& o) { o.writeInt(1); },
         "int32 written outside a packet", -1},
        {"EmptyName", [](ioWriteContext& o) { o.startPacket(""); },
         "type name of 0 bytes (a name has 1 to 255)", -1},
        {"LongName", [](ioWriteContext& o) { o.startPacket(std::string(256, 'x')); },
         "type name of 256 bytes (a name has 1 to 255)", -1},
        {"TwoOpen",
         [](ioWriteContext& o) {
             o.startPacket("a");
             o.startPacket("b");
         },
         "startPacket with the previous packet still open", 0},
        {"SubPacketOpen",
         [](ioWriteContext& o) {
             o.startPacket("a");
             o.startSubPacket();
             o.endPacket();
         },
         "endPacket with a sub-packet still open", 0},
        {"EndWithoutSub",
         [](ioWriteContext& o) {
             o.startPacket("a");
             o.endSubPacket();
         },
         "endSubPacket without an open sub-packet", 0},
        {"StartAfterClose",
         [](ioWriteContext& o) {
             o.close();
             o.startPacket("a");
         },
         "startPacket after close", -1},
        {"CloseWithPacketOpen",
         [](ioWriteContext& o) {
             o.startPacket("a");
             o.close();
         },
         "closed with a packet still open", 0},
        {"NumberedButNotWritten",
         [](ioWriteContext& o) {
             static int a, b;
             o.referenceOf(&a); // 1, never written
             o.startPacket("a");
             o.writePointer(&b); // 2 would reach the file first
         },
         "reference 2 written before reference 1 (numbered by referenceOf but not yet written)", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ioWriteContext out;
        c.misuse(out);
        EXPECT_FALSE(out.ok());
        EXPECT_EQ(out.error().message, c.message);
        EXPECT_EQ(out.error().packetIndex, c.packetIndex);
        EXPECT_EQ(out.buffer().size(), 16u); // nothing but the file header got out
    }
}

TEST(IoWriteContext, DiscardedPacketLeavesNoTraceInTheNumbering) {
    static int a, b, c;
    ioWriteContext out;
    out.startPacket("kept", &a);
    out.endPacket();
    out.startPacket("dropped", &b); // numbers b 2 and its type id 2, then forgets both
    out.writePointer(&c);
    out.invalidPacket("changed my mind");
    out.writeInt(5);
    out.endPacket();
    EXPECT_FALSE(out.isReferenceDefined(2));
    out.startPacket("kept", &c);
    out.writePointer(&a);
    out.endPacket();
    out.startPacket("late");
    out.endPacket();
    ASSERT_TRUE(out.close()) << out.error().toString();
    EXPECT_EQ(out.invalidPacketCount(), 1u);
    EXPECT_EQ(out.referenceOf(&c), 2);

    ioReadContext in(out.buffer().data(), out.buffer().size());
    std::vector<std::string> names;
    while (in.nextPacket()) {
        names.emplace_back(in.getPacketTypeName());
    }
    EXPECT_TRUE(in.ok()) << in.error().toString();
    EXPECT_EQ(names, (std::vector<std::string>{"kept", "kept", "late"}));
}

TEST(IoWriteContext, ReferenceNumbersHoldForAnyAddressLayout) {
    // Dense, page-strided and far-strided addresses (only numbered, never dereferenced),
    // enough of each to grow the map several times and to make regular strides cluster.
    for (const std::uintptr_t stride : {std::uintptr_t{8}, std::uintptr_t{4096},
                                        std::uintptr_t{1} << 20, std::uintptr_t{1} << 27}) {
        SCOPED_TRACE(stride);
        ioWriteContext out;
        const auto address = [&](int i) {
            return reinterpret_cast<const void*>((std::uintptr_t{1} << 44) +
                                                 static_cast<std::uintptr_t>(i) * stride);
        };
        for (int i = 0; i < 20000; ++i) {
            ASSERT_EQ(out.referenceOf(address(i)), i + 1);
        }
        for (int i = 19999; i >= 0; --i) {
            ASSERT_EQ(out.referenceOf(address(i)), i + 1);
        }
    }
}

} // namespace

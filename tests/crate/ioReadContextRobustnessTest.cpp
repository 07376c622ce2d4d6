// Damaged and hostile files: every read ends, with an error or without, and never touches
// memory it should not (run under the asan preset).

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <memory>
#include <random>
#include <sstream>
#include <string>

#include "crate/ioPacketPrinter.h"
#include "crate/ioPacketRegistry.h"
#include "crate/ioPacketWalker.h"
#include "crate/ioReadContext.h"
#include "tests/crate/PacketBytes.h"

namespace {

using crateTest::Bytes;

/// What one read of the sample file built: objects with pointer slots that live to the end.
struct Built {
    std::deque<std::array<void*, 2>> objects;
    std::array<float, 8> floats;
    std::array<double, 8> doubles;
    std::array<std::int32_t, 8> ints;
    std::array<std::uint32_t, 8> uints;
    std::array<std::uint8_t, 8> bytes;
};

/// Reads "test.header" and "test.other" packets as the sample file writes them.
class SampleType : public ioPacketType {
public:
    SampleType(const char* name, Built& built) : ioPacketType(name), built_(built) {}

    bool readPacket(ioReadContext& in) override {
        std::array<void*, 2>& object = built_.objects.emplace_back();
        if (getName() == "test.other") {
            in.readDoubleArray(built_.doubles.data(), 8);
            in.readUIntArray(built_.uints.data(), 8);
            in.readByteArray(built_.bytes.data(), 8);
            in.readFloatArray(built_.floats.data(), 8);
            in.readPointer(&object[0]);
        } else if (in.readInt() < 0) {
            in.readPointer(&object[0]);
            if (in.nextChunk()) {
                in.readUInt();
                in.readInt64();
                in.readString();
                in.readString();
                if (in.startSubPacket()) {
                    in.readFloat();
                    if (in.startSubPacket()) {
                        in.readBool();
                        in.nextChunk();
                        in.readDouble();
                        in.endSubPacket();
                    }
                    if (in.nextChunk()) {
                        in.readIntArray(built_.ints.data(), 8);
                    }
                    in.endSubPacket();
                }
            }
        } else {
            in.readPointer(&object[1]);
        }
        if (in.getPacketReference() != 0) {
            in.defineReference(in.getPacketReference(), &object);
        }
        return true;
    }

private:
    Built& built_;
};

/// Brackets balance outside strings, and the document ends its outer object.
bool balancedJson(const std::string& json) {
    std::string open;
    bool inString = false;
    for (std::size_t i = 0; i < json.size(); ++i) {
        const char c = json[i];
        if (inString) {
            i += c == '\\' ? 1 : 0;
            inString = c != '"';
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            open += c;
        } else if (c == ']' || c == '}') {
            if (open.empty() || open.back() != (c == ']' ? '[' : '{')) {
                return false;
            }
            open.pop_back();
        }
    }
    return open.empty() && !inString && json.ends_with("}\n");
}

/// Reads `file` three ways: printed through the walker as JSON and as text, and through a
/// registry. The JSON closes every bracket, and it names the error, if any, as the text does.
/// True when every way succeeds.
bool readEveryWay(const Bytes& file) {
    bool printedOk = true;
    for (const bool json : {true, false}) {
        ioReadContext walked(file.data(), file.size());
        std::ostringstream printed;
        const bool ok = printPacketFile(walked, printed, {json, 2});
        const std::string listing = printed.str();
        EXPECT_EQ(ok, !walked.error().isSet());
        EXPECT_LE(walked.error().byteOffset, file.size());
        EXPECT_TRUE(!json || balancedJson(listing)) << listing;
        EXPECT_EQ(listing.find(json ? "\"error\":{" : "error: ") != std::string::npos, !ok)
            << listing;
        printedOk = printedOk && ok;
    }
    Built built;
    ioPacketRegistry registry;
    registry.supportedType(new SampleType("test.header", built));
    registry.supportedType(new SampleType("test.other", built));
    ioReadContext read(file.data(), file.size());
    const bool readOk = read.readAll(registry);
    EXPECT_EQ(readOk, !read.error().isSet());
    EXPECT_LE(read.error().byteOffset, file.size());
    return printedOk && readOk;
}

// Every cut of the sample file, the whole one included, fails every way unless cut at a packet
// boundary; read from disk, it gives what its bytes give in memory, to the byte.
TEST(IoReadContextRobustness, EveryTruncationFailsUnlessAtAPacketBoundary) {
    const crateTest::TempDir dir;
    const std::string path = dir.file("cut.fwpk");
    const Bytes file = crateTest::sampleFile();
    for (std::size_t size = 0; size <= file.size(); ++size) {
        SCOPED_TRACE(size);
        const Bytes cut(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
        const bool boundary = size == 16 || size == 126 || size == 183 || size == file.size();
        EXPECT_EQ(readEveryWay(cut), boundary);
        std::FILE* out = std::fopen(path.c_str(), "wb");
        ASSERT_EQ(std::fwrite(file.data(), 1, size, out), size);
        std::fclose(out);
        ioReadContext fromDisk(path);
        ioReadContext fromMemory(file.data(), size);
        ioPacketVisitor ignore;
        EXPECT_EQ(walkPacketFile(fromDisk, ignore), walkPacketFile(fromMemory, ignore));
        EXPECT_EQ(fromDisk.getPacketIndex(), fromMemory.getPacketIndex());
        EXPECT_EQ(fromDisk.error().toString(), fromMemory.error().toString());
    }
}

TEST(IoReadContextRobustness, EverySingleBitFlipIsCaughtOutsideTheReservedHeaderBytes) {
    const Bytes file = crateTest::sampleFile();
    for (std::size_t byte = 0; byte < file.size(); ++byte) {
        for (int bit = 0; bit < 8; ++bit) {
            SCOPED_TRACE(std::to_string(byte) + "." + std::to_string(bit));
            Bytes flipped = file;
            flipped[byte] ^= static_cast<std::uint8_t>(1 << bit);
            // Flags and reserved (bytes 8 to 15) and the minor version are ignored.
            const bool ignored = (byte >= 6 && byte < 16);
            EXPECT_EQ(readEveryWay(flipped), ignored);
        }
    }
}

TEST(IoReadContextRobustness, ResealedOverwritesNeverCrash) {
    // Overwrites whose checksums are recomputed: the parser itself meets hostile bytes.
    const Bytes file = crateTest::sampleFile();
    std::mt19937 random(20240611);
    int accepted = 0;
    for (int trial = 0; trial < 4000; ++trial) {
        Bytes damaged = file;
        const int overwrites = 1 + static_cast<int>(random() % 3);
        for (int k = 0; k < overwrites; ++k) {
            const std::size_t at = 16 + random() % (file.size() - 16);
            const std::uint8_t choices[] = {0x00, 0x01, 0x7f, 0x80,
                                            0xff, 0x0e, 0x08, static_cast<std::uint8_t>(random())};
            damaged[at] = choices[random() % 8];
        }
        crateTest::resealPackets(damaged);
        accepted += readEveryWay(damaged) ? 1 : 0;
    }
    // Some overwrites only change values (still a valid file); most break the structure.
    EXPECT_GT(accepted, 0);
    EXPECT_LT(accepted, 4000);
}

} // namespace

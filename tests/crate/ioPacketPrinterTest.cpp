#include "crate/ioPacketPrinter.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "crate/ioWriteContext.h"
#include "tests/crate/PacketBytes.h"

namespace {

std::string print(const crateTest::Bytes& file, bool json, std::size_t maxArrayElements = 2) {
    ioReadContext in(file.data(), file.size());
    std::ostringstream text;
    printPacketFile(in, text, {json, maxArrayElements});
    return text.str();
}

TEST(IoPacketPrinter, TextListingShowsStructureOffsetsAndElidedArrays) {
    const std::string listing = print(crateTest::sampleFile(), false);
    EXPECT_TRUE(
        listing.starts_with("packet 0 at 16: test.header (object 1), payload 87 bytes\n"
                            "  chunk 0 at 32, 7 bytes\n"
                            "    @32 int32 -3\n"
                            "    @37 pointer 2\n"
                            "  chunk 1 at 40, 78 bytes\n"
                            "    @40 uint32 9\n"
                            "    @45 int64 -1099511627776\n"
                            "    @54 string \"name\"\n"
                            "    @60 string \"\"\n"
                            "    @62 sub-packet\n"
                            "      chunk 0 at 65, 20 bytes\n"
                            "        @65 float 0.25\n"
                            "        @70 sub-packet\n"
                            "          chunk 0 at 73, 2 bytes\n"
                            "            @73 bool true\n"
                            "          chunk 1 at 76, 9 bytes\n"
                            "            @76 double -0\n"
                            "      chunk 1 at 86, 14 bytes\n"
                            "        @86 int32 array [3] -7 0 ... (1 more)\n"
                            "    @100 float array [4] 1 -0 ... (2 more)\n"
                            "packet 1 at 126: test.other (object 3), payload 35 bytes\n"))
        << listing;
    EXPECT_TRUE(listing.ends_with("    @192 pointer 0\n3 packets\n")) << listing;
    EXPECT_NE(print(crateTest::sampleFile(), false, 8).find("[4] 1 -0 NaN(0x7fc00000) 3.5\n"),
              std::string::npos);
}

TEST(IoPacketPrinter, EscapesStringsForTextAndJson) {
    ioWriteContext out;
    out.startPacket("q\"\x01");
    out.writeString("a\n\"\xff\xe2\x82\xac");
    out.endPacket();
    out.close();
    const crateTest::Bytes escaped = out.buffer();
    EXPECT_NE(print(escaped, false).find("string \"a\\n\\\"\\xff\xe2\x82\xac\"\n"),
              std::string::npos);
    const std::string json = print(escaped, true);
    EXPECT_NE(json.find("\"type\":\"q\\\"\\u0001\""), std::string::npos) << json;
    EXPECT_NE(json.find("\"value\":\"a\\n\\\"\\ufffd\xe2\x82\xac\""), std::string::npos) << json;
}

} // namespace

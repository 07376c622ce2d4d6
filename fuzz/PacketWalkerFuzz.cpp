// The raw packet reader on any bytes: the walker and both listings over the file, then a read
// through a registry whose types read every value generically, define their objects, follow
// pointers (forward ones included) and reject some packets. Each input is read as it is (the
// checksums stop most mutations) and again with its checksums put right (the parser behind
// them meets the mutation).

#include <cstddef>
#include <cstdint>
#include <deque>
#include <ostream>
#include <streambuf>
#include <vector>

#include "crate/ioPacketPrinter.h"
#include "crate/ioPacketRegistry.h"
#include "crate/ioReadContext.h"
#include "fuzz/support/PacketSeals.h"

namespace {

/// An output stream that drops what it is given.
class NullBuffer : public std::streambuf {
protected:
    int overflow(int c) override { return c; }
    std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

/// Reads a packet's values whatever they are, as far as its first three chunks go.
class GenericType : public ioPacketType {
public:
    GenericType(const char* name, int kind, std::deque<void*>& slots)
        : ioPacketType(name), kind_(kind), slots_(slots) {}

    bool readPacket(ioReadContext& in) override {
        for (int chunk = 0; chunk < 3; ++chunk) {
            if (chunk != 0 && !in.nextChunk()) {
                break;
            }
            if (!values(in, 0)) {
                return false;
            }
        }
        if (in.getPacketReference() != 0) {
            in.defineReference(in.getPacketReference(), &slots_.emplace_back(), kind_);
        }
        return true;
    }

private:
    bool values(ioReadContext& in, int depth) {
        for (ioValueKind kind = in.peekValueKind(); kind != ioValueKind::none && in.ok();
             kind = in.peekValueKind()) {
            switch (kind) {
                case ioValueKind::int32:
                    if (in.readInt() < 0) {
                        return false; // rejected: its fix-ups are dropped
                    }
                    break;
                case ioValueKind::pointer:
                    in.readPointer(&slots_.emplace_back(), kind_);
                    break;
                case ioValueKind::subPacket:
                    if (in.startSubPacket()) {
                        if (depth < 4) {
                            values(in, depth + 1);
                        }
                        in.endSubPacket();
                    }
                    break;
                case ioValueKind::floatArray: {
                    // An odd count is given one element too little room: an error, no write.
                    const std::size_t count = in.peekArrayCount();
                    std::vector<float> room(count);
                    in.readFloatArray(room.data(), count % 2 == 0 ? count : count - 1);
                    break;
                }
                case ioValueKind::string:
                    in.readString();
                    break;
                default:
                    in.skipValue();
                    break;
            }
        }
        return true;
    }

    int kind_;
    std::deque<void*>& slots_;
};

void readEveryWay(const std::uint8_t* data, std::size_t size) {
    NullBuffer nothing;
    std::ostream sink(&nothing);
    for (const bool json : {false, true}) {
        ioReadContext listed(data, size);
        printPacketFile(listed, sink, {json, 4});
    }

    std::deque<void*> slots; // pointer slots live to the end of the read
    ioPacketRegistry registry;
    registry.supportedType(new GenericType("fuzz.a", 1, slots));
    registry.supportedType(new GenericType("fuzz.b", 1, slots));
    ioReadContext read(data, size);
    read.readAll(registry);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    readEveryWay(data, size);
    std::vector<std::uint8_t> resealed(data, data + size);
    formworkFuzz::resealPackets(resealed);
    readEveryWay(resealed.data(), resealed.size());
    return 0;
}

#include "fuzz/support/PacketSeals.h"

#include <xxhash.h>

namespace formworkFuzz {

namespace {

bool readVarint(const std::vector<std::uint8_t>& file, std::size_t& at, std::uint64_t& value) {
    value = 0;
    for (unsigned shift = 0; shift < 64 && at < file.size(); shift += 7) {
        const std::uint8_t byte = file[at++];
        value |= static_cast<std::uint64_t>(byte & 0x7f) << shift;
        if (byte < 0x80) {
            return true;
        }
    }
    return false;
}

} // namespace

void resealPackets(std::vector<std::uint8_t>& file) {
    std::size_t at = 16; // after the file header
    while (at < file.size()) {
        const std::size_t start = at;
        std::uint64_t typeId = 0, nameLength = 0, reference = 0, length = 0;
        if (!readVarint(file, at, typeId) ||
            (typeId == 0 && (!readVarint(file, at, nameLength) || nameLength > file.size()))) {
            return;
        }
        at += static_cast<std::size_t>(nameLength);
        if (!readVarint(file, at, reference) || !readVarint(file, at, length) ||
            length > file.size() || at + length + 8 > file.size()) {
            return;
        }
        at += static_cast<std::size_t>(length);
        const std::uint64_t sum = XXH3_64bits(file.data() + start, at - start);
        for (int i = 0; i < 8; ++i) {
            file[at++] = static_cast<std::uint8_t>(sum >> (8 * i));
        }
    }
}

} // namespace formworkFuzz

#include "tools/formwork/PacketDump.h"

namespace formworkTool {

bool dumpPacketFile(const std::string& path, bool /*json*/, int /*maxValues*/, std::string& text,
                    std::string& error) {
    text.clear();
    error = path + ": packet files cannot be read by this build";
    return false;
}

} // namespace formworkTool

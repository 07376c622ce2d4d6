#include "tools/formwork/PacketDump.h"

#include <sstream>

#include "crate/ioPacketPrinter.h"
#include "crate/ioReadContext.h"
#include "tools/formwork/MeshFiles.h"

namespace formworkTool {

bool dumpPacketFile(const std::string& path, bool json, int maxValues, std::string& text,
                    std::string& error) {
    text.clear();
    if (!checkReadable(path, error)) {
        return false;
    }
    ioReadContext context(path);
    ioPrintOptions options;
    options.json = json;
    options.maxArrayElements = static_cast<std::size_t>(maxValues);
    std::ostringstream listing;
    const bool sound = printPacketFile(context, listing, options);
    text = listing.str();
    if (!sound) {
        error = path + ": " + context.error().toString();
    }
    return sound;
}

} // namespace formworkTool

#pragma once

#include <string>

namespace formworkTool {

/// The structure of any packet file, as `formwork dump` shows it: every packet with its
/// index, byte offset, type name and object reference, and its chunks' values (sub-packets
/// indented), arrays longer than `maxValues` shortened to their first values and a count; or
/// with `json` the same as one JSON object. Needs no knowledge of the packet types.
///
/// False, with `error` one line naming the file, the packet and what is wrong, when the file
/// cannot be read or is damaged; `text` then holds what was walked before the damage.
bool dumpPacketFile(const std::string& path, bool json, int maxValues, std::string& text,
                    std::string& error);

} // namespace formworkTool

#pragma once

#include <string>
#include <string_view>

#include "geom/entity/LibraryDebugChannel.h"

namespace koGeomTest {

// The text that `print` sends to the library's debug channel, enabled or not as asked; the
// channel is left disabled and without a sink.
template <class Print>
std::string printedText(Print print, bool enabled = true) {
    std::string text;
    koOS::DebugChannel& channel = koGeom::debugChannel();
    channel.setSink([&text](std::string_view part) { text += part; });
    channel.setEnabled(enabled);
    print(channel);
    channel.setEnabled(false);
    channel.setSink(nullptr);
    return text;
}

} // namespace koGeomTest

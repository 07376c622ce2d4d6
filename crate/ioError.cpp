#include "crate/ioError.h"

std::string ioError::toString() const {
    std::string text;
    if (packetIndex >= 0) {
        text = "packet " + std::to_string(packetIndex);
        if (!typeName.empty()) {
            text += " (" + typeName + ")";
        }
        text += " ";
    }
    text += "at byte " + std::to_string(byteOffset) + ": " + message;
    return text;
}

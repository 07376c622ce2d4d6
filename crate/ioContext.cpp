#include "crate/ioContext.h"

#include <utility>

namespace {
/// Invalid packets kept with their reasons; the rest are only counted.
constexpr std::size_t keptInvalidPackets = 1000;
} // namespace

ioContext::ioContext() = default;
ioContext::~ioContext() = default;

bool ioContext::isReferenceDefined(int reference) const noexcept {
    return getReferenceDefinition(reference) != nullptr;
}

void* ioContext::getReferenceDefinition(int reference) const noexcept {
    if (reference <= 0 || static_cast<std::size_t>(reference) >= definitions_.size()) {
        return nullptr;
    }
    return definitions_[static_cast<std::size_t>(reference)];
}

void ioContext::invalidPacket(std::string_view reason) {
    if (!ok() || packetInvalid_) {
        return;
    }
    ioError record =
        locate(reason.empty() ? std::string("packet marked invalid") : std::string(reason));
    if (onPacketInvalid()) {
        packetInvalid_ = true;
    } else {
        // No packet open: a type reporting, once the last packet is read, that what its
        // packets built does not hold. The reason is kept; there is nothing to skip.
        record.packetIndex = -1;
        record.typeName.clear();
    }
    ++invalidPacketCount_;
    if (invalidPackets_.size() < keptInvalidPackets) {
        invalidPackets_.push_back(std::move(record));
    }
}

void ioContext::fail(ioError error) {
    if (error_.isSet()) {
        return;
    }
    if (error.message.empty()) {
        error.message = "unspecified error";
    }
    error_ = std::move(error);
}

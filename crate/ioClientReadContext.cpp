#include "crate/ioClientReadContext.h"

#include "crate/ioReadContext.h"

ioClientReadContext::~ioClientReadContext() = default;

bool ioClientReadContext::read(ioPacketRegistry& registry) {
    return context_->readAll(registry, this);
}

void ioClientReadContext::prePacketRead(const ioPacketType&) {}
void ioClientReadContext::postPacketRead(const ioPacketType&, bool) {}

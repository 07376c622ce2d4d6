#include "crate/ioPacketType.h"

#include <utility>

ioPacketType::ioPacketType(std::string name) : name_(std::move(name)) {}
ioPacketType::~ioPacketType() = default;

void ioPacketType::memoryNotReferenced(ioReadContext&, int, void*) {}
void ioPacketType::hasUnresolvedPointer(ioReadContext&, int) {}
void ioPacketType::readFinished(ioReadContext&) {}

#include "crate/ioPacketRegistry.h"

ioPacketRegistry::ioPacketRegistry() = default;
ioPacketRegistry::~ioPacketRegistry() = default;

void ioPacketRegistry::supportedType(ioPacketType* type) {
    if (type == nullptr) {
        return;
    }
    std::unique_ptr<ioPacketType> owned(type);
    auto found = index_.find(std::string_view(type->getName()));
    if (found != index_.end()) {
        // The key views the old type's name: re-key it to the new one before the old dies.
        const std::size_t index = found->second;
        if (types_[index].get() == type) {
            owned.release(); // registered twice: already ours
            return;
        }
        index_.erase(found);
        types_[index] = std::move(owned);
        index_.emplace(std::string_view(types_[index]->getName()), index);
        return;
    }
    types_.push_back(std::move(owned));
    index_.emplace(std::string_view(types_.back()->getName()), types_.size() - 1);
}

ioPacketType* ioPacketRegistry::findType(std::string_view name) const noexcept {
    auto found = index_.find(name);
    return found == index_.end() ? nullptr : types_[found->second].get();
}

std::size_t ioPacketRegistry::size() const noexcept { return types_.size(); }

ioPacketType* ioPacketRegistry::typeAt(std::size_t index) const noexcept {
    return index < types_.size() ? types_[index].get() : nullptr;
}

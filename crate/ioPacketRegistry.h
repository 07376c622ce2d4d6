#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "crate/CrateExport.h"
#include "crate/ioPacketType.h"

/// The packet types a reader understands, found by name in O(1).
class CRATE_EXPORT ioPacketRegistry {
public:
    ioPacketRegistry();
    ioPacketRegistry(const ioPacketRegistry&) = delete;
    ioPacketRegistry& operator=(const ioPacketRegistry&) = delete;
    ~ioPacketRegistry();

    /// Takes ownership of `type`. A type registered under a name already present replaces
    /// (and deletes) the earlier one. A null `type` is ignored.
    void supportedType(ioPacketType* type);
    /// The type registered under `name`, or null.
    ioPacketType* findType(std::string_view name) const noexcept;
    /// The registered types in registration order.
    std::size_t size() const noexcept;
    ioPacketType* typeAt(std::size_t index) const noexcept;

private:
    std::vector<std::unique_ptr<ioPacketType>> types_;
    /// Index into `types_` by the type's name (the key views the type's own name).
    std::unordered_map<std::string_view, std::size_t> index_;
};

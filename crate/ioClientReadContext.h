#pragma once

#include "crate/CrateExport.h"

class ioPacketRegistry;
class ioPacketType;
class ioReadContext;

/// A client's state while it reads a file: holds the `ioReadContext` it reads through and
/// is told before and after every packet of a known type.
class CRATE_EXPORT ioClientReadContext {
public:
    explicit ioClientReadContext(ioReadContext& context) noexcept : context_(&context) {}
    /// A second client over the same context.
    ioClientReadContext(const ioClientReadContext&) noexcept = default;
    ioClientReadContext& operator=(const ioClientReadContext&) = delete;
    virtual ~ioClientReadContext();

    ioReadContext& getContext() const noexcept { return *context_; }
    /// Reads the whole file through `registry` with this client's hooks:
    /// `getContext().readAll(registry, this)`.
    bool read(ioPacketRegistry& registry);

    /// Called before a packet of `type` is read.
    virtual void prePacketRead(const ioPacketType& type);
    /// Called after it, `accepted` false when the packet was marked invalid.
    virtual void postPacketRead(const ioPacketType& type, bool accepted);

private:
    ioReadContext* context_;
};

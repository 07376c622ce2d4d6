#pragma once

#include "tessar/TessarExport.h"
#include "tessar/rtb/SignalBase.h"

namespace koRTB {

/// The receiving end of connections: an object that can be connected to signals holds one
/// (as a member or a base), and its destruction disconnects everything connected to it.
///
/// A receiver may be destroyed during a broadcast that is calling it; the item being called
/// stays pinned until the broadcast leaves it and is not called again. Copying a client
/// copies none of its connections.
class TESSAR_EXPORT SignalClient {
public:
    SignalClient() noexcept = default;
    SignalClient(const SignalClient&) noexcept {}
    SignalClient& operator=(const SignalClient&) noexcept { return *this; }
    ~SignalClient();

    /// Disconnects every connection of this client. O(connections).
    void disconnectAll() noexcept;
    /// The number of this client's connections not disconnected. O(connections).
    int numConnections() const noexcept;

private:
    friend class SignalBase;
    friend class SignalBase::connectionItem;

    SignalBase::connectionItem* first_ = nullptr;
};

} // namespace koRTB

#pragma once

#include "tessar/TessarExport.h"

namespace koRTB {

class SignalClient;

/// The part of a signal that does not depend on its argument: the ordered list of
/// connections and the signal's suspension state. `Signal<Args...>` adds connecting and the
/// broadcast walk.
///
/// Connections are kept in the order they were made and are called in that order. Each
/// connection also belongs to the `SignalClient` of its receiver, so that destroying either
/// end releases it. A signal and its clients are used from one thread at a time.
class TESSAR_EXPORT SignalBase {
public:
    /// One connection of a signal to a receiver.
    ///
    /// Besides its links, an item has two flags (disconnected, blocked) that the broadcast
    /// tests before calling the receiver, and a lock. While an item is locked it is not
    /// released: disconnecting it (by its signal, its client, or the destruction of either)
    /// only marks it disconnected, and it stays linked so that the walk can read its next
    /// link; the last `unlock()` releases it. The lock pins the item for the broadcast on the
    /// signal's thread; it is not a thread lock.
    class TESSAR_EXPORT connectionItem {
    public:
        connectionItem(const connectionItem&) = delete;
        connectionItem& operator=(const connectionItem&) = delete;

        /// \name Broadcast protocol
        /// @{
        /// Pins the item (nestable).
        void lock() noexcept { ++locks_; }
        /// Unpins the item; the last unlock releases an item disconnected meanwhile.
        void unlock() noexcept;
        /// The next item of the signal's list, or null. Valid while this item is locked.
        connectionItem* next() const noexcept { return next_; }
        /// True when the item neither is disconnected nor blocked.
        bool isLive() const noexcept { return !disconnected_ && !blocked_; }
        /// @}

        bool isDisconnected() const noexcept { return disconnected_; }
        bool isBlocked() const noexcept { return blocked_; }
        bool isLocked() const noexcept { return locks_ > 0; }

        /// A blocked item stays connected but is skipped by every broadcast until unblocked.
        void setBlocked(bool blocked) noexcept { blocked_ = blocked; }

    protected:
        explicit connectionItem(SignalClient* client) noexcept : client_(client) {}
        virtual ~connectionItem();

    private:
        friend class SignalBase;
        friend class SignalClient;

        // Releases the item unless it is locked, in which case the last unlock does.
        void releaseWhenUnlocked() noexcept;
        void unlinkFromSignal() noexcept;
        void unlinkFromClient() noexcept;

        SignalBase* signal_ = nullptr;   // null once the signal is gone
        SignalClient* client_ = nullptr; // null once the client is gone
        connectionItem* previous_ = nullptr;
        connectionItem* next_ = nullptr;
        connectionItem* previousOfClient_ = nullptr;
        connectionItem* nextOfClient_ = nullptr;
        int locks_ = 0;
        bool disconnected_ = false;
        bool blocked_ = false;
    };

    SignalBase(const SignalBase&) = delete;
    SignalBase& operator=(const SignalBase&) = delete;

    /// \name Suspension
    /// A suspended or blocked signal calls nobody. Both flags are tested before every item of
    /// a broadcast, so a listener that sets either stops the rest of the walk.
    /// @{
    void suspend() noexcept { suspended_ = true; }
    void resume() noexcept { suspended_ = false; }
    bool isSuspended() const noexcept { return suspended_; }
    void setBlocked(bool blocked) noexcept { blocked_ = blocked; }
    bool isBlocked() const noexcept { return blocked_; }
    /// True when either suspension flag is set.
    bool isHeld() const noexcept { return suspended_ || blocked_; }
    /// @}

    /// \name Connections
    /// @{
    /// Releases one connection of this signal (or marks it disconnected while a broadcast
    /// holds it). Does nothing for null or an item already disconnected.
    void disconnect(connectionItem* item) noexcept;
    /// Disconnects every connection. O(number of connections).
    void disconnectAll() noexcept;
    /// The number of connections not disconnected, blocked ones included. O(connections).
    int numConnections() const noexcept;
    /// The first item of the list, or null.
    connectionItem* firstItem() const noexcept { return first_; }
    /// @}

protected:
    SignalBase() noexcept = default;
    /// Releases every item; an item locked by a broadcast still running is cut from the list
    /// (its next link becomes null, ending that walk) and released by its last unlock.
    ~SignalBase();

    /// Appends `item` to the list and to its client's list.
    void append(connectionItem* item) noexcept;

private:
    connectionItem* first_ = nullptr;
    connectionItem* last_ = nullptr;
    bool suspended_ = false;
    bool blocked_ = false;
};

} // namespace koRTB

#pragma once

#include <concepts>
#include <functional>
#include <type_traits>
#include <utility>

#include "tessar/rtb/SignalBase.h"
#include "tessar/rtb/SignalClient.h"

namespace koRTB {

/// A signal that broadcasts `Args...` (usually one argument) to its connected receivers.
///
/// A receiver is an object with a `SignalClient` (as a base or a member) and a member
/// function taking the signal's argument; a callable may be connected too, living as long
/// as the client it is tied to.
///
/// The broadcast (`emit`) calls the connections in connection order, synchronously, on the
/// calling thread. Before each item it tests the signal's suspension state and stops the walk
/// when either flag is set; it skips disconnected and blocked items. While a listener runs,
/// its item is locked, so the listener may disconnect itself or any other connection, block
/// one, connect a new one (appended, and reached by this same walk), suspend the signal,
/// destroy its own receiver, or destroy the signal itself, without leaving anything dangling.
template <class... Args>
class Signal : public SignalBase {
public:
    Signal() noexcept = default;
    ~Signal() = default;

    /// Connects `method` of `receiver`, which is its own `SignalClient`. Returns the
    /// connection, valid until disconnected.
    template <class Receiver, class Method>
    requires std::derived_from<Receiver, SignalClient> && std::invocable<Method, Receiver&, Args...>
        connectionItem* connect(Receiver& receiver, Method method) {
        return connect(static_cast<SignalClient&>(receiver), receiver, method);
    }

    /// Connects `method` of `receiver`, whose connections `client` owns.
    template <class Receiver, class Method>
    requires std::invocable<Method, Receiver&, Args...> connectionItem* connect(
        SignalClient& client, Receiver& receiver, Method method) {
        auto* item = new MemberSlot<Receiver, Method>(&client, &receiver, method);
        append(item);
        return item;
    }

    /// Connects a callable, owned by the connection and released with it.
    template <class Function>
    requires std::invocable<Function&, Args...> connectionItem* connect(SignalClient& client,
                                                                        Function function) {
        auto* item = new FunctionSlot<Function>(&client, std::move(function));
        append(item);
        return item;
    }

    /// Broadcasts `args` to every live connection, in order. O(connections).
    void emit(Args... args) const {
        connectionItem* item = firstItem();
        while (item != nullptr) {
            // A signal destroyed by a listener has cut the held item's next link, so a
            // non-null item means this signal is still alive to be tested.
            if (isHeld()) {
                return;
            }
            item->lock();
            if (item->isLive()) {
                static_cast<Slot*>(item)->invoke(args...);
            }
            connectionItem* next = item->next();
            item->unlock();
            item = next;
        }
    }

    void operator()(Args... args) const { emit(args...); }

private:
    // A connection of this signal: the call through a plain function pointer keeps the
    // broadcast free of virtual calls.
    class Slot : public connectionItem {
    public:
        void invoke(Args... args) { call_(this, args...); }

    protected:
        using Call = void (*)(Slot*, Args...);
        Slot(SignalClient* client, Call call) noexcept : connectionItem(client), call_(call) {}

    private:
        Call call_;
    };

    template <class Receiver, class Method>
    class MemberSlot final : public Slot {
    public:
        MemberSlot(SignalClient* client, Receiver* receiver, Method method) noexcept
            : Slot(client, &MemberSlot::call), receiver_(receiver), method_(method) {}

    private:
        static void call(Slot* slot, Args... args) {
            auto* self = static_cast<MemberSlot*>(slot);
            std::invoke(self->method_, *self->receiver_, args...);
        }

        Receiver* receiver_;
        Method method_;
    };

    template <class Function>
    class FunctionSlot final : public Slot {
    public:
        FunctionSlot(SignalClient* client, Function function)
            : Slot(client, &FunctionSlot::call), function_(std::move(function)) {}

    private:
        static void call(Slot* slot, Args... args) {
            std::invoke(static_cast<FunctionSlot*>(slot)->function_, args...);
        }

        Function function_;
    };
};

} // namespace koRTB

#include "tessar/rtb/Signal.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

using koRTB::SignalBase;
using koRTB::SignalClient;
using IntSignal = koRTB::Signal<int>;

// A receiver that records each call in a shared log as "name:value" and can run an action
// from inside its listener.
class Listener : public SignalClient {
public:
    Listener(std::string name, std::vector<std::string>& log) : name_(std::move(name)), log_(log) {}

    void onValue(int value) {
        log_.push_back(name_ + ":" + std::to_string(value));
        if (action) {
            action();
        }
    }

    std::function<void()> action;

private:
    std::string name_;
    std::vector<std::string>& log_;
};

using Log = std::vector<std::string>;

TEST(Signal, CallsListenersInConnectionOrderAndSkipsBlockedOnes) {
    Log log;
    IntSignal signal;
    Listener a("a", log), b("b", log), c("c", log);
    signal.connect(c, &Listener::onValue);
    SignalBase::connectionItem* itemOfA = signal.connect(a, &Listener::onValue);
    SignalBase::connectionItem* itemOfB = signal.connect(b, &Listener::onValue);

    signal.emit(1);
    EXPECT_EQ(log, (Log{"c:1", "a:1", "b:1"}));

    // A blocked connection is skipped and the walk goes on to the next one.
    log.clear();
    itemOfA->setBlocked(true);
    signal.emit(2);
    EXPECT_EQ(log, (Log{"c:2", "b:2"}));
    EXPECT_EQ(signal.numConnections(), 3);

    // A disconnected one is gone for good; unblocking restores the other.
    log.clear();
    signal.disconnect(itemOfB);
    itemOfA->setBlocked(false);
    signal.emit(3);
    EXPECT_EQ(log, (Log{"c:3", "a:3"}));
    EXPECT_EQ(signal.numConnections(), 2);
    EXPECT_EQ(b.numConnections(), 0);

    // Either suspension flag of the signal silences it as a whole.
    log.clear();
    signal.suspend();
    signal.emit(4);
    signal.resume();
    signal.setBlocked(true);
    signal.emit(5);
    signal.setBlocked(false);
    signal.emit(6);
    EXPECT_EQ(log, (Log{"c:6", "a:6"}));
}

TEST(Signal, SuspendingDuringBroadcastStopsTheRemainingListeners) {
    Log log;
    IntSignal signal;
    Listener a("a", log), b("b", log), c("c", log);
    signal.connect(a, &Listener::onValue);
    signal.connect(b, &Listener::onValue);
    signal.connect(c, &Listener::onValue);
    b.action = [&] { signal.suspend(); };

    signal.emit(1);
    EXPECT_EQ(log, (Log{"a:1", "b:1"}));

    // Resumed, the next broadcast reaches everyone again; blocking mid-walk stops it alike.
    log.clear();
    signal.resume();
    b.action = [&] { signal.setBlocked(true); };
    signal.emit(2);
    EXPECT_EQ(log, (Log{"a:2", "b:2"}));
}

TEST(Signal, ListenerMayDisconnectItselfOrOthersDuringBroadcast) {
    Log log;
    IntSignal signal;
    Listener a("a", log), b("b", log), c("c", log), d("d", log);
    signal.connect(a, &Listener::onValue);
    SignalBase::connectionItem* itemOfB = signal.connect(b, &Listener::onValue);
    SignalBase::connectionItem* itemOfC = signal.connect(c, &Listener::onValue);
    signal.connect(d, &Listener::onValue);

    // b disconnects itself and the one after it: c is not called, d still is.
    b.action = [&] {
        signal.disconnect(itemOfB);
        signal.disconnect(itemOfC);
    };
    signal.emit(1);
    EXPECT_EQ(log, (Log{"a:1", "b:1", "d:1"}));
    EXPECT_EQ(signal.numConnections(), 2);

    log.clear();
    signal.emit(2);
    EXPECT_EQ(log, (Log{"a:2", "d:2"}));
}

TEST(Signal, ListenerMayBlockOthersOrConnectNewOnesDuringBroadcast) {
    Log log;
    IntSignal signal;
    Listener a("a", log), b("b", log), late("late", log);
    signal.connect(a, &Listener::onValue);
    SignalBase::connectionItem* itemOfB = signal.connect(b, &Listener::onValue);
    a.action = [&] {
        itemOfB->setBlocked(true);
        signal.connect(late, &Listener::onValue);
        a.action = nullptr;
    };

    // The new connection is appended and reached by the same walk.
    signal.emit(1);
    EXPECT_EQ(log, (Log{"a:1", "late:1"}));
}

TEST(Signal, ListenerMayDestroyItsOwnReceiverDuringBroadcast) {
    Log log;
    IntSignal signal;
    Listener a("a", log), c("c", log);
    auto doomed = std::make_unique<Listener>("b", log);
    signal.connect(a, &Listener::onValue);
    signal.connect(*doomed, &Listener::onValue);
    signal.connect(c, &Listener::onValue);
    doomed->action = [&] { doomed.reset(); };

    signal.emit(1);
    EXPECT_EQ(log, (Log{"a:1", "b:1", "c:1"}));
    EXPECT_EQ(signal.numConnections(), 2);

    log.clear();
    signal.emit(2);
    EXPECT_EQ(log, (Log{"a:2", "c:2"}));
}

TEST(Signal, DestroyingAClientDisconnectsAllItsConnections) {
    Log log;
    IntSignal first, second;
    Listener kept("kept", log);
    {
        Listener gone("gone", log);
        first.connect(gone, &Listener::onValue);
        second.connect(gone, &Listener::onValue);
        first.connect(kept, &Listener::onValue);
        ASSERT_EQ(gone.numConnections(), 2);
        // A copy of a receiver is not connected anywhere.
        Listener copy(gone);
        EXPECT_EQ(copy.numConnections(), 0);
    }
    EXPECT_EQ(first.numConnections(), 1);
    EXPECT_EQ(second.numConnections(), 0);
    first.emit(7);
    second.emit(8);
    EXPECT_EQ(log, (Log{"kept:7"}));
}

TEST(Signal, SignalDestroyedBeforeItsClientsReleasesItsItems) {
    Log log;
    Listener a("a", log), b("b", log);
    {
        IntSignal signal;
        signal.connect(a, &Listener::onValue);
        signal.connect(b, &Listener::onValue);
        ASSERT_EQ(a.numConnections(), 1);
    }
    // The clients no longer know the released items; destroying them later touches nothing
    // (the sanitizer build checks).
    EXPECT_EQ(a.numConnections(), 0);
    EXPECT_EQ(b.numConnections(), 0);
}

TEST(Signal, ListenerMayDestroyTheSignalDuringBroadcast) {
    Log log;
    auto signal = std::make_unique<IntSignal>();
    Listener a("a", log), b("b", log);
    signal->connect(a, &Listener::onValue);
    signal->connect(b, &Listener::onValue);
    a.action = [&] { signal.reset(); };

    IntSignal* raw = signal.get();
    raw->emit(1);
    EXPECT_EQ(log, (Log{"a:1"}));
    EXPECT_EQ(a.numConnections(), 0);
    EXPECT_EQ(b.numConnections(), 0);
}

TEST(Signal, NestedBroadcastsKeepTheirPlace) {
    Log log;
    IntSignal signal;
    Listener a("a", log), b("b", log);
    SignalBase::connectionItem* itemOfA = signal.connect(a, &Listener::onValue);
    signal.connect(b, &Listener::onValue);

    // a broadcasts again from inside its listener and, in the inner walk, disconnects
    // itself; both walks go on to b.
    int depth = 0;
    a.action = [&] {
        if (depth++ == 0) {
            signal.emit(2);
        } else {
            signal.disconnect(itemOfA);
        }
    };
    signal.emit(1);
    EXPECT_EQ(log, (Log{"a:1", "a:2", "b:2", "b:1"}));
    EXPECT_EQ(signal.numConnections(), 1);
}

TEST(Signal, ConnectsConstMethodsReferenceArgumentsAndCallables) {
    struct Counter : SignalClient {
        void add(int& total) const { total += step; }
        int step = 0;
    };
    koRTB::Signal<int&> signal;
    Counter one, ten;
    one.step = 1;
    ten.step = 10;
    signal.connect(one, &Counter::add);
    signal.connect(ten, &Counter::add);
    SignalClient owner;
    int calls = 0;
    signal.connect(owner, [&calls](int& total) {
        ++calls;
        total *= 2;
    });

    int total = 0;
    signal.emit(total);
    EXPECT_EQ(total, 22);
    EXPECT_EQ(calls, 1);

    owner.disconnectAll();
    total = 0;
    signal(total);
    EXPECT_EQ(total, 11);
}

} // namespace

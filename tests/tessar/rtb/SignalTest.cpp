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
    itemOfA->setBlocked(true); // skipped, and the walk goes on to the next one
    signal.emit(1);
    signal.disconnect(itemOfB); // gone for good
    itemOfA->setBlocked(false);
    signal.emit(2);
    EXPECT_EQ(b.numConnections(), 0);
    // Either suspension flag of the signal silences it, also set from a listener mid-walk.
    c.action = [&] { signal.suspend(); };
    signal.emit(3);
    signal.resume();
    signal.setBlocked(true);
    signal.emit(4);
    EXPECT_EQ(log, (Log{"c:1", "b:1", "c:2", "a:2", "c:3"}));
}

TEST(Signal, ListenerMayDisconnectBlockOrConnectOthersDuringBroadcast) {
    Log log;
    IntSignal signal;
    Listener a("a", log), b("b", log), c("c", log), d("d", log), late("late", log);
    signal.connect(a, &Listener::onValue);
    SignalBase::connectionItem* itemOfB = signal.connect(b, &Listener::onValue);
    SignalBase::connectionItem* itemOfC = signal.connect(c, &Listener::onValue);
    SignalBase::connectionItem* itemOfD = signal.connect(d, &Listener::onValue);
    // b disconnects itself and the one after it, blocks d and connects a new listener, which
    // is appended and reached by the same walk.
    b.action = [&] {
        signal.disconnect(itemOfB);
        signal.disconnect(itemOfC);
        itemOfD->setBlocked(true);
        signal.connect(late, &Listener::onValue);
    };
    signal.emit(1);
    signal.emit(2);
    EXPECT_EQ(log, (Log{"a:1", "b:1", "late:1", "a:2", "late:2"}));
    EXPECT_EQ(signal.numConnections(), 3);
}

TEST(Signal, ListenerMayDestroyItsReceiverOrTheSignalDuringBroadcast) {
    Log log;
    auto signal = std::make_unique<IntSignal>();
    Listener a("a", log), c("c", log);
    auto doomed = std::make_unique<Listener>("b", log);
    signal->connect(a, &Listener::onValue);
    signal->connect(*doomed, &Listener::onValue);
    signal->connect(c, &Listener::onValue);
    doomed->action = [&] { doomed.reset(); };
    signal->emit(1);
    EXPECT_EQ(signal->numConnections(), 2);
    a.action = [&] { signal.reset(); };
    IntSignal* raw = signal.get();
    raw->emit(2);
    EXPECT_EQ(log, (Log{"a:1", "b:1", "c:1", "a:2"}));
    EXPECT_EQ(c.numConnections(), 0);
}

TEST(Signal, DestroyingEitherEndReleasesTheConnections) {
    Log log;
    IntSignal first;
    Listener kept("kept", log);
    {
        IntSignal second;
        Listener gone("gone", log);
        first.connect(gone, &Listener::onValue);
        second.connect(gone, &Listener::onValue);
        second.connect(kept, &Listener::onValue);
        first.connect(kept, &Listener::onValue);
        // A copy of a receiver is not connected anywhere.
        EXPECT_EQ(Listener(gone).numConnections(), 0);
    }
    // The signal destroyed first released its items, the client destroyed after them touched
    // nothing (the sanitizer build checks).
    EXPECT_EQ(first.numConnections(), 1);
    EXPECT_EQ(kept.numConnections(), 1);
    first.emit(7);
    EXPECT_EQ(log, (Log{"kept:7"}));
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
        explicit Counter(int s) : step(s) {}
        void add(int& total) const { total += step; }
        int step;
    };
    koRTB::Signal<int&> signal;
    Counter one(1), ten(10);
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
    owner.disconnectAll();
    signal(total);
    EXPECT_EQ(total, 33);
    EXPECT_EQ(calls, 1);
}

} // namespace

#include "tessar/rtb/SignalBase.h"

#include "tessar/rtb/SignalClient.h"

namespace koRTB {

SignalBase::connectionItem::~connectionItem() = default;

void SignalBase::connectionItem::unlock() noexcept {
    --locks_;
    if (locks_ == 0 && disconnected_) {
        unlinkFromSignal();
        unlinkFromClient();
        delete this;
    }
}

void SignalBase::connectionItem::releaseWhenUnlocked() noexcept {
    disconnected_ = true;
    // A locked item keeps its place in the signal's list so that the broadcast holding it
    // can still follow its next link; it leaves its client at once, since the client may be
    // going away.
    unlinkFromClient();
    if (locks_ == 0) {
        unlinkFromSignal();
        delete this;
    }
}

void SignalBase::connectionItem::unlinkFromSignal() noexcept {
    if (signal_ == nullptr) {
        return;
    }
    if (previous_ != nullptr) {
        previous_->next_ = next_;
    } else {
        signal_->first_ = next_;
    }
    if (next_ != nullptr) {
        next_->previous_ = previous_;
    } else {
        signal_->last_ = previous_;
    }
    signal_ = nullptr;
    previous_ = nullptr;
    next_ = nullptr;
}

void SignalBase::connectionItem::unlinkFromClient() noexcept {
    if (client_ == nullptr) {
        return;
    }
    if (previousOfClient_ != nullptr) {
        previousOfClient_->nextOfClient_ = nextOfClient_;
    } else {
        client_->first_ = nextOfClient_;
    }
    if (nextOfClient_ != nullptr) {
        nextOfClient_->previousOfClient_ = previousOfClient_;
    }
    client_ = nullptr;
    previousOfClient_ = nullptr;
    nextOfClient_ = nullptr;
}

SignalBase::~SignalBase() {
    connectionItem* item = first_;
    while (item != nullptr) {
        connectionItem* next = item->next_;
        item->disconnected_ = true;
        item->unlinkFromClient();
        // Cut every item loose from this signal. A locked one is in a broadcast that is
        // still running on this signal: its null next link ends that walk, and its last
        // unlock releases it.
        item->signal_ = nullptr;
        item->previous_ = nullptr;
        item->next_ = nullptr;
        if (item->locks_ == 0) {
            delete item;
        }
        item = next;
    }
    first_ = nullptr;
    last_ = nullptr;
}

void SignalBase::append(connectionItem* item) noexcept {
    item->signal_ = this;
    item->previous_ = last_;
    item->next_ = nullptr;
    if (last_ != nullptr) {
        last_->next_ = item;
    } else {
        first_ = item;
    }
    last_ = item;

    SignalClient* client = item->client_;
    item->previousOfClient_ = nullptr;
    item->nextOfClient_ = client->first_;
    if (client->first_ != nullptr) {
        client->first_->previousOfClient_ = item;
    }
    client->first_ = item;
}

void SignalBase::disconnect(connectionItem* item) noexcept {
    if (item == nullptr || item->disconnected_ || item->signal_ != this) {
        return;
    }
    item->releaseWhenUnlocked();
}

void SignalBase::disconnectAll() noexcept {
    connectionItem* item = first_;
    while (item != nullptr) {
        // Read the link first: an unlocked item is released at once.
        connectionItem* next = item->next_;
        if (!item->disconnected_) {
            item->releaseWhenUnlocked();
        }
        item = next;
    }
}

int SignalBase::numConnections() const noexcept {
    int count = 0;
    for (const connectionItem* item = first_; item != nullptr; item = item->next_) {
        if (!item->disconnected_) {
            ++count;
        }
    }
    return count;
}

SignalClient::~SignalClient() { disconnectAll(); }

void SignalClient::disconnectAll() noexcept {
    while (first_ != nullptr) {
        // Each release unlinks the item from this client's list, advancing first_.
        first_->releaseWhenUnlocked();
    }
}

int SignalClient::numConnections() const noexcept {
    int count = 0;
    for (const SignalBase::connectionItem* item = first_; item != nullptr;
         item = item->nextOfClient_) {
        ++count;
    }
    return count;
}

} // namespace koRTB

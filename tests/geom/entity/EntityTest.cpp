#include "geom/entity/Entity.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "geom/entity/ActiveEntities.h"
#include "geom/entity/TransformModification.h"
#include "tessar/core/Reference.h"

namespace koGeom {
namespace {

// An entity whose sending operations the tests may call, as a subclass does.
class Probe : public Entity {
public:
    using Entity::resendMessage;
    using Entity::sendMessage;
};

// What one listener saw of one notice.
struct Seen {
    std::string listener;
    EntityModificationType type;
    const Entity* entity;
    const EntityModification* causedBy;
    const EntityModification* notice;
};

class Recorder : public koRTB::SignalClient {
public:
    Recorder(std::string name, std::vector<Seen>& seen) : name_(std::move(name)), seen_(seen) {}

    void onModified(EntityModification& mod) {
        seen_.push_back({name_, mod.getType(), mod.getEntity(), mod.causedBy(), &mod});
        if (action) {
            action(mod);
        }
    }

    std::function<void(EntityModification&)> action;

private:
    std::string name_;
    std::vector<Seen>& seen_;
};

TEST(Entity, CountsLiveEntitiesAndLetsClientsDecrementBelowZero) {
    const int before = numberOfActiveEntities();
    auto first = std::make_unique<Probe>();
    auto second = std::make_unique<Probe>();
    auto third = std::make_unique<Probe>();
    EXPECT_EQ(numberOfActiveEntities(), before + 3);
    second.reset();
    EXPECT_EQ(numberOfActiveEntities(), before + 2);

    // A copy is a new entity, counted on its own.
    auto copy = std::make_unique<Probe>(*first);
    EXPECT_EQ(numberOfActiveEntities(), before + 3);
    copy.reset();
    first.reset();
    third.reset();
    ASSERT_EQ(numberOfActiveEntities(), before);

    // Deliberate: decrementing is the client's business and nothing stops it at the true
    // number of live entities, nor at zero. Run in a child process, so that this process's
    // count stays true for the other tests.
    EXPECT_EXIT(
        {
            Probe live;
            for (int i = 0; i < before + 3; ++i) {
                decrementActiveEntities();
            }
            std::exit(numberOfActiveEntities() == -2 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_EQ(numberOfActiveEntities(), before);
}

TEST(Entity, DeletedListenersHearTheAddressWhileTheEntityIsStillCounted) {
    Probe* probe = new Probe;
    ko::Reference<Probe> held(probe);
    const int whileAlive = numberOfActiveEntities();

    struct Watcher : koRTB::SignalClient {
        void onDeleted(const Entity* entity) {
            addresses.push_back(entity);
            countSeen = numberOfActiveEntities();
            // The derived part is already gone: the broadcast runs in the base destructor.
            sawOnlyEntity = typeid(*entity) == typeid(Entity);
        }
        std::vector<const Entity*> addresses;
        int countSeen = 0;
        bool sawOnlyEntity = false;
    } first, second;
    probe->deletedSignal.connect(first, &Watcher::onDeleted);
    probe->deletedSignal.connect(second, &Watcher::onDeleted);

    held.reset(); // the last reference destroys it
    ASSERT_EQ(first.addresses.size(), 1u);
    EXPECT_EQ(first.addresses[0], probe);
    EXPECT_EQ(first.countSeen, whileAlive);
    EXPECT_TRUE(first.sawOnlyEntity);
    EXPECT_EQ(second.addresses.size(), 1u);
    EXPECT_EQ(numberOfActiveEntities(), whileAlive - 1);
    EXPECT_EQ(first.numConnections(), 0);
}

TEST(Entity, SendMessageReachesListenersInOrderWithTheSameNotice) {
    Probe probe;
    TransformModification mod(&probe);
    probe.sendMessage(mod); // no listener: returns at once

    std::vector<Seen> seen;
    Recorder a("a", seen), b("b", seen);
    probe.modifiedSignal.connect(a, &Recorder::onModified);
    probe.modifiedSignal.connect(b, &Recorder::onModified);
    probe.sendMessage(mod);
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].listener, "a");
    EXPECT_EQ(seen[1].listener, "b");
    EXPECT_EQ(seen[1].notice, &mod);
    EXPECT_EQ(seen[1].type, EntityModificationType::Transform);
}

TEST(Entity, ResendWrapsTheNoticeInAGeneralOneCausedByIt) {
    Probe source, derived;
    std::vector<Seen> seen;
    Recorder listener("listener", seen);
    derived.modifiedSignal.connect(listener, &Recorder::onModified);

    EntityModification root(&source, EntityModificationType::Mesh);
    EntityModification middle(&source, root, EntityModificationType::Mesh);
    const EntityModification* rootSeen = nullptr;
    bool isRoot = true;
    listener.action = [&](EntityModification& mod) {
        rootSeen = mod.getRoot();
        isRoot = mod.isRoot();
    };
    derived.resendMessage(middle);

    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].type, EntityModificationType::General);
    EXPECT_EQ(seen[0].entity, &derived);
    EXPECT_EQ(seen[0].causedBy, &middle);
    EXPECT_NE(seen[0].notice, &middle);
    EXPECT_FALSE(isRoot);
    EXPECT_EQ(rootSeen, &root);
}

TEST(EntityModification, RootsChainsAndPresence) {
    Probe a, b, c, stranger;
    TransformModification transform(&a);
    EXPECT_EQ(transform.getType(), EntityModificationType::Transform);
    EXPECT_TRUE(transform.isRoot());
    EXPECT_EQ(transform.getRoot(), &transform);
    EXPECT_TRUE(transform.entityPresent(&a));
    EXPECT_FALSE(transform.entityPresent(&b));

    EntityModification second(&b, transform, EntityModificationType::General);
    EntityModification third(&c, second, EntityModificationType::Mesh);
    EXPECT_EQ(third.causedBy(), &second);
    EXPECT_EQ(third.getRoot(), &transform);
    EXPECT_TRUE(third.entityPresent(&a));
    EXPECT_TRUE(third.entityPresent(&b));
    EXPECT_TRUE(third.entityPresent(&c));
    EXPECT_FALSE(third.entityPresent(&stranger));
    EXPECT_FALSE(second.entityPresent(&c)); // presence looks back along the chain only
    EXPECT_FALSE(EntityModification::entityPresent(nullptr, &a));

    // A copy keeps the sender, the cause and the type.
    EntityModification copy(third);
    EXPECT_EQ(copy.getEntity(), &c);
    EXPECT_EQ(copy.causedBy(), &second);
    EXPECT_EQ(copy.getType(), EntityModificationType::Mesh);
    TransformModification transformCopy(transform);
    EXPECT_EQ(transformCopy.getType(), EntityModificationType::Transform);
    EXPECT_TRUE(transformCopy.isRoot());
}

TEST(Entity, ListenerMayReleaseTheLastReferenceDuringABroadcast) {
    ko::Reference<Probe> held(new Probe);
    Probe* probe = held.get();
    std::vector<Seen> seen;
    Recorder dropper("dropper", seen), later("later", seen);
    probe->modifiedSignal.connect(dropper, &Recorder::onModified);
    probe->modifiedSignal.connect(later, &Recorder::onModified);
    dropper.action = [&](EntityModification&) { held.reset(); };

    TransformModification mod(probe);
    probe->sendMessage(mod);
    // The entity and its signal are gone after the first listener; nobody else is called and
    // nothing dangles (the sanitizer build checks).
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(dropper.numConnections(), 0);
    EXPECT_EQ(later.numConnections(), 0);
}

} // namespace
} // namespace koGeom

#include "geom/entity/Entity.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
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

TEST(Entity, DeliberatelyLetsClientsDecrementTheCountBelowZero) {
    // Deliberate: decrementing is the client's business and nothing stops it at the true
    // number of live entities, nor at zero. Run in a child process, so that this process's
    // count stays true for the other tests.
    const int before = numberOfActiveEntities();
    EXPECT_EXIT(
        {
            Probe live;
            for (int i = 0; i < before + 3; ++i) {
                decrementActiveEntities();
            }
            std::exit(numberOfActiveEntities() == -2 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(Entity, ListenerMayReleaseTheLastReferenceAndDeletedListenersHearItStillCounted) {
    const int before = numberOfActiveEntities();
    Probe* probe = new Probe;
    ko::Reference<Probe> held(probe);
    const Probe copy(*probe); // a new entity, counted on its own
    koRTB::SignalClient first, second, dropper, later;
    std::vector<int> countsSeen;
    for (koRTB::SignalClient* client : {&first, &second}) {
        probe->deletedSignal.connect(*client, [&](const Entity* entity) {
            // The derived part is already gone: the broadcast runs in the base destructor.
            EXPECT_TRUE(entity == probe && typeid(*entity) == typeid(Entity));
            countsSeen.push_back(numberOfActiveEntities());
        });
    }
    int calls = 0;
    probe->modifiedSignal.connect(dropper, [&](EntityModification&) { ++calls, held.reset(); });
    probe->modifiedSignal.connect(later, [&](EntityModification&) { ++calls; });
    TransformModification mod(probe);
    probe->sendMessage(mod);
    // The entity and its signals are gone after the first listener; nobody else is called and
    // nothing dangles (the sanitizer build checks).
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(countsSeen, (std::vector<int>{before + 2, before + 2}));
    EXPECT_EQ(numberOfActiveEntities(), before + 1);
    EXPECT_EQ(first.numConnections() + later.numConnections(), 0);
}

TEST(Entity, SendPassesTheNoticeInOrderAndResendWrapsItInAGeneralOne) {
    Probe source, derived;
    koRTB::SignalClient a, b;
    std::vector<const void*> seen; // per call: listener, notice, sender, cause, root
    std::vector<int> types;
    for (koRTB::SignalClient* client : {&a, &b}) {
        derived.modifiedSignal.connect(*client, [&, client](EntityModification& mod) {
            seen.insert(seen.end(), {client, &mod, mod.getEntity(), mod.causedBy(), mod.getRoot()});
            types.push_back(static_cast<int>(mod.getType()));
        });
    }
    TransformModification mod(&derived);
    derived.sendMessage(mod);
    EntityModification root(&source, EntityModificationType::Mesh);
    EntityModification middle(&source, root, EntityModificationType::Mesh);
    b.disconnectAll();
    derived.resendMessage(middle);
    ASSERT_EQ(seen.size(), 15u);
    const std::vector<const void*> sent = {&a, &mod, &derived, nullptr, &mod,
                                           &b, &mod, &derived, nullptr, &mod};
    EXPECT_EQ(std::vector<const void*>(seen.begin(), seen.begin() + 10), sent);
    EXPECT_EQ(std::vector<const void*>(seen.begin() + 12, seen.end()),
              (std::vector<const void*>{&derived, &middle, &root}));
    EXPECT_EQ(seen[11] == &middle, false);
    using enum EntityModificationType;
    EXPECT_EQ(types, (std::vector<int>{int(Transform), int(Transform), int(General)}));
}

TEST(EntityModification, RootsChainsPresenceAndCopies) {
    Probe a, b, c, stranger;
    TransformModification transform(&a);
    EntityModification second(&b, transform, EntityModificationType::General);
    EntityModification third(&c, second, EntityModificationType::Mesh);
    EXPECT_EQ(third.getRoot(), &transform);
    for (const Entity* entity : {&a, &b, &c}) {
        EXPECT_TRUE(third.entityPresent(entity));
    }
    EXPECT_FALSE(third.entityPresent(&stranger));
    EXPECT_FALSE(second.entityPresent(&c)); // presence looks back along the chain only
    EXPECT_FALSE(EntityModification::entityPresent(nullptr, &a));
}

} // namespace
} // namespace koGeom

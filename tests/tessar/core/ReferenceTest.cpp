#include "tessar/core/Reference.h"

#include <gtest/gtest.h>

#include <unordered_set>
#include <utility>

#include "tessar/core/ReferenceCount.h"

namespace {

// Counts its own destruction so that the tests can see when the last handle let it go.
class Tracked : public ko::ReferenceCount {
public:
    explicit Tracked(int& destroyed) : destroyed_(&destroyed) {}
    ~Tracked() override { ++*destroyed_; }

private:
    int* destroyed_;
};

class Derived : public Tracked {
public:
    using Tracked::Tracked;
};

TEST(Reference, CountsHoldersAndDeletesWithTheLast) {
    int destroyed = 0;
    auto* object = new Tracked(destroyed);
    EXPECT_EQ(object->refs(), 0);
    {
        ko::Reference<Tracked> first(object);
        EXPECT_EQ(object->refs(), 1);
        ko::Reference<Tracked> second = first;
        EXPECT_EQ(object->refs(), 2);
        ko::Reference<Tracked> moved = std::move(second);
        EXPECT_EQ(object->refs(), 2);
        EXPECT_FALSE(second);
        first.reset();
        EXPECT_EQ(object->refs(), 1);
        EXPECT_EQ(destroyed, 0);
        const ko::Reference<Tracked>& same = moved;
        moved = same; // self-assignment keeps the object alive
        EXPECT_EQ(object->refs(), 1);
    }
    EXPECT_EQ(destroyed, 1);
}

TEST(Reference, ReassignmentReleasesTheOldObjectOnly) {
    int destroyedA = 0;
    int destroyedB = 0;
    ko::Reference<Tracked> handle(new Tracked(destroyedA));
    ko::Reference<Tracked> other(new Tracked(destroyedB));
    handle = other;
    EXPECT_EQ(destroyedA, 1);
    EXPECT_EQ(destroyedB, 0);
    EXPECT_EQ(handle, other);
    EXPECT_EQ(other->refs(), 2);
    handle = nullptr;
    other = nullptr;
    EXPECT_EQ(destroyedB, 1);
}

TEST(Reference, CountIsNeverCopiedWithTheObject) {
    int destroyed = 0;
    ko::Reference<Tracked> held(new Tracked(destroyed));
    Tracked copy(*held);
    EXPECT_EQ(copy.refs(), 0);
    Tracked assigned(destroyed);
    assigned = *held;
    EXPECT_EQ(assigned.refs(), 0);
    EXPECT_EQ(held->refs(), 1);
}

TEST(Reference, ChecksDowncastsAndConvertsUpcasts) {
    int destroyed = 0;
    ko::Reference<Tracked> base(new Derived(destroyed));
    ko::Reference<Derived> derived = base.cast<Derived>();
    ASSERT_TRUE(derived);
    EXPECT_EQ(base->refs(), 2);
    ko::Reference<Tracked> upcast = derived;
    EXPECT_EQ(upcast.get(), base.get());

    ko::Reference<Tracked> plain(new Tracked(destroyed));
    EXPECT_FALSE(plain.cast<Derived>());
    EXPECT_EQ(plain->refs(), 1);
}

TEST(Reference, HashesAndOrdersByAddress) {
    int destroyed = 0;
    ko::Reference<Tracked> a(new Tracked(destroyed));
    ko::Reference<Tracked> b(new Tracked(destroyed));
    std::unordered_set<ko::Reference<Tracked>> set{a, b, a};
    EXPECT_EQ(set.size(), 2u);
    EXPECT_EQ(a < b, a.get() < b.get());
}

// A class with its own reference slots instead of a ReferenceCount base.
struct OwnSlots {
    void ref() { ++refs; }
    void unref() { --refs; }
    int refs = 0;
};

TEST(Reference, WorksWithAnyClassOfferingRefAndUnref) {
    OwnSlots slots;
    {
        ko::Reference<OwnSlots> a(&slots);
        ko::Reference<OwnSlots> b(a);
        EXPECT_EQ(slots.refs, 2);
    }
    EXPECT_EQ(slots.refs, 0);
}

} // namespace

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
    int destroyedA = 0;
    int destroyedB = 0;
    auto* object = new Tracked(destroyedA);
    ko::Reference<Tracked> other(new Tracked(destroyedB));
    {
        ko::Reference<Tracked> first(object);
        ko::Reference<Tracked> second = first;
        ko::Reference<Tracked> moved = std::move(second);
        EXPECT_FALSE(second);
        const ko::Reference<Tracked>& same = moved;
        moved = same; // self-assignment keeps the object alive
        EXPECT_EQ(object->refs(), 2);
        // The count belongs to the handles, never to a copy of the object.
        Tracked copy(*object);
        copy = *object;
        EXPECT_EQ(copy.refs(), 0);
        first = other; // releases the old object only
        moved = nullptr;
        EXPECT_EQ(destroyedA, 1);
        EXPECT_EQ(other->refs(), 2);
        std::unordered_set<ko::Reference<Tracked>> set{first, other, ko::Reference<Tracked>()};
        EXPECT_EQ(set.size(), 2u);
    }
    EXPECT_EQ(destroyedA, 2); // with the stack copy
    EXPECT_EQ(destroyedB, 0);
    other.reset();
    EXPECT_EQ(destroyedB, 1);
}

TEST(Reference, ChecksDowncastsAndConvertsUpcasts) {
    int destroyed = 0;
    ko::Reference<Tracked> base(new Derived(destroyed));
    ko::Reference<Derived> derived = base.cast<Derived>();
    ko::Reference<Tracked> upcast = derived;
    EXPECT_EQ(upcast.get(), base.get());
    EXPECT_EQ(base->refs(), 3);
    ko::Reference<Tracked> plain(new Tracked(destroyed));
    EXPECT_FALSE(plain.cast<Derived>());
    EXPECT_EQ(plain->refs(), 1);
}

} // namespace

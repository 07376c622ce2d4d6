#include "geom/spatial/KDTree.h"

#include <cstddef>
#include <memory>
#include <utility>

namespace koGeom {

namespace {

constexpr int noRecord = -1;

// One inserted point. Links are record numbers (-1 for none), half the size of pointers; the
// parent link lets a search climb back up where its stack would overflow.
struct Record {
    int left;
    int right;
    int parent;
    int index;
};

int nextAxis(int axis) { return axis == 2 ? 0 : axis + 1; }
int previousAxis(int axis) { return axis == 0 ? 2 : axis - 1; }

float coordinate(const float* points, int index, int axis) {
    return points[3 * static_cast<std::ptrdiff_t>(index) + axis];
}

// All six comparisons, without branching between them.
bool inBox(const float* p, const float* box) {
    return (box[0] <= p[0]) & (p[0] <= box[3]) & (box[1] <= p[1]) & (p[1] <= box[4]) &
           (box[2] <= p[2]) & (p[2] <= box[5]);
}

// Always inlined: GCC takes a function that only prefetches for one without effect, and drops
// its calls before inlining them.
[[gnu::always_inline]] inline void prefetch(const void* address) {
#if defined(__GNUC__)
    __builtin_prefetch(address);
#else
    (void)address;
#endif
}

// The records of the points. Record 0 is the root. Records [0, linked_) are linked into the
// tree; records [linked_, count_) are filed, in insertion order, waiting to be linked.
//
// Records are kept with every parent before its children. Linking a run of filed points builds
// each new subtree in pre-order in consecutive records, so a walk down the tree reads nearby
// memory; and when at least as many points were filed as were linked before, the whole tree is
// rebuilt in pre-order from its records taken in their order (parents first, so the same tree
// results), which costs O(log n) a point over the tree's life.
class KDTreeImpl final : public ko::ImplBase {
public:
    explicit KDTreeImpl(int capacity)
        : records_(new Record[static_cast<std::size_t>(capacity)]),
          order_(new int[static_cast<std::size_t>(capacity)]),
          capacity_(capacity) {}

    int size() const { return count_; }
    int capacity() const { return capacity_; }

    void file(int index) { records_[count_++].index = index; }

    void link(const float* points);

    // Calls visit(index) for every point in the box in pre-order until it returns true.
    template <class Visit>
    void walk(const float* points, const float* box, Visit&& visit) const;

private:
    // Linking works on a run of point indices in order_, parents (or earlier insertions)
    // first; run position p becomes record base_ + p. While a run is split, the left fields
    // of the records it will fill are spill space.
    int partition(const float* points, int first, int end, int axis, float split);
    void route(const float* points, int first, int end, int node, int axis);
    void routeToChild(const float* points, int first, int end, int node, int side, int axis);
    void place(const float* points, int first, int end, int parent, int side, int axis);

    // Walks on from `node`, climbing the parent links instead of keeping a stack.
    template <class Visit>
    void climbingWalk(const float* points, const float* box, int node, int axis,
                      Visit&& visit) const;
    [[gnu::always_inline]] void prefetchPoint(const float* points, int record) const;

    std::unique_ptr<Record[]> records_;
    std::unique_ptr<int[]> order_;
    int capacity_;
    int count_ = 0;
    int linked_ = 0;
    int base_ = 0;
};

// Splits order_[first, end) stably: the points strictly below `split` on `axis` (those that
// go left of a node with that coordinate) first, then the others. Returns where the others
// start.
int KDTreeImpl::partition(const float* points, int first, int end, int axis, float split) {
    int* order = order_.get();
    Record* spill = records_.get() + base_;
    int below = first;
    int above = first;
    for (int i = first; i < end; ++i) {
        const int index = order[i];
        if (i + 16 < end) {
            prefetch(points + 3 * static_cast<std::ptrdiff_t>(order[i + 16]));
        }
        if (split > coordinate(points, index, axis)) {
            order[below++] = index;
        } else {
            spill[above++].left = index;
        }
    }
    for (int i = first; i < above; ++i) {
        order[below + (i - first)] = spill[i].left;
    }
    return below;
}

// Sends the run order_[first, end) down through the linked record `node` on `axis`. Recursion
// goes to the smaller half only, so its depth stays logarithmic in the run however deep the
// tree is.
void KDTreeImpl::route(const float* points, int first, int end, int node, int axis) {
    while (first < end) {
        const int middle =
            partition(points, first, end, axis, coordinate(points, records_[node].index, axis));
        const int next = nextAxis(axis);
        int side = 0;
        if (middle - first < end - middle) {
            routeToChild(points, first, middle, node, 0, next);
            first = middle;
            side = 1;
        } else {
            routeToChild(points, middle, end, node, 1, next);
            end = middle;
        }
        const int child = side == 0 ? records_[node].left : records_[node].right;
        if (child == noRecord) {
            place(points, first, end, node, side, next);
            return;
        }
        node = child;
        axis = next;
    }
}

void KDTreeImpl::routeToChild(const float* points, int first, int end, int node, int side,
                              int axis) {
    const int child = side == 0 ? records_[node].left : records_[node].right;
    if (child == noRecord) {
        place(points, first, end, node, side, axis);
    } else {
        route(points, first, end, child, axis);
    }
}

// Builds the run order_[first, end) as a new subtree hanging on `side` of record `parent`
// (none for the root): the run's first point is its root, and the rest split by the root's
// coordinate on `axis` into the left run and the right run, which follow it in pre-order.
void KDTreeImpl::place(const float* points, int first, int end, int parent, int side, int axis) {
    if (first < end && parent != noRecord) {
        (side == 0 ? records_[parent].left : records_[parent].right) = base_ + first;
    }
    while (first < end) {
        const int index = order_[first];
        const int middle = partition(points, first + 1, end, axis, coordinate(points, index, axis));
        const int root = base_ + first;
        Record& record = records_[root];
        record.left = middle > first + 1 ? root + 1 : noRecord;
        record.right = end > middle ? base_ + middle : noRecord;
        record.parent = parent;
        record.index = index;
        const int next = nextAxis(axis);
        if (middle - (first + 1) < end - middle) {
            place(points, first + 1, middle, root, 0, next);
            first = middle;
        } else {
            place(points, middle, end, root, 1, next);
            first = first + 1;
            end = middle;
        }
        parent = root;
        axis = next;
    }
}

// Links the filed points into the tree. Each lands where inserting the points one by one, in
// insertion order, would put it: a run that reaches an empty child slot is exactly the
// sequence of points that would arrive there, and its first point takes the slot.
void KDTreeImpl::link(const float* points) {
    const int numFiled = count_ - linked_;
    if (numFiled == 0) {
        return;
    }
    base_ = numFiled >= linked_ ? 0 : linked_;
    for (int i = base_; i < count_; ++i) {
        order_[i - base_] = records_[i].index;
    }
    if (base_ == 0) {
        place(points, 0, count_, noRecord, 0, 0);
    } else {
        route(points, 0, numFiled, 0, 0);
    }
    linked_ = count_;
}

// Asks for a child's point ahead of its visit: the walk is a chain of dependent loads, and
// fetching the next level's points early overlaps their latency.
inline void KDTreeImpl::prefetchPoint(const float* points, int record) const {
    if (record != noRecord) {
        prefetch(points + 3 * static_cast<std::ptrdiff_t>(records_[record].index));
    }
}

// Pre-order with a small stack of right subtrees still to walk. Where it would overflow (a
// deep tree and a large box), the walk goes on climbing parent links, which reach every
// subtree the stack held.
template <class Visit>
void KDTreeImpl::walk(const float* points, const float* box, Visit&& visit) const {
    if (count_ == 0) {
        return;
    }
    struct Pending {
        int node;
        int axis;
    };
    constexpr int stackSize = 64;
    Pending pending[stackSize];
    int numPending = 0;
    int node = 0;
    int axis = 0;
    for (;;) {
        const Record& record = records_[node];
        prefetchPoint(points, record.left);
        prefetchPoint(points, record.right);
        const float* p = points + 3 * static_cast<std::ptrdiff_t>(record.index);
        if (inBox(p, box) && visit(record.index)) {
            return;
        }
        // Both ways are chosen without branching on the coordinate, which is unpredictable.
        const float split = p[axis];
        const int next = nextAxis(axis);
        const bool left = (record.left != noRecord) & (split >= box[axis]);
        const bool right = (record.right != noRecord) & (box[axis + 3] >= split);
        if (left & right) {
            if (numPending == stackSize) {
                climbingWalk(points, box, record.left, next, visit);
                return;
            }
            pending[numPending++] = {record.right, next};
        }
        if (left | right) {
            node = left ? record.left : record.right;
            axis = next;
        } else if (numPending > 0) {
            --numPending;
            node = pending[numPending].node;
            axis = pending[numPending].axis;
        } else {
            return;
        }
    }
}

template <class Visit>
void KDTreeImpl::climbingWalk(const float* points, const float* box, int node, int axis,
                              Visit&& visit) const {
    for (;;) {
        const Record& record = records_[node];
        const float* p = points + 3 * static_cast<std::ptrdiff_t>(record.index);
        if (inBox(p, box) && visit(record.index)) {
            return;
        }
        const float split = p[axis];
        if (record.left != noRecord && split >= box[axis]) {
            node = record.left;
            axis = nextAxis(axis);
            continue;
        }
        if (record.right != noRecord && box[axis + 3] >= split) {
            node = record.right;
            axis = nextAxis(axis);
            continue;
        }
        // Climb to the nearest ancestor that was left through its left child and whose right
        // subtree the box reaches; the walk ends when it climbs back to the root.
        for (;;) {
            if (node == 0) {
                return;
            }
            const int child = node;
            node = records_[child].parent;
            axis = previousAxis(axis);
            const Record& up = records_[node];
            if (up.left == child && up.right != noRecord &&
                box[axis + 3] >= coordinate(points, up.index, axis)) {
                node = up.right;
                axis = nextAxis(axis);
                break;
            }
        }
    }
}

KDTreeImpl* implOf(ko::ImplBase* impl) { return static_cast<KDTreeImpl*>(impl); }

// Links what was filed since the last search, then returns the tree ready to walk.
KDTreeImpl& linkedImpl(ko::ImplBase* impl, const float* points) {
    KDTreeImpl& tree = *implOf(impl);
    tree.link(points);
    return tree;
}

} // namespace

KDTree::KDTree(int capacity) : impl_(new KDTreeImpl(capacity)), owning_(true) {}

KDTree::~KDTree() {
    if (owning_) {
        delete impl_;
    }
}

KDTree::KDTree(KDTree&& other) noexcept
    : impl_(std::exchange(other.impl_, nullptr)), owning_(std::exchange(other.owning_, false)) {}

KDTree& KDTree::operator=(KDTree&& other) noexcept {
    KDTree taken(std::move(other));
    std::swap(impl_, taken.impl_);
    std::swap(owning_, taken.owning_);
    return *this;
}

void KDTree::insert(const float*, int index) noexcept { implOf(impl_)->file(index); }

int KDTree::search(const float* points, const float* box) const noexcept {
    int found = -1;
    linkedImpl(impl_, points).walk(points, box, [&found](int index) {
        found = index;
        return true;
    });
    return found;
}

void KDTree::searchAll(const float* points, const float* box, std::vector<int>& out) const {
    linkedImpl(impl_, points).walk(points, box, [&out](int index) {
        out.push_back(index);
        return false;
    });
}

int KDTree::size() const noexcept { return implOf(impl_)->size(); }

int KDTree::capacity() const noexcept { return implOf(impl_)->capacity(); }

} // namespace koGeom

#include "geom/topomesh/detail/TopoMeshRecorder.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <functional>
#include <utility>

#include "geom/topomesh/detail/TopoMeshStateImpl.h"

namespace koGeom::detail {

namespace {

using BulletinType = TopoMeshTypedefs::BulletinType;

// The recording rule for a record changed twice: the first bulletin stays, except that a
// deletion turns a modification into a deletion. (Created then deleted is handled by the
// callers, which drop the entry.)
BulletinType laterBulletin(BulletinType first, BulletinType second) noexcept {
    if (first == BulletinType::Modified && second == BulletinType::Deleted) {
        return BulletinType::Deleted;
    }
    return first;
}

bool createdThenDeleted(BulletinType first, BulletinType second) noexcept {
    return first == BulletinType::Created && second == BulletinType::Deleted;
}

} // namespace

void TopoMeshStateImpl::unref() const noexcept {
    if (--refs_ > 0) {
        return;
    }
    auto* self = const_cast<TopoMeshStateImpl*>(this);
    if (recorder_ == nullptr) {
        delete self;
    } else {
        recorder_->released(self);
    }
}

void TopoMeshStateImpl::detach() noexcept {
    recorder_ = nullptr;
    parent = nullptr;
    transitions.clear();
}

TopoMeshRecorder::TopoMeshRecorder(TopoMeshAlloc* allocator, TopoMeshHeader* header)
    : allocator_(allocator),
      header_(header),
      scratch_(std::make_unique<std::byte[]>(
          std::max({allocator->vertexSize(), allocator->edgeSize(), allocator->faceSize()}))) {
    root_ = new TopoMeshStateImpl(this, peekTag(), *header_, nullptr);
    consumeTag();
    current_ = root_;
}

TopoMeshRecorder::~TopoMeshRecorder() {
    ko::vector<TopoMeshStateImpl*> states{root_};
    while (!states.empty()) {
        TopoMeshStateImpl* state = states.back();
        states.pop_back();
        for (TopoMeshTransition& transition : state->transitions) {
            states.push_back(transition.child);
        }
        if (state->refs() > 0) {
            state->detach();
        } else {
            delete state;
        }
    }
}

void TopoMeshRecorder::record(void* record, EntityType type, BulletinType bulletin) {
    auto found = pending_.find(record);
    if (found != pending_.end()) {
        TopoMeshChange& change = found->second;
        if (createdThenDeleted(change.bulletin, bulletin)) {
            // The record never existed in a saved state: nothing will need it again.
            pending_.erase(found);
            freeRecord(record, type);
        } else {
            change.bulletin = laterBulletin(change.bulletin, bulletin);
        }
        return;
    }
    TopoMeshChange change{bulletin, type, record, nullptr};
    if (bulletin == BulletinType::Modified) {
        change.snapshot = allocRecord(type);
        std::memcpy(change.snapshot, record, recordSize(type));
    }
    pending_.emplace(record, change);
}

int TopoMeshRecorder::getChanges(ko::unordered_map<TopoMeshEntity, BulletinType>& changes) const {
    changes.clear();
    for (const auto& [record, change] : pending_) {
        changes.emplace(TopoMeshEntity(record, change.type), change.bulletin);
    }
    return static_cast<int>(changes.size());
}

// The tag rule: the most recently released tag if there is one, else the next new one.
int TopoMeshRecorder::peekTag() const noexcept {
    return freeTags_.empty() ? nextTag_ : freeTags_.back();
}

void TopoMeshRecorder::consumeTag() noexcept {
    if (freeTags_.empty()) {
        ++nextTag_;
    } else {
        freeTags_.pop_back();
    }
}

TopoMeshStateImpl* TopoMeshRecorder::createState() {
    if (pending_.empty()) {
        return current_;
    }
    // Everything that can fail to allocate comes first, so that a failure leaves the
    // pending changes and the tree as they were.
    ko::vector<TopoMeshChange> changes;
    changes.reserve(pending_.size());
    for (const auto& [record, change] : pending_) {
        changes.push_back(change);
    }
    // In address order of the live records, so that switching states walks the mesh's pools
    // forwards instead of in the hash table's order.
    std::sort(changes.begin(), changes.end(), [](const TopoMeshChange& a, const TopoMeshChange& b) {
        return std::less<void*>()(a.record, b.record);
    });
    current_->transitions.reserve(current_->transitions.size() + 1);
    auto* state = new TopoMeshStateImpl(this, peekTag(), *header_, current_);
    consumeTag();
    pending_.clear();
    current_->transitions.push_back(TopoMeshTransition{state, std::move(changes), true});
    makeCurrent(state);
    return state;
}

void TopoMeshRecorder::makeCurrent(TopoMeshStateImpl* state) {
    TopoMeshStateImpl* previous = current_;
    current_ = state;
    if (previous != state && previous->refs() == 0) {
        prune(previous);
    }
}

void TopoMeshRecorder::released(TopoMeshStateImpl* state) {
    if (state != current_) {
        prune(state);
    }
}

TopoMeshTransition& TopoMeshRecorder::transitionTo(TopoMeshStateImpl* child) noexcept {
    for (TopoMeshTransition& transition : child->parent->transitions) {
        if (transition.child == child) {
            return transition;
        }
    }
    assert(false && "a state is always a child of its parent");
    return child->parent->transitions.front();
}

void TopoMeshRecorder::setState(TopoMeshStateImpl* target) {
    // The nearest common ancestor: both ends step toward the root in turn until one reaches
    // a state the other has passed.
    ko::unordered_set<TopoMeshStateImpl*> seenUp{current_};
    ko::unordered_set<TopoMeshStateImpl*> seenDown{target};
    TopoMeshStateImpl* common = nullptr;
    if (seenDown.count(current_) != 0) {
        common = current_;
    }
    for (TopoMeshStateImpl *up = current_, *down = target; common == nullptr;) {
        if (up == nullptr && down == nullptr) {
            return; // not in one tree: cannot happen for states of one recorder
        }
        if (up != nullptr && (up = up->parent) != nullptr) {
            if (seenDown.count(up) != 0) {
                common = up;
                break;
            }
            seenUp.insert(up);
        }
        if (down != nullptr && (down = down->parent) != nullptr) {
            if (seenUp.count(down) != 0) {
                common = down;
                break;
            }
            seenDown.insert(down);
        }
    }
    ko::vector<TopoMeshStateImpl*> downward;
    for (TopoMeshStateImpl* state = target; state != common; state = state->parent) {
        downward.push_back(state);
    }
    for (TopoMeshStateImpl* state = current_; state != common; state = state->parent) {
        apply(transitionTo(state));
    }
    for (auto state = downward.rbegin(); state != downward.rend(); ++state) {
        apply(transitionTo(*state));
    }
    *header_ = target->header;
    makeCurrent(target);
}

namespace {

// Swaps two records of `count` 64-bit words a word at a time: records of pointers and doubles
// (every size a multiple of 8) are swapped without a library call per record.
void swapWords(void* a, void* b, std::size_t count) noexcept {
    auto* left = static_cast<std::byte*>(a);
    auto* right = static_cast<std::byte*>(b);
    for (std::size_t i = 0; i < count; ++i, left += 8, right += 8) {
        std::uint64_t word;
        std::memcpy(&word, left, 8);
        std::memcpy(left, right, 8);
        std::memcpy(right, &word, 8);
    }
}

} // namespace

void TopoMeshRecorder::apply(TopoMeshTransition& transition) noexcept {
    transition.childSide = !transition.childSide;
    // The three sizes asked of the allocator once per step rather than once per record.
    const std::size_t sizes[] = {recordSize(EntityType::Vertex), recordSize(EntityType::Edge),
                                 recordSize(EntityType::Face)};
    std::byte* scratch = scratch_.get();
    for (const TopoMeshChange& change : transition.changes) {
        if (change.snapshot != nullptr) {
            const std::size_t size = sizes[static_cast<int>(change.type)];
            if (size % sizeof(std::uint64_t) == 0) {
                swapWords(change.record, change.snapshot, size / sizeof(std::uint64_t));
                continue;
            }
            std::memcpy(scratch, change.record, size);
            std::memcpy(change.record, change.snapshot, size);
            std::memcpy(change.snapshot, scratch, size);
        }
    }
}

void TopoMeshRecorder::prune(TopoMeshStateImpl* state) {
    while (state != nullptr && state != current_ && state->refs() == 0 &&
           state->transitions.size() < 2) {
        TopoMeshStateImpl* parent = state->parent;
        if (parent == nullptr) {
            if (state->transitions.empty()) {
                return; // a lone root is always current
            }
            // The root goes; its only child becomes the root, on the child's side of the step.
            TopoMeshStateImpl* child = state->transitions.front().child;
            discard(state->transitions.front());
            child->parent = nullptr;
            root_ = child;
        } else if (state->transitions.empty()) {
            // A leaf goes with the step into it.
            ko::vector<TopoMeshTransition>& steps = parent->transitions;
            auto step = std::find_if(steps.begin(), steps.end(),
                                     [state](const auto& t) { return t.child == state; });
            discard(*step);
            steps.erase(step);
        } else {
            joinThrough(state);
        }
        destroy(state);
        state = parent;
    }
}

void TopoMeshRecorder::destroy(TopoMeshStateImpl* state) {
    freeTags_.push_back(state->getTag());
    delete state;
}

void TopoMeshRecorder::discard(TopoMeshTransition& transition) {
    for (const TopoMeshChange& change : transition.changes) {
        if (change.snapshot != nullptr) {
            freeRecord(change.snapshot, change.type);
        }
        // The side that stays no longer reaches a record created in the step, when that is
        // the parent's side, or deleted in it, when that is the child's.
        const BulletinType gone =
            transition.childSide ? BulletinType::Deleted : BulletinType::Created;
        if (change.bulletin == gone) {
            freeUnreachable(change.record, change.type);
        }
    }
    transition.changes.clear();
}

void TopoMeshRecorder::joinThrough(TopoMeshStateImpl* state) {
    TopoMeshTransition& into = transitionTo(state);
    TopoMeshTransition& out = state->transitions.front();
    assert(into.childSide == out.childSide);
    join(into, out);
    into.child = out.child;
    out.child->parent = state->parent;
}

void TopoMeshRecorder::join(TopoMeshTransition& first, TopoMeshTransition& second) {
    ko::vector<TopoMeshChange>& joined = first.changes;
    joinIndex_.clear();
    joinFreed_.clear();
    for (std::size_t i = 0; i < joined.size(); ++i) {
        joinIndex_.emplace(joined[i].record, i);
    }
    for (const TopoMeshChange& later : second.changes) {
        auto found = joinIndex_.find(later.record);
        if (found == joinIndex_.end()) {
            joined.push_back(later);
            continue;
        }
        TopoMeshChange& earlier = joined[found->second];
        if (createdThenDeleted(earlier.bulletin, later.bulletin)) {
            if (later.snapshot != nullptr) {
                freeRecord(later.snapshot, later.type);
            }
            joinFreed_.emplace(earlier.record, earlier.type);
            earlier.record = nullptr;
            continue;
        }
        if (earlier.snapshot != nullptr && later.snapshot != nullptr) {
            if (first.childSide) {
                freeRecord(later.snapshot, later.type);
            } else {
                freeRecord(earlier.snapshot, earlier.type);
                earlier.snapshot = later.snapshot;
            }
        } else if (later.snapshot != nullptr) {
            if (earlier.bulletin == BulletinType::Created) {
                // Unreachable on the parent's side, the record needs no copy; it must hold
                // the child's contents when the step is next applied.
                if (!first.childSide) {
                    std::memcpy(earlier.record, later.snapshot, recordSize(later.type));
                }
                freeRecord(later.snapshot, later.type);
            } else {
                earlier.snapshot = later.snapshot;
            }
        }
        earlier.bulletin = laterBulletin(earlier.bulletin, later.bulletin);
    }
    second.changes.clear();
    std::erase_if(joined, [](const TopoMeshChange& change) { return change.record == nullptr; });
    for (const auto& [record, type] : joinFreed_) {
        freeUnreachable(record, type);
    }
    joinIndex_.clear();
    joinFreed_.clear();
}

void* TopoMeshRecorder::allocRecord(EntityType type) {
    switch (type) {
        case EntityType::Vertex:
            return allocator_->allocVertex();
        case EntityType::Edge:
            return allocator_->allocEdge();
        case EntityType::Face:
            break;
    }
    return allocator_->allocFace();
}

void TopoMeshRecorder::freeRecord(void* record, EntityType type) noexcept {
    switch (type) {
        case EntityType::Vertex:
            allocator_->freeVertex(static_cast<TopoMeshVertexData*>(record));
            return;
        case EntityType::Edge:
            allocator_->freeEdge(static_cast<TopoMeshEdgeData*>(record));
            return;
        case EntityType::Face:
            break;
    }
    allocator_->freeFace(static_cast<TopoMeshFaceData*>(record));
}

void TopoMeshRecorder::freeUnreachable(void* record, EntityType type) noexcept {
    if (pending_.count(record) == 0) {
        freeRecord(record, type);
    }
}

std::size_t TopoMeshRecorder::recordSize(EntityType type) const noexcept {
    switch (type) {
        case EntityType::Vertex:
            return allocator_->vertexSize();
        case EntityType::Edge:
            return allocator_->edgeSize();
        case EntityType::Face:
            break;
    }
    return allocator_->faceSize();
}

} // namespace koGeom::detail

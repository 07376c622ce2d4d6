#include "geom/topomesh/TopoMesh.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "geom/topomesh/detail/TopoMeshImplAlloc.h"

namespace koGeom {

namespace {

// The records of one list of a copy: the source records in list order and their copies at
// the same positions, and the way back from a source record's address to its copy, with no
// allocation per record. Records lie at least 24 bytes apart, so the address divided by 16
// tells them apart. Pooled records fill few 64 KiB chunks of the address space: each chunk in
// use then gets a direct table of 4096 entries, found through a small hash of chunk numbers,
// which keeps the entries of neighbouring records together. Records scattered over many chunks
// go into an open addressing hash table in one block instead.
template <class Data>
class CopyList {
public:
    // Walks the source list once, making a copy of each record with `make`.
    template <class Make>
    CopyList(const Data* head, int count, Make make) {
        sources_.reserve(static_cast<std::size_t>(count));
        copies_.reserve(static_cast<std::size_t>(count));
        std::vector<std::uintptr_t> chunks;
        for (const Data* r = head; r != nullptr; r = r->nextInMesh) {
            sources_.push_back(r);
            copies_.push_back(make(r));
            if (chunks.empty() || chunks.back() != chunkOf(r)) {
                chunks.push_back(chunkOf(r));
            }
        }
        std::sort(chunks.begin(), chunks.end());
        chunks.erase(std::unique(chunks.begin(), chunks.end()), chunks.end());
        const std::size_t n = sources_.size();
        if (chunks.size() * chunkSlots <= 8 * n + chunkSlots) {
            chunkTable_ = HashTable<std::uintptr_t, std::size_t>(chunks.size());
            for (std::size_t c = 0; c < chunks.size(); ++c) {
                chunkTable_.insert(chunks[c] + 1, c);
            }
            direct_.assign(chunks.size() * chunkSlots, nullptr);
            for (std::size_t i = 0; i < n; ++i) {
                direct_[directIndex(sources_[i])] = copies_[i];
            }
            return;
        }
        records_ = HashTable<const Data*, Data*>(n);
        for (std::size_t i = 0; i < n; ++i) {
            records_.insert(sources_[i], copies_[i]);
        }
    }

    std::size_t size() const noexcept { return sources_.size(); }
    const Data* source(std::size_t i) const noexcept { return sources_[i]; }
    Data* copy(std::size_t i) const noexcept { return copies_[i]; }

    // The copy of `from`; null for a null link or a record that is not in the source list.
    Data* find(const Data* from) const noexcept {
        if (from == nullptr) {
            return nullptr;
        }
        if (!direct_.empty()) {
            const std::size_t* chunk = chunkTable_.find(chunkOf(from) + 1);
            return chunk == nullptr ? nullptr : direct_[*chunk * chunkSlots + slotOf(from)];
        }
        Data* const* found = records_.find(from);
        return found == nullptr ? nullptr : *found;
    }

    template <class Handle>
    void fill(std::map<Handle, Handle>& map) const {
        map.clear();
        for (std::size_t i = 0; i < sources_.size(); ++i) {
            map.emplace(const_cast<Data*>(sources_[i]), copies_[i]);
        }
    }

private:
    static constexpr std::size_t chunkSlots = 4096;

    // Open addressing over one block with non-zero keys, at most three quarters full.
    template <class Key, class Value>
    class HashTable {
    public:
        HashTable() = default;
        explicit HashTable(std::size_t count) {
            std::size_t capacity = 16;
            int bits = 4;
            while (capacity * 3 < count * 4) {
                capacity <<= 1;
                ++bits;
            }
            shift_ = 64 - bits;
            slots_.assign(capacity, Slot{Key(), Value()});
        }
        void insert(Key key, Value value) noexcept {
            std::size_t k = slot(key);
            while (slots_[k].key != Key()) {
                k = (k + 1) & (slots_.size() - 1);
            }
            slots_[k] = Slot{key, value};
        }
        const Value* find(Key key) const noexcept {
            for (std::size_t k = slot(key); slots_[k].key != Key();
                 k = (k + 1) & (slots_.size() - 1)) {
                if (slots_[k].key == key) {
                    return &slots_[k].value;
                }
            }
            return nullptr;
        }

    private:
        struct Slot {
            Key key;
            Value value;
        };
        // The high bits of a multiplicative hash.
        std::size_t slot(Key key) const noexcept {
            return static_cast<std::size_t>((bitsOf(key) * 0x9E3779B97F4A7C15ull) >> shift_);
        }
        static std::uint64_t bitsOf(std::uintptr_t key) noexcept { return key; }
        static std::uint64_t bitsOf(const void* key) noexcept {
            return reinterpret_cast<std::uintptr_t>(key);
        }
        std::vector<Slot> slots_;
        int shift_ = 60;
    };

    static std::uintptr_t chunkOf(const void* record) noexcept {
        return reinterpret_cast<std::uintptr_t>(record) >> 16;
    }
    static std::size_t slotOf(const void* record) noexcept {
        return (reinterpret_cast<std::uintptr_t>(record) & 0xFFFF) >> 4;
    }
    std::size_t directIndex(const void* record) const noexcept {
        return *chunkTable_.find(chunkOf(record) + 1) * chunkSlots + slotOf(record);
    }

    std::vector<const Data*> sources_;
    std::vector<Data*> copies_;
    HashTable<std::uintptr_t, std::size_t> chunkTable_;
    std::vector<Data*> direct_;
    HashTable<const Data*, Data*> records_;
};

// Fills the empty body `target` with a copy of `source`: new edges, then vertices, then faces
// in list order, so the new lists keep the source's order; then the links through the maps.
// Fills `maps` when it is not null.
void copyRecords(const TopoMeshImpl& source, TopoMeshImpl& target, TopoMesh::CopyData* maps) {
    const TopoMeshHeader& h = source.header();
    const CopyList<TopoMeshEdgeData> edges(h.firstEdge, h.numEdges, [&](const TopoMeshEdgeData*) {
        return target.allocEdgeRecord().data();
    });
    const CopyList<TopoMeshVertexData> vertices(
        h.firstVertex, h.numVertices,
        [&](const TopoMeshVertexData* v) { return target.allocVertex(v->point).data(); });
    const CopyList<TopoMeshFaceData> faces(h.firstFace, h.numFaces, [&](const TopoMeshFaceData*) {
        return target.allocFaceRecord().data();
    });
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        vertices.copy(i)->firstEdge = edges.find(vertices.source(i)->firstEdge);
    }
    for (std::size_t i = 0; i < faces.size(); ++i) {
        faces.copy(i)->firstEdge = edges.find(faces.source(i)->firstEdge);
    }
    for (std::size_t i = 0; i < edges.size(); ++i) {
        const TopoMeshEdgeData* from = edges.source(i);
        TopoMeshEdgeData* record = edges.copy(i);
        record->vertex = vertices.find(from->vertex);
        record->next = edges.find(from->next);
        record->prev = edges.find(from->prev);
        record->twin = edges.find(from->twin);
        record->face = faces.find(from->face);
    }
    if (maps != nullptr) {
        vertices.fill(maps->vertices);
        edges.fill(maps->edges);
        faces.fill(maps->faces);
    }
}

// A body over `allocator`, which is deleted if the body cannot be made.
std::unique_ptr<TopoMeshImpl> makeBody(TopoMeshAlloc* allocator) {
    std::unique_ptr<TopoMeshAlloc> owned(allocator);
    auto body = std::make_unique<TopoMeshImpl>(owned.get());
    owned.release();
    return body;
}

} // namespace

TopoMesh::TopoMesh() : TopoMesh(new detail::TopoMeshImplAlloc) {}

TopoMesh::TopoMesh(TopoMeshAlloc* allocator) : impl_(makeBody(allocator)) {}

TopoMesh::TopoMesh(const TopoMesh& other)
    : Entity(other), impl_(makeBody(other.impl_->allocator()->create())) {
    copyRecords(*other.impl_, *impl_, nullptr);
}

TopoMesh& TopoMesh::operator=(const TopoMesh& other) {
    TopoMesh copy(other);
    swap(copy);
    return *this;
}

TopoMesh::~TopoMesh() = default;

void TopoMesh::copy(const TopoMesh& source, CopyData& copyData) {
    // Deliberate: the copy takes a default-made mesh's body, so it always gets a new default
    // allocator; callers that need their own record types copy with the copy constructor.
    TopoMesh old;
    swap(old);
    copyRecords(&source == this ? *old.impl_ : *source.impl_, *impl_, &copyData);
}

void TopoMesh::swap(TopoMesh& other) noexcept { impl_.swap(other.impl_); }

std::uint64_t TopoMesh::getSizeInBytes() const noexcept {
    return 152u + 48u * static_cast<std::uint64_t>(impl_->numVertices()) +
           56u * static_cast<std::uint64_t>(impl_->numEdges()) +
           24u * static_cast<std::uint64_t>(impl_->numFaces());
}

} // namespace koGeom

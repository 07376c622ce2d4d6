#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "tessar/linear/Point.h"
#include "tessar/linear/Point2.h"
#include "tessar/linear/Vector.h"

#include "geom/topomesh/TopoMeshRecords.h"

namespace koGeom {

class TopoMeshVertex;
class TopoMeshEdge;
class TopoMeshFace;

/// The hash of a record address used by the handles and `TopoMeshEntity`: the address spread
/// over the word, as records lie at least 16 bytes apart.
inline std::size_t hashRecordAddress(const void* record) noexcept {
    const auto bits = reinterpret_cast<std::uintptr_t>(record);
    return static_cast<std::size_t>((bits >> 4) * 0x9E3779B97F4A7C15ull);
}

/// The part shared by the three handles: one pointer to a record (null for a null handle),
/// passed by value, converted to and from the record pointer, ordered and hashed by the
/// record's address. A handle owns nothing; it dangles once its record is freed. Accessors
/// read the record without checking that the handle is non-null.
template <class Data>
class TopoMeshHandle {
public:
    using DataType = Data;

    /// A null handle.
    constexpr TopoMeshHandle() noexcept = default;
    constexpr TopoMeshHandle(Data* data) noexcept : data_(data) {}

    constexpr Data* data() const noexcept { return data_; }
    constexpr operator Data*() const noexcept { return data_; }
    /// True for a non-null handle.
    explicit operator bool() const noexcept { return data_ != nullptr; }
    bool isNull() const noexcept { return data_ == nullptr; }

    friend bool operator==(TopoMeshHandle a, TopoMeshHandle b) noexcept {
        return a.data_ == b.data_;
    }
    friend bool operator==(TopoMeshHandle a, Data* b) noexcept { return a.data_ == b; }
    friend bool operator==(TopoMeshHandle a, std::nullptr_t) noexcept { return a.data_ == nullptr; }
    /// By record address.
    friend bool operator<(TopoMeshHandle a, TopoMeshHandle b) noexcept {
        return std::less<const Data*>()(a.data_, b.data_);
    }

    std::size_t hash() const noexcept { return hashRecordAddress(data_); }

protected:
    Data* data_ = nullptr;
};

/// \name Handles
/// The light handles through which callers reach the records of a `TopoMesh`.
/// @{

/// A vertex of a `TopoMesh`.
class TopoMeshVertex : public TopoMeshHandle<TopoMeshVertexData> {
public:
    using TopoMeshHandle::TopoMeshHandle;

    koLinear::Point point() const noexcept { return data_->point; }
    void point(koLinear::Point& out) const noexcept { out = data_->point; }
    /// x and y of the point.
    void point(koLinear::Point2& out) const noexcept {
        out = koLinear::Point2(data_->point.x, data_->point.y);
    }
    /// One outgoing half-edge; null for an isolated vertex.
    inline TopoMeshEdge firstEdge() const noexcept;
    TopoMeshVertex nextInMesh() const noexcept { return data_->nextInMesh; }

    /// \name Neighbourhood
    /// Walks of the vertex's fan (`TopoMeshEdgeVertexIterator`), O(valence).
    /// @{
    /// The number of outgoing half-edges of the fan; 0 for an isolated vertex.
    inline int valence() const noexcept;
    /// True when some outgoing half-edge of the fan has no twin; false when isolated.
    inline bool onBoundary() const noexcept;
    /// The first face of the fan that `other` also lies on (has a half-edge from `other`);
    /// null if none. O(valence × face size).
    inline TopoMeshFace adjacent(TopoMeshVertex other) const noexcept;
    /// @}

    /// By record address.
    friend bool operator>(TopoMeshVertex a, TopoMeshVertex b) noexcept { return b < a; }
};

/// A directed half-edge of a `TopoMesh`.
class TopoMeshEdge : public TopoMeshHandle<TopoMeshEdgeData> {
public:
    using TopoMeshHandle::TopoMeshHandle;

    /// The origin.
    TopoMeshVertex firstVertex() const noexcept { return data_->vertex; }
    TopoMeshVertex v1() const noexcept { return firstVertex(); }
    /// The end: the origin of `next()`.
    TopoMeshVertex secondVertex() const noexcept { return data_->next->vertex; }
    TopoMeshVertex v2() const noexcept { return secondVertex(); }

    TopoMeshEdge next() const noexcept { return data_->next; }
    TopoMeshEdge prev() const noexcept { return data_->prev; }
    /// Null on a boundary.
    TopoMeshEdge twin() const noexcept { return data_->twin; }
    inline TopoMeshFace face() const noexcept;
    TopoMeshEdge nextInMesh() const noexcept { return data_->nextInMesh; }

    /// \name Neighbourhood
    /// @{
    /// The vertex the two edges share: this edge's origin if it is an end of `other`, else
    /// its end if that is; null if none.
    inline TopoMeshVertex adjacent(TopoMeshEdge other) const noexcept;
    /// True when `vertex` is the origin or the end.
    inline bool adjacent(TopoMeshVertex vertex) const noexcept;
    /// The average of the two end points.
    inline koLinear::Point midpoint() const noexcept;
    /// End point minus origin point.
    inline koLinear::Vector vector() const noexcept;
    /// @}

    /// True for the one half-edge of a twin pair whose twin lies at the higher address, and
    /// for every boundary half-edge: keeping only primary half-edges visits each undirected
    /// edge once.
    bool isPrimary() const noexcept {
        // Deliberate: the pair is ordered by record address, which writers and counters of
        // undirected edges rely on.
        return data_->twin == nullptr || std::less<const TopoMeshEdgeData*>()(data_, data_->twin);
    }
};

/// A face of a `TopoMesh`.
class TopoMeshFace : public TopoMeshHandle<TopoMeshFaceData> {
public:
    using TopoMeshHandle::TopoMeshHandle;

    TopoMeshEdge firstEdge() const noexcept { return data_->firstEdge; }
    TopoMeshFace nextInMesh() const noexcept { return data_->nextInMesh; }

    /// True when the loop closes after exactly three steps; O(1), it walks no further.
    bool isTriangle() const noexcept {
        const TopoMeshEdgeData* e = data_->firstEdge;
        return e->next->next->next == e;
    }
    /// True when the loop closes after exactly four steps; O(1), it walks no further.
    bool isQuad() const noexcept {
        const TopoMeshEdgeData* e = data_->firstEdge;
        return e->next->next->next->next == e;
    }

    /// \name Neighbourhood
    /// Walks of the face's loop from its first edge, O(face size).
    /// @{
    /// True when some half-edge of the loop has no twin.
    inline bool hasBoundaryEdge() const noexcept;
    /// The first half-edge of the loop whose origin is `vertex`; null if none.
    inline TopoMeshEdge adjacent(TopoMeshVertex vertex) const noexcept;
    /// The first half-edge of the loop whose twin lies on `other`: the edge the two faces
    /// share, seen from this face; null if none.
    inline TopoMeshEdge adjacent(TopoMeshFace other) const noexcept;
    /// The number of half-edges (and corners) of the loop.
    inline int numVertices() const noexcept;
    /// The average of the corner points.
    inline koLinear::Point centroid() const noexcept;
    /// @}
};

/// @}

inline TopoMeshEdge TopoMeshVertex::firstEdge() const noexcept { return data_->firstEdge; }
inline TopoMeshFace TopoMeshEdge::face() const noexcept { return data_->face; }

} // namespace koGeom

// The neighbourhood queries walk fans: their bodies come with the fan iterator.
#include "geom/topomesh/TopoMeshEdgeVertexIterator.h"

/// \cond
template <>
struct std::hash<koGeom::TopoMeshVertex> {
    std::size_t operator()(koGeom::TopoMeshVertex v) const noexcept { return v.hash(); }
};
template <>
struct std::hash<koGeom::TopoMeshEdge> {
    std::size_t operator()(koGeom::TopoMeshEdge e) const noexcept { return e.hash(); }
};
template <>
struct std::hash<koGeom::TopoMeshFace> {
    std::size_t operator()(koGeom::TopoMeshFace f) const noexcept { return f.hash(); }
};
/// \endcond

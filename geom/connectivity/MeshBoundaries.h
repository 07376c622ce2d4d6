#pragma once

#include "tessar/core/ReferenceCount.h"

#include "geom/FormworkExport.h"
#include "geom/mesh/MeshSequence.h"

namespace koGeom {

/// The boundary loops of a mesh, shared through `ko::Reference`: boundary i is sequence i of
/// one `MeshSequence`, a run of vertex indices.
///
/// The class finds no boundaries: the code that detects them fills the sequence through
/// `getSequence()` and calls its `invalidate()` after any change, before `getStart` or
/// `getEnd` is used again. Indices are not checked.
class FORMWORK_EXPORT MeshBoundaries : public ko::ReferenceCount {
public:
    /// \name Construction
    /// @{
    /// No boundaries.
    MeshBoundaries();
    /// Copies the boundaries (see the `MeshSequence` copy); the reference count starts at 0.
    MeshBoundaries(const MeshBoundaries& other);
    /// Copies `other` into a temporary and swaps it in. Throws `std::bad_alloc` when the copy
    /// cannot be made, leaving this object unchanged.
    MeshBoundaries& operator=(const MeshBoundaries& other);
    /// Exchanges the sequences (see `MeshSequence::swap`).
    void swap(MeshBoundaries& other) noexcept;
    /// @}

    /// \name Boundaries
    /// @{
    MeshSequence& getSequence() noexcept { return boundaries_; }
    const MeshSequence& getSequence() const noexcept { return boundaries_; }

    /// The number of boundaries.
    int size() const noexcept { return boundaries_.lengths().count(); }
    /// The number of vertices of boundary i.
    int getLength(int i) const noexcept { return boundaries_.lengths().elements()[i]; }
    /// The first vertex index of boundary i. Builds the sequence's starts when they are empty,
    /// in O(boundaries), though the query is const: one thread at a time.
    const int* getStart(int i) const { return boundaries_.starts()[i]; }
    /// One past the last vertex index of boundary i; builds the starts as `getStart` does.
    const int* getEnd(int i) const { return getStart(i) + getLength(i); }

    /// Makes `out` hold boundary i alone: one length and its vertex indices in stored order,
    /// with its caches emptied. Whatever `out` held is replaced, in its own storage; `out` may
    /// be this object's own sequence. O(length). Throws `std::bad_alloc` when `out` cannot
    /// grow.
    void extract(int i, MeshSequence& out) const;

    /// The sequence's own estimate (`MeshSequence::getSizeInBytes`).
    int numBytesUsed() const noexcept { return boundaries_.getSizeInBytes(); }
    /// @}

protected:
    ~MeshBoundaries() override;

private:
    MeshSequence boundaries_;
};

} // namespace koGeom

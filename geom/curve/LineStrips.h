#pragma once

#include "geom/FormworkExport.h"
#include "geom/mesh/MeshRecords.h"
#include "geom/storage/Array.h"

namespace koGeom {

/// Several connected line strips kept compactly: the vertices of all strips one after
/// another, the number of vertices of each strip, and the index of each strip's first vertex.
///
/// The offsets are derived from the lengths by `computeOffsets()`; whoever changes the lengths
/// calls it before the offsets are read again. Nothing is checked: the lengths are to be
/// non-negative and to sum to the vertex count. A plain value; its arrays live on the heap
/// (copies always do, whatever allocator the source's arrays were given).
class FORMWORK_EXPORT LineStrips {
public:
    /// \name Construction
    /// @{
    /// No vertices, lengths or offsets.
    LineStrips() noexcept;
    /// Copies the three arrays onto the heap. O(vertices + strips).
    LineStrips(const LineStrips& other);
    /// Copies, as the copy constructor does: `other` keeps its contents.
    LineStrips(LineStrips&& other);
    /// Copies `other` into a temporary and swaps it in. Throws `std::bad_alloc` when the copy
    /// cannot be made, leaving this object unchanged.
    LineStrips& operator=(const LineStrips& other);
    /// Copies, as copy assignment does: `other` keeps its contents.
    LineStrips& operator=(LineStrips&& other);
    ~LineStrips();

    /// Exchanges the three arrays (see `Array::swap`).
    void swap(LineStrips& other) noexcept;
    /// @}

    /// \name Contents
    /// Resize the arrays through their `setCount`; new elements are uninitialised.
    /// @{
    Array<MeshVertex>& vertices() noexcept { return vertices_; }
    const Array<MeshVertex>& vertices() const noexcept { return vertices_; }
    Array<int>& lengths() noexcept { return lengths_; }
    const Array<int>& lengths() const noexcept { return lengths_; }
    Array<int>& offsets() noexcept { return offsets_; }
    const Array<int>& offsets() const noexcept { return offsets_; }

    int getNumVertices() const noexcept { return vertices_.count(); }
    /// The number of strips: the number of lengths.
    int getNumStrips() const noexcept { return lengths_.count(); }
    /// @}

    /// \name Editing
    /// @{

    /// Appends `other`'s vertices, lengths and offsets, each array as it is: the appended
    /// offsets keep their values in `other`, counted from `other`'s first vertex, so call
    /// `computeOffsets()` afterwards to have them index this object's vertices. `other` may be
    /// this object. O(this + other). Throws `std::bad_alloc` when an array cannot grow; the
    /// arrays before it have then grown already.
    void add(const LineStrips& other);

    /// Makes the offsets as many as the lengths, each the sum of the lengths before it
    /// (offsets[0] = 0). O(strips). Throws `std::bad_alloc` when the offsets cannot grow.
    void computeOffsets();
    /// @}

    /// The fixed estimate 4 × (3 × (vertices + 6) + lengths + offsets) bytes.
    int getSizeInBytes() const noexcept;

private:
    Array<MeshVertex> vertices_;
    Array<int> lengths_;
    Array<int> offsets_;
};

} // namespace koGeom

#pragma once

#include "tessar/core/Reference.h"
#include "tessar/linear/Range1d.h"
#include "tessar/linear/Range2d.h"
#include "tessar/linear/Range3d.h"
#include "tessar/string/CString.h"

#include "geom/FormworkExport.h"
#include "geom/mesh/MeshRecords.h"
#include "geom/storage/Array.h"
#include "geom/storage/ArrayAllocator.h"

namespace koGeomTest {
struct MeshAttributesAccess;
} // namespace koGeomTest

namespace koGeom {

class PointMesh;

/// One named per-vertex channel of a `PointMesh`: vertex positions, normals, texture
/// coordinates, colours or a client channel of one to four floats per vertex.
///
/// The channel owns one flat float array (an `Array<float>`, on the heap or in the mesh's
/// `ArrayAllocator`) of elements × dimension floats, two flags that tell the mesh and the file
/// writer how to treat it, and a cache of the per-component minimum and maximum of its values.
///
/// Channels are made and destroyed only by the mesh that owns them. The one other party with
/// that access is `koGeomTest::MeshAttributesAccess`, the tests' and benchmarks' stand-in for
/// the owner, which is not part of the installed library.
///
/// The range cache is filled on demand by `getRange1` to `getRange3`, made valid with given
/// values by `setRange1` to `setRange3`, and reset by `invalidateRange`, `copyArray` and
/// construction. Writing through a view does not reset it: the owner invalidates a channel
/// when it is told of a change.
class FORMWORK_EXPORT MeshAttributes {
public:
    /// Copies the name, dimension, flags, cached range and values. The copy shares the
    /// source's allocator, its floats keyed by the copy's own array. O(floats).
    MeshAttributes(const MeshAttributes& other) = default;

    /// Copies the name, dimension, flags, cached range and values, keeping this channel's own
    /// allocator (a heap channel stays on the heap). O(floats). Throws `std::bad_alloc` when
    /// the storage cannot be had; a heap channel is then left unchanged, a channel in an
    /// allocator is left empty with its range reset, and the rest of it unchanged.
    MeshAttributes& operator=(const MeshAttributes& other);

    /// Exchanges every member, the arrays without telling any allocator: an array's storage
    /// stays keyed by the array that asked for it, so only channels on the heap are to be
    /// swapped while they hold values.
    void swap(MeshAttributes& other) noexcept;

    /// \name Description
    /// @{
    const koString::CString& getName() const noexcept { return name_; }
    /// Floats per element, 1 to 4.
    int getDimension() const noexcept { return dimension_; }
    /// The float count divided by the dimension, rounded toward zero.
    int getNumElements() const noexcept {
        return dimension_ > 0 ? values_.count() / dimension_ : 0;
    }
    /// The float count × 4 plus 88 for the channel object, whatever the storage really takes.
    int getSizeInBytes() const noexcept;

    /// Whether the channel is written when its mesh is stored to a file; false when made.
    bool needsStorage() const noexcept { return storageRequired_; }
    void setStorageRequired(bool required) noexcept { storageRequired_ = required; }
    /// Whether the values were computed rather than supplied (the mesh marks its normals so);
    /// the channel itself never acts on it. False when made.
    bool isComputed() const noexcept { return computed_; }
    void setComputed(bool computed) noexcept { computed_ = computed; }
    /// @}

    /// \name Values
    /// @{

    /// Sets the float count to `numFloats` (elements × dimension, not elements). The first
    /// min(old, new) floats are kept, new ones are not initialised, and the cached range is
    /// left as it was. Throws `std::bad_alloc` when the storage cannot be had, leaving the
    /// channel as it was. O(floats kept).
    void resize(int numFloats);

    /// Copies float-count floats from `source`, which must hold that many, and resets the
    /// cached range. O(floats).
    void copyArray(const float* source);
    /// @}

    /// \name Views
    /// The first element, seen as floats or as records of the channel's width; null when the
    /// channel is empty or (for the records) its dimension is not the record's width. Non-const
    /// views fetch the storage through the allocator's non-const `get`, const views through its
    /// const `get`. A pointer stays valid until the next resize and, in a moveable allocator,
    /// until the next unmap.
    /// @{
    float* asFloat() noexcept { return values_.elements(); }
    const float* asFloat() const noexcept { return values_.elements(); }
    MeshFloat1* asFloat1() noexcept { return records<MeshFloat1>(1); }
    const MeshFloat1* asFloat1() const noexcept { return records<MeshFloat1>(1); }
    MeshFloat2* asFloat2() noexcept { return records<MeshFloat2>(2); }
    const MeshFloat2* asFloat2() const noexcept { return records<MeshFloat2>(2); }
    MeshFloat3* asFloat3() noexcept { return records<MeshFloat3>(3); }
    const MeshFloat3* asFloat3() const noexcept { return records<MeshFloat3>(3); }
    MeshFloat4* asFloat4() noexcept { return records<MeshFloat4>(4); }
    const MeshFloat4* asFloat4() const noexcept { return records<MeshFloat4>(4); }
    MeshUV* asMeshUV() noexcept { return records<MeshUV>(2); }
    const MeshUV* asMeshUV() const noexcept { return records<MeshUV>(2); }
    MeshVertex* asMeshVertex() noexcept { return records<MeshVertex>(3); }
    const MeshVertex* asMeshVertex() const noexcept { return records<MeshVertex>(3); }
    MeshNormal* asMeshNormal() noexcept { return records<MeshNormal>(3); }
    const MeshNormal* asMeshNormal() const noexcept { return records<MeshNormal>(3); }
    MeshColour* asMeshColour() noexcept { return records<MeshColour>(4); }
    const MeshColour* asMeshColour() const noexcept { return records<MeshColour>(4); }
    /// @}

    /// \name Cached range
    /// The per-component minimum and maximum of a channel of dimension 1, 2 or 3, widened to
    /// double. An out-of-date cache is refilled by one pass over the values, which keeps a
    /// value only when it is strictly below the minimum or above the maximum found so far, so a
    /// NaN never enters, and equal values keep the first met (the sign of a zero bound). An
    /// empty channel gives the empty range from the largest float to its negative, and that
    /// result is cached too. The query of one dimension on a channel of another leaves the
    /// values unread. O(floats) when the cache is out of date, else O(1).
    /// @{
    koLinear::Range1d getRange1() const;
    koLinear::Range2d getRange2() const;
    koLinear::Range3d getRange3() const;

    /// Store `range` (each bound rounded to float) as the cached range, which the queries then
    /// return unchanged until the range is reset.
    void setRange1(const koLinear::Range1d& range) const noexcept;
    void setRange2(const koLinear::Range2d& range) const noexcept;
    void setRange3(const koLinear::Range3d& range) const noexcept;

    /// Marks the cache out of date and resets the minimum to the largest float and the maximum
    /// to its negative in each component the dimension uses.
    void invalidateRange() noexcept;
    /// @}

    /// Checks nothing: the guard floats around the values are not kept.
    void checkMemory() const noexcept {}

private:
    friend class PointMesh;
    friend struct koGeomTest::MeshAttributesAccess;

    /// A channel of `numElements` uninitialised elements of `dimension` floats, in `allocator`
    /// (null for the heap), both flags clear and the range reset.
    MeshAttributes(const koString::CString& name, int dimension, int numElements,
                   ko::Reference<ArrayAllocator> allocator);
    ~MeshAttributes() = default;

    /// Moves the values to `allocator`; only an empty channel keeps its values reachable
    /// (see `Array::setAllocator`).
    void setArrayAllocator(ko::Reference<ArrayAllocator> allocator);

    template <class Record>
    Record* records(int width) noexcept {
        return dimension_ == width ? reinterpret_cast<Record*>(values_.elements()) : nullptr;
    }
    template <class Record>
    const Record* records(int width) const noexcept {
        return dimension_ == width ? reinterpret_cast<const Record*>(values_.elements()) : nullptr;
    }

    template <int width>
    void refreshRange() const noexcept;

    static constexpr int maxDimension = 4;

    koString::CString name_;
    int dimension_ = 0;
    bool storageRequired_ = false;
    bool computed_ = false;
    Array<float> values_;
    mutable float rangeMin_[maxDimension] = {};
    mutable float rangeMax_[maxDimension] = {};
    mutable bool rangeValid_ = false;
};

} // namespace koGeom

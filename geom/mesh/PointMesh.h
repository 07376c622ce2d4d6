#pragma once

#include <memory>

#include "tessar/core/Containers.h"
#include "tessar/core/Reference.h"
#include "tessar/linear/Range2d.h"
#include "tessar/linear/Range3d.h"
#include "tessar/string/CString.h"

#include "geom/FormworkExport.h"
#include "geom/entity/Entity.h"
#include "geom/mesh/MeshAttributes.h"
#include "geom/mesh/MeshRecords.h"
#include "geom/storage/ArrayAllocator.h"
#include "geom/storage/BitVector.h"

namespace koGeom {

class BoundingBox;
class MeshModification;

/// The base mesh: a set of vertices with any number of named per-vertex attribute channels,
/// a vertex selection, and an optional array allocator given to the channels it creates.
///
/// The standard channels have fixed dimensions: "vertices" 3, "normals" 3, "uvs" 2, "sts" 2,
/// "colours" 4. A client channel may have any other name and one to four floats per vertex.
/// Names are unique within a mesh, and every channel has `getNumVertices()` elements. The
/// "vertices" channel is made only by the vertex operations; the mesh has no channels while
/// its vertex count is 0.
///
/// Nothing here sends a notice by itself: a client that changes a mesh (its vertex count, its
/// channels or the values behind the typed arrays) describes the change in a
/// `MeshModification` and passes it to `modified`, which brings the channels up to date and
/// tells the listeners.
///
/// A channel pointer stays valid until the channel is removed; a typed array until the
/// channel is resized too (and, in a moveable allocator, until the next unmap). A mesh is used
/// from one thread at a time.
class FORMWORK_EXPORT PointMesh : public Entity {
public:
    /// \name Standard channel names
    /// The same objects as `meshVerticesName` … `meshColoursName`.
    /// @{
    static const koString::CString& VerticesName;
    static const koString::CString& NormalsName;
    static const koString::CString& UVsName;
    static const koString::CString& STsName;
    static const koString::CString& ColoursName;
    /// @}

    /// \name Construction and assignment
    /// @{
    /// No allocator, no channels, no vertices, an empty selection.
    PointMesh();
    /// As the default, with `allocator` for every channel made from now on.
    explicit PointMesh(ko::Reference<ArrayAllocator> allocator);
    /// A mesh of `n` vertices without allocator. For n < 1 it has no channels, though
    /// `getNumVertices()` returns n. Otherwise it has "vertices" (copied from `vertices`, or
    /// uninitialised when that is null), then "normals", "uvs" and "colours" for each of those
    /// arrays that is not null, each copied from n records. O(n).
    PointMesh(int n, const MeshVertex* vertices, const MeshNormal* normals, const MeshUV* uvs,
              const MeshColour* colours);
    /// A new entity, without listeners or allocator of its own, holding copies of `other`'s
    /// channels and selection as assignment makes them. O(floats).
    PointMesh(const PointMesh& other);
    /// Replaces the channels by copies of `other`'s, in its order, each copy sharing the
    /// allocator of the channel it copies; copies the vertex count and the selection. This
    /// mesh keeps its own allocator and listeners, and no notice is sent. O(floats).
    /// Throws `std::bad_alloc` when storage cannot be had, leaving this mesh unchanged.
    PointMesh& operator=(const PointMesh& other);
    /// Destroys the channels, then tells the listeners of `deletedSignal`.
    ~PointMesh() override;

    /// Exchanges the channels, vertex counts and selections of two meshes. When either mesh
    /// has an allocator it does nothing at all and reports nothing.
    void swap(PointMesh& other) noexcept;
    /// @}

    /// \name Vertices and channels
    /// @{
    int getNumVertices() const noexcept { return numVertices_; }
    int getNumAttributes() const noexcept { return static_cast<int>(attributes_.size()); }

    /// Sets the vertex count to `n`. For 0, every channel is destroyed, "vertices" included.
    /// From a count of 0 it creates "vertices" with n uninitialised elements. Otherwise every
    /// channel is resized, keeping its first min(old, n) elements and its cached range.
    /// O(floats kept). Throws `std::bad_alloc` when storage cannot be had; the count is then
    /// left as it was, and channels before the one that failed have their new size.
    void resizeVertexArray(int n);
    /// `resizeVertexArray(n)`, then, unless n is 0, copies n vertices from `source` and resets
    /// the vertex range. O(n).
    void copyVertices(int n, const MeshVertex* source);

    /// A client or standard channel of `dimension` floats per vertex, in the mesh's
    /// allocator, its elements uninitialised. An existing channel of that name is returned
    /// when its dimension matches. Null, with the mesh unchanged, when the dimension is not 1
    /// to 4, the mesh has no vertices, the name is "vertices", an existing channel of that
    /// name has another dimension, or a standard name is asked with another dimension than
    /// its own. O(channels + vertices).
    MeshAttributes* allocAttributes(const koString::CString& name, int dimension);
    /// Each of the four creates its standard channel in the mesh's allocator, elements
    /// uninitialised, unless the channel exists already or the mesh has no vertices.
    void allocNormalArray();
    void allocUVArray();
    void allocSTArray();
    void allocColourArray();

    /// Destroys the first channel of that name, keeping the others in order. Nothing when
    /// there is none, or for "vertices". O(channels).
    void deleteAttributes(const koString::CString& name);
    void deleteNormals() { deleteAttributes(NormalsName); }
    void deleteUVs() { deleteAttributes(UVsName); }
    void deleteSTs() { deleteAttributes(STsName); }
    void deleteColours() { deleteAttributes(ColoursName); }

    /// The first channel of that name, or null. O(channels).
    MeshAttributes* getAttributes(const koString::CString& name) noexcept;
    const MeshAttributes* getAttributes(const koString::CString& name) const noexcept;
    /// The i-th channel in order of creation, or null when i is out of range.
    MeshAttributes* getAttributes(int i) noexcept;
    const MeshAttributes* getAttributes(int i) const noexcept;
    /// Adds every channel's name to `names`, keeping what it holds. O(channels).
    void getAttributeNames(ko::set<koString::CString>& names) const;

    MeshAttributes* getVerticesAttr() noexcept { return verticesAttr_; }
    const MeshAttributes* getVerticesAttr() const noexcept { return verticesAttr_; }
    MeshAttributes* getNormalsAttr() noexcept { return normalsAttr_; }
    const MeshAttributes* getNormalsAttr() const noexcept { return normalsAttr_; }
    MeshAttributes* getUVsAttr() noexcept { return uvsAttr_; }
    const MeshAttributes* getUVsAttr() const noexcept { return uvsAttr_; }
    MeshAttributes* getSTsAttr() noexcept { return stsAttr_; }
    const MeshAttributes* getSTsAttr() const noexcept { return stsAttr_; }
    MeshAttributes* getColoursAttr() noexcept { return coloursAttr_; }
    const MeshAttributes* getColoursAttr() const noexcept { return coloursAttr_; }
    /// @}

    /// \name Typed arrays
    /// The first element of a standard channel, fetched through its allocator; null when the
    /// channel does not exist or is empty. Writing through them changes no cached range.
    /// @{
    MeshVertex* getVertices() noexcept;
    const MeshVertex* getVertices() const noexcept;
    MeshNormal* getNormals() noexcept;
    const MeshNormal* getNormals() const noexcept;
    MeshUV* getUVs() noexcept;
    const MeshUV* getUVs() const noexcept;
    MeshUV* getSTs() noexcept;
    const MeshUV* getSTs() const noexcept;
    MeshColour* getColours() noexcept;
    const MeshColour* getColours() const noexcept;

    float* getVerticesRaw() noexcept;
    const float* getVerticesRaw() const noexcept;
    float* getNormalsRaw() noexcept;
    const float* getNormalsRaw() const noexcept;
    float* getUVsRaw() noexcept;
    const float* getUVsRaw() const noexcept;
    float* getSTsRaw() noexcept;
    const float* getSTsRaw() const noexcept;
    float* getColoursRaw() noexcept;
    const float* getColoursRaw() const noexcept;
    /// @}

    /// \name Flags and ranges
    /// Ranges are the channels' cached ranges, rescanned only after they were reset (by
    /// `modified` for a modified channel, or by `copyVertices`): O(vertices) then, else O(1).
    /// @{
    /// The "normals" channel's computed flag; false without the channel.
    bool getNormalsComputed() const noexcept;
    /// Nothing without the "normals" channel.
    void setNormalsComputed(bool computed) noexcept;

    /// The texture coordinate range; without the channel, the empty range of `setUnbounded`.
    koLinear::Range2d getUVRange() const;
    koLinear::Range2d getSTRange() const;
    /// Store `range` as the channel's cached range; nothing without the channel.
    void setUVRange(const koLinear::Range2d& range) noexcept;
    void setSTRange(const koLinear::Range2d& range) noexcept;

    /// The vertex range; without "vertices", the empty box of `setInvalid`.
    void getBoundingBox(BoundingBox& box) const;
    /// The vertex range; without "vertices", the empty range of `setUnbounded`.
    void getBoundingBox(koLinear::Range3d& range) const;
    /// @}

    /// The vertex selection. The mesh never resizes it, whatever happens to the vertex count.
    BitVector& getSelectedVertices() noexcept { return selectedVertices_; }
    const BitVector& getSelectedVertices() const noexcept { return selectedVertices_; }

    /// \name Allocator and memory
    /// @{
    /// The allocator given to new channels; null when they go on the heap.
    ko::Reference<ArrayAllocator> getArrayAllocator() const noexcept { return allocator_; }
    /// Replaces the mesh's allocator and moves every channel to it. Only empty channels keep
    /// their contents reachable (see `Array::setAllocator`): set an allocator before filling
    /// the mesh. O(floats). Throws `std::bad_alloc` when storage cannot be had.
    virtual void setArrayAllocator(ko::Reference<ArrayAllocator> allocator);
    /// @}

    /// Brings the channels up to date with the change `mod` describes, then broadcasts `mod`
    /// to the listeners of `modifiedSignal`. Walking the channels in order, a channel that
    /// the notice does not declare valid is recorded in it as modified and destroyed; a valid
    /// channel that it declares modified has its cached range reset. Listeners thus see the
    /// dropped channels gone and the notice saying they were modified. O(channels) before the
    /// broadcast. Throws `std::bad_alloc` when recording a dropped client channel fails;
    /// channels dropped before then stay dropped and nothing is broadcast.
    virtual void modified(MeshModification& mod);

    /// The memory estimate: 160 for the mesh object, plus the selection's and every
    /// channel's `getSizeInBytes`, summed in 32 bits. O(channels).
    virtual int getSizeInBytes() const noexcept;

private:
    struct DestroyChannel {
        void operator()(MeshAttributes* channel) const noexcept;
    };
    using OwnedChannel = std::unique_ptr<MeshAttributes, DestroyChannel>;
    using ChannelList = ko::vector<OwnedChannel>;

    // Appends a new channel in the mesh's allocator; on failure the mesh is unchanged.
    MeshAttributes* appendChannel(const koString::CString& name, int dimension, int numElements);
    void allocStandardChannel(const MeshAttributes* existing, const koString::CString& name,
                              int dimension);
    void destroyChannels() noexcept;
    void rederiveCachedPointers() noexcept;

    ko::Reference<ArrayAllocator> allocator_;
    ChannelList attributes_;
    MeshAttributes* verticesAttr_ = nullptr;
    MeshAttributes* normalsAttr_ = nullptr;
    MeshAttributes* uvsAttr_ = nullptr;
    MeshAttributes* stsAttr_ = nullptr;
    MeshAttributes* coloursAttr_ = nullptr;
    int numVertices_ = 0;
    BitVector selectedVertices_;
};

} // namespace koGeom

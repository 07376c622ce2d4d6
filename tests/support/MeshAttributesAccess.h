#pragma once

#include <memory>
#include <utility>

#include "tessar/core/Reference.h"
#include "tessar/string/CString.h"

#include "geom/mesh/MeshAttributes.h"
#include "geom/storage/ArrayAllocator.h"

namespace koGeomTest {

/// The owner's access to attribute channels, for tests and benchmarks: it makes, copies and
/// destroys channels, as the owning mesh does. `MeshAttributes`
/// names this type as its one friend besides the mesh.
struct MeshAttributesAccess {
    static void destroy(koGeom::MeshAttributes* channel) noexcept { delete channel; }

    struct Destroy {
        void operator()(koGeom::MeshAttributes* channel) const noexcept { destroy(channel); }
    };
    using Owned = std::unique_ptr<koGeom::MeshAttributes, Destroy>;

    static Owned create(const koString::CString& name, int dimension, int numElements,
                        ko::Reference<koGeom::ArrayAllocator> allocator = nullptr) {
        return Owned(
            new koGeom::MeshAttributes(name, dimension, numElements, std::move(allocator)));
    }

    static Owned copy(const koGeom::MeshAttributes& source) {
        return Owned(new koGeom::MeshAttributes(source));
    }
};

} // namespace koGeomTest

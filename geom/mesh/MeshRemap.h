#pragma once

namespace koGeom {

class Remap;

/// The renumbering of a whole mesh: a vertex map and a triangle map, either of which may be
/// null. It neither owns nor references them; they belong to the sender of the notice that
/// carries this and must outlive it.
class MeshRemap {
public:
    MeshRemap(Remap* vertices, Remap* triangles) noexcept
        : vertices_(vertices), triangles_(triangles) {}

    Remap* getVertices() const noexcept { return vertices_; }
    Remap* getTriangles() const noexcept { return triangles_; }

private:
    Remap* vertices_;
    Remap* triangles_;
};

} // namespace koGeom

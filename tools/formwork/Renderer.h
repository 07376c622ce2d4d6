#pragma once

#include <cstdint>
#include <vector>

#include "geom/view/Camera.h"
#include "tools/formwork/MeshArrays.h"
#include "tools/formwork/Progress.h"

namespace formworkTool {

/// A picture: rows from the top, three bytes (red, green, blue) a pixel.
struct Image {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb;
};

/// What the picture shows and how big it is.
struct RenderOptions {
    int width = 800;
    int height = 600;
    /// The eye's direction from the centre of the meshes' box, in degrees: azimuth about the
    /// y axis (0 looks from +z, 90 from +x), elevation above the xz plane.
    double azimuth = 30.0;
    double elevation = 20.0;
    /// Draws every triangle's edges over the shaded surface.
    bool wireframe = false;
    /// Samples per pixel along each axis, averaged into the pixel (1 draws aliased edges).
    int supersample = 2;
};

/// The camera that sees all of `meshes` (the box of their vertices, which must not be
/// empty) from the options' direction, looking at the box's centre: y up (z when looking
/// along y), a 30-degree vertical lens with the picture's aspect ratio, at the nearest
/// distance from which every corner of the box is in view with 5 per cent to spare; the
/// viewport is the supersampled picture, and near and far are fitted to the box with
/// `Camera::setNearFar`.
koGeom::Camera fitCamera(const MeshList& meshes, const RenderOptions& options);

/// Draws `meshes` through `fitCamera`'s camera with a small software rasteriser: a depth
/// buffer, triangles shaded from their vertex normals (computed from the triangles where the
/// mesh has none, see `vertexNormals`) lit from beside the eye on both sides, coloured by
/// their vertex colours or a neutral clay; line strips and lines as dark lines; vertices of
/// no primitive as dots; over a light gradient. The same meshes and options give the same
/// picture every run: one thread, every buffer initialised, the primitives drawn in order
/// (a tie in depth keeps the first). O(pixels + primitives × their pixels).
Image renderMeshes(const MeshList& meshes, const RenderOptions& options, Progress& progress);

} // namespace formworkTool

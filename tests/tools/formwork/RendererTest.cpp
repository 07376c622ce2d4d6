#include "tools/formwork/Renderer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tests/tools/formwork/ProgramRun.h"
#include "tools/formwork/Png.h"

namespace formworkTool {
namespace {

using formworkTest::torusList;

// Pixels unlike the background's top-left corner (which no test mesh covers).
int drawnPixels(const Image& image) {
    int count = 0;
    for (std::size_t i = 0; i < image.rgb.size(); i += 3) {
        for (std::size_t k = 0; k < 3; ++k) {
            if (std::abs(image.rgb[i + k] - image.rgb[k]) > 24) {
                ++count;
                break;
            }
        }
    }
    return count;
}

Image render(const MeshList& meshes, RenderOptions options) {
    Progress quiet(false);
    return renderMeshes(meshes, options, quiet);
}

TEST(Renderer, TorusMatchesTheReferencePictureWithinATolerance) {
    // The reference was made once by `formwork render` of `formwork make-torus` at 160 x 120.
    // Not compared byte for byte: rasterising in floating point may differ in the last bit
    // between g++ and clang and between optimisation levels, which can move an edge pixel or
    // a shade by a step. Each channel may differ by 8, and at most 1% of pixels by more.
    Image reference;
    std::string error;
    ASSERT_TRUE(readPng(FORMWORK_TEST_DATA "/torus-160x120.png", reference, error)) << error;
    RenderOptions options;
    options.width = 160;
    options.height = 120;
    const Image image = render(torusList(48, 24), options);
    ASSERT_EQ(image.width, reference.width);
    ASSERT_EQ(image.height, reference.height);
    int differing = 0;
    for (std::size_t i = 0; i < image.rgb.size(); i += 3) {
        for (std::size_t k = 0; k < 3; ++k) {
            if (std::abs(image.rgb[i + k] - reference.rgb[i + k]) > 8) {
                ++differing;
                break;
            }
        }
    }
    EXPECT_LE(differing, 160 * 120 / 100);
    EXPECT_GT(drawnPixels(image), 160 * 120 / 8);
}

TEST(Renderer, SameMeshesAndOptionsGiveTheSamePicture) {
    RenderOptions options;
    options.width = 64;
    options.height = 48;
    options.wireframe = true;
    EXPECT_EQ(render(torusList(12, 8), options).rgb, render(torusList(12, 8), options).rgb);
}

TEST(Renderer, FittedCameraSeesTheWholeBoxFromEveryDirection) {
    const MeshList torus = torusList(12, 8);
    koGeom::BoundingBox box;
    torus[0]->getBoundingBox(box);
    for (const double elevation : {-90.0, -30.0, 0.0, 45.0, 90.0}) {
        for (const double azimuth : {0.0, 90.0, 200.0}) {
            SCOPED_TRACE(std::to_string(azimuth) + " " + std::to_string(elevation));
            RenderOptions options;
            options.width = 40;
            options.height = 90; // narrow: the horizontal angle limits the fit
            options.azimuth = azimuth;
            options.elevation = elevation;
            const koGeom::Camera camera = fitCamera(torus, options);
            for (int corner = 0; corner < 8; ++corner) {
                koLinear::PointFlt p;
                box.getPoint(corner, p);
                koLinear::Point pixel;
                EXPECT_TRUE(camera.project(koLinear::Point(p.x, p.y, p.z), pixel)) << corner;
            }
            EXPECT_GT(drawnPixels(render(torus, options)), 40 * 90 / 20);
        }
    }
}

TEST(Renderer, LoosePointsLinesAndWireframeAreDrawn) {
    MeshArrays points;
    points.positions = {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 1};
    MeshArrays lines = points;
    lines.lineStripPoints = {0, 1, 2, 3};
    lines.lineStripLengths = {4};
    RenderOptions options;
    options.width = 64;
    options.height = 48;
    EXPECT_GE(drawnPixels(render({points.toMesh()}, options)), 4 * 4);
    EXPECT_GT(drawnPixels(render({lines.toMesh()}, options)), 64);
    const MeshList torus = torusList(12, 8);
    options.wireframe = true;
    const Image wired = render(torus, options);
    options.wireframe = false;
    const Image plain = render(torus, options);
    long darkWired = 0;
    long darkPlain = 0;
    for (std::size_t i = 0; i < wired.rgb.size(); ++i) {
        darkWired += wired.rgb[i] < 60 ? 1 : 0;
        darkPlain += plain.rgb[i] < 60 ? 1 : 0;
    }
    EXPECT_GT(darkWired, darkPlain + 100);
}

} // namespace
} // namespace formworkTool

#include "geom/view/Camera.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "tests/geom/view/ExpectMatrix.h"
#include "tests/support/PrintedText.h"

namespace koGeom {
namespace {

using koGeomTest::expectMatrix;
using P = koLinear::Point;

// Eye at (3, 0, 0) looking at the origin with z up: f = (-1, 0, 0), r = f x z = (0, 1, 0),
// u = r x f = (0, 0, 1). Default frustum (90 degrees, near 1, far 100); viewport 200 x 100.
Camera sideCamera() {
    Camera camera;
    camera.setWorldToEye({0, 0, 0}, {3, 0, 0}, koLinear::Normal::unitZ());
    Viewport viewport;
    viewport.setSize(200.0, 100.0);
    camera.setViewport(viewport);
    return camera;
}

TEST(Camera, LookAtAndMatrixChainElementByElement) {
    EXPECT_EQ(Camera().getViewVector(), koLinear::Normal(0, 0, -1));
    const Camera camera = sideCamera();
    // Columns r, u, -f; translation (-r.eye, -u.eye, f.eye) = (0, 0, -3).
    koLinear::AffineMatrix w2e;
    camera.getWorldToEye(w2e);
    EXPECT_EQ(w2e, koLinear::AffineMatrix({0, 0, 1}, {1, 0, 0}, {0, 1, 0}, {0, 0, -3}));
    EXPECT_TRUE(camera.getUpVector() == koLinear::Normal(0, 0, 1) &&
                camera.getEyeLocation() == P(3, 0, 0));
    // W · P: row 0 of W picks P's row 2, row 1 P's row 0, row 2 P's row 1, and row 3 is
    // -3 (P's row 2) + P's row 3 = (0, 0, 303/99 - 200/99, 3).
    koLinear::ProjMatrix m, back;
    camera.getWorldToClip(m);
    expectMatrix(m, {0, 0, -101.0 / 99, -1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 103.0 / 99, 3});
    // Then the viewport, scale (100, 50, 0.5) and offset (100, 50, 0.5):
    // row 0 = (0 - 100, 0 - 50, -101/198 - 0.5, -1), row 3 = (300, 150, 103/198 + 1.5, 3).
    camera.getWorldToViewport(m);
    expectMatrix(m,
                 {-100, -50, -100.0 / 99, -1, 100, 0, 0, 0, 0, 50, 0, 0, 300, 150, 200.0 / 99, 3});
    camera.getViewportToWorld(back);
    koGeomTest::expectInverses(m, back);
}

TEST(Camera, ProjectsAndUnprojects) {
    const Camera camera = sideCamera();
    // (0, 1, 0.5) is eye (1, 0.5, -3): normalised (1/3, 1/6), pixels (100 + 100/3, 50 + 50/6).
    const P p(0, 1, 0.5);
    P out, again;
    ASSERT_TRUE(camera.project(p, out));
    EXPECT_NEAR(out.x, 100 + 100.0 / 3, 1e-12);
    EXPECT_NEAR(out.y, 50 + 50.0 / 6, 1e-12);
    EXPECT_NEAR(camera.getWorldPointToViewport(p).y, 100 - out.y, 1e-12); // rows from the top
    camera.getWorldSpacePoint({out.x, out.y}, out.z, again);
    EXPECT_TRUE(equivalent(again, p, 1e-9));
    koLinear::Line ray;
    camera.getWorldSpaceRay(koLinear::Point2(out.x, out.y), ray);
    EXPECT_EQ(ray.origin, P(3, 0, 0));
    EXPECT_LT(distance(p, ray), 1e-12);
    // Behind the eye: false and untouched. Deliberate: orthographic fills it all the same and
    // still says false.
    P untouched(7, 7, 7);
    EXPECT_FALSE(camera.project({5, 0, 0}, untouched));
    EXPECT_EQ(untouched, P(7, 7, 7));
    Camera ortho = camera;
    EyeSpaceFrustum frustum;
    frustum.setOrthographic(true);
    ortho.setFrustum(frustum);
    EXPECT_FALSE(ortho.project({0, 5, 0}, untouched)); // x = 5 beyond the frame's 1
    EXPECT_NEAR(untouched.x, 100 + 5 * 100, 1e-9);
    ortho.getWorldSpaceRay(koLinear::Tuple2(1.0, 0.5), ray); // right edge, from the near plane
    EXPECT_TRUE(equivalent(ray.origin, P(2, 1, 0), 1e-12));
    EXPECT_EQ(ray.direction, koLinear::Normal(-1, 0, 0));
}

TEST(Camera, DeliberatePickingUsesTheClosedFrustum) {
    Camera camera = sideCamera();
    camera.setOpenFrustum(true);
    koLinear::ProjMatrix pick, byPoint;
    // Square of half-side 100 about the centre: x scale 200/200, y scale 100/200. Deliberate:
    // m32 is the closed 103/99 although the camera's own projection is open.
    camera.getPickMatrix(koLinear::Point2(100, 50), pick, 100.0);
    expectMatrix(pick, {0, 0, -101.0 / 99, -1, 1, 0, 0, 0, 0, 0.5, 0, 0, 0, 0, 103.0 / 99, 3});
    camera.setMinimumPickRadius(2.0); // coinciding corners: a point pick of radius 1 + 2
    camera.getPickMatrix(koLinear::Range2d({30, 40}, {30, 40}), pick);
    camera.getPickMatrix(koLinear::Point2(30, 40), byPoint, 1.0);
    EXPECT_EQ(pick, byPoint);
}

TEST(Camera, DepthsPlanesPixelMeasuresAndFittedDepths) {
    Camera camera = sideCamera();
    EXPECT_TRUE(camera.pointInFrontOfCamera({3, 9, 9})); // in the eye's plane
    EXPECT_EQ(camera.screenDepthAtPoint({3, 9, 9}), 0.0);
    EXPECT_EQ(camera.screenDepthAtPoint({3.5, 0, 0}) + camera.screenDepthAtPoint({-2, 9, 0}), 4.0);
    koLinear::ParamPlane far; // eye origin (-100, -100, -100) taken to the world
    camera.getScreenAlignedFarPlane(far);
    EXPECT_EQ(far, koLinear::ParamPlane({-97, -100, -100}, {1, 0, 0}, {0, 200, 0}, {0, 0, 200}));
    double dist = 0.0; // eye x 1 and 0 at depth 3: 1/3 of the half-width of 100 pixels
    EXPECT_TRUE(camera.pixelDistance({0, 1, 0}, {0, 0, 0}, dist));
    EXPECT_NEAR(dist, 100.0 / 3, 1e-12);
    EXPECT_FALSE(camera.pixelDistance({0, 9, 0}, {0, 0, 0}, dist));
    EXPECT_EQ(dist, std::numeric_limits<double>::max());
    EXPECT_DOUBLE_EQ(camera.pixelScaleForDepth(5.0, 10.0), 1.0); // 10/100 of height 2 * 5

    camera = Camera(); // looking down -z: the box spans depths 10 to 20, kept by 1% each way
    const float min[3] = {-1, -1, -20}, max[3] = {1, 1, -10}, behind[3] = {1, 1, 5};
    camera.setNearFar(BoundingBox(min, max));
    EyeSpaceFrustum frustum;
    camera.getFrustum(frustum);
    EXPECT_DOUBLE_EQ(frustum.getNearDist(), 9.9);
    EXPECT_DOUBLE_EQ(frustum.getFarDist(), 20.2);
    EXPECT_DOUBLE_EQ(frustum.getHeightAtDepth(9.9), 19.8); // the angle is kept
    camera.update();
    camera.setNearFar(BoundingBox(min, max)); // the same distances exactly: no change
    EXPECT_FALSE(camera.isDirty());
    camera.setNearFar(BoundingBox(behind, behind));
    camera.getFrustum(frustum);
    EXPECT_TRUE(frustum.getFarDist() == 1.0 && frustum.getNearDist() == 0.001);
}

// Records every signal of a camera, in order; a "?" marks a signal that passed another camera.
struct Recorder : koRTB::SignalClient {
    explicit Recorder(Camera& watched) : camera(&watched) {
        camera->cameraChanged.connect(*this, [this](Camera& c) { seen("changed", c); });
        camera->interactionChangeBegun.connect(*this, [this](Camera& c) { seen("begun", c); });
        camera->interactionChangeEnded.connect(*this, [this](Camera& c) { seen("ended", c); });
    }
    void seen(const std::string& what, const Camera& c) {
        log.push_back(&c == camera ? what : what + "?");
    }
    Camera* camera;
    std::vector<std::string> log;
};

TEST(Camera, AnnouncesChangesOnUpdateAndInteractions) {
    using Log = std::vector<std::string>;
    Camera camera;
    Recorder recorder(camera);
    camera.setViewport(Viewport()); // none of these changes anything
    camera.setFrustum(EyeSpaceFrustum());
    camera.setOpenFrustum(false);
    camera.setMinimumPickRadius(3.0);
    camera.update();
    EXPECT_EQ(recorder.log, Log{});
    camera.beginInteraction();
    camera.setOpenFrustum(true);
    camera.update();
    camera.setWorldToEye(koLinear::AffineMatrix(1.0));
    camera.endInteraction(); // updates first
    camera.beginInteraction();
    camera.endInteraction(); // no change: neither begun nor ended
    camera.setFrustum(AngleAspect());
    camera.update();
    EXPECT_EQ(recorder.log, (Log{"begun", "changed", "changed", "ended", "changed"}));

    // Within tolerance neither is dirty, but a frustum is copied all the same.
    EyeSpaceFrustum nearlySame, kept;
    camera.getFrustum(nearlySame);
    nearlySame.setDepthRange(1.0 + 1e-11, 100.0, false);
    camera.setFrustum(nearlySame);
    Viewport nearlyDefault, unchanged;
    nearlyDefault.setSize(1.0 + 1e-11, 1.0);
    camera.setViewport(nearlyDefault);
    camera.getFrustum(kept);
    camera.getViewport(unchanged);
    EXPECT_FALSE(camera.isDirty());
    EXPECT_TRUE(kept.getNearDist() == 1.0 + 1e-11 && unchanged.getAspectRatio() == 1.0);

    Camera other = sideCamera(); // copies take no listeners; the pick radius is not compared
    other = camera;
    other.setMinimumPickRadius(4.0);
    EXPECT_EQ(other.cameraChanged.numConnections() + Camera(camera).cameraChanged.numConnections(),
              0);
    EXPECT_TRUE(other.equivalent(camera) && camera.clone()->equivalent(camera));
    other.setOpenFrustum(false);
    EXPECT_FALSE(other.equivalent(camera));
    other = camera;
    other.setWorldToEye(koLinear::AffineMatrix::makeTranslation({0, 0, 1e-9}));
    EXPECT_FALSE(other.equivalent(camera));
}

TEST(Camera, PrintsItselfAndItsPartsWordForWord) {
    Camera camera = sideCamera();
    camera.setWorldToEye(
        koLinear::AffineMatrix({0, 0, 1}, {1, 0, 0}, {0, 1, 0}, {0.5, -0.25, 1.0 / 3}));
    Viewport viewport;
    viewport.setOrigin(10.0, 20.0);
    viewport.setSize(200.0, 100.0);
    viewport.setDepthRange(0.2, 1.0);
    camera.setViewport(viewport);
    EyeSpaceFrustum frustum;
    frustum.setFrame({-1.0, -2.0}, {3.0, 2.0});
    frustum.setDepthRange(2.0, 10.0, false);
    camera.setFrustum(frustum);
    const std::string lens = "  aov 0.960\n  asp 1.000\n  nea 1.000\n  far 100.000\n";
    const std::pair<std::function<void(koOS::DebugChannel&)>, std::string> cases[] = {
        {[&](auto& c) { camera.debugPrint(c, nullptr); },
         "unnamed Camera is\n"
         "unnamed Viewport is\n  origin 10.00 20.00\n  size   200.00 100.00\n  range  0.20 1.00\n"
         "unnamed frustum is\n  top 2.000\n  bot -2.000\n  lef -1.000\n  rig 3.000\n"
         "  nea 2.000\n  far 10.000\n"
         "w2e Matrix is\n"
         "  0.000000000000 0.000000000000 1.000000000000\n"
         "  1.000000000000 0.000000000000 0.000000000000\n"
         "  0.000000000000 1.000000000000 0.000000000000\n"
         "  0.500000000000 -0.250000000000 0.333333333333\n"},
        // Deliberate: the lens's second heading takes the name as given, null or not.
        {[](auto& c) { AngleAspect().debugPrint(c, "cam"); },
         "cam AngleAspect is\ncam lens is\n" + lens},
        {[](auto&) { AngleAspect().debugPrint(); }, // the library's channel by default
         "unnamed AngleAspect is\n(null) lens is\n" + lens},
    };
    for (const auto& [print, text] : cases) EXPECT_EQ(koGeomTest::printedText(print), text);
    EXPECT_EQ(koGeomTest::printedText([&](auto& c) { camera.debugPrint(c, "main"); }, false), "");
}

} // namespace
} // namespace koGeom

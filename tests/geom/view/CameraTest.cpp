#include "geom/view/Camera.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "geom/entity/LibraryDebugChannel.h"
#include "tests/geom/view/ExpectMatrix.h"

namespace koGeom {
namespace {

using koGeomTest::expectInverses;
using koGeomTest::expectMatrix;

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

TEST(Camera, DefaultAndLookAt) {
    const Camera plain;
    EXPECT_EQ(plain.getViewVector(), koLinear::Normal(0, 0, -1));
    EXPECT_EQ(plain.getUpVector(), koLinear::Normal(0, 1, 0));
    EXPECT_EQ(plain.getEyeLocation(), koLinear::Point());

    Camera front;
    front.setWorldToEye({0, 0, 0}, {0, 0, 5}, koLinear::Normal::unitY());
    EXPECT_EQ(front.getEyeLocation(), koLinear::Point(0, 0, 5));
    EXPECT_EQ(front.getRightVector(), koLinear::Normal(1, 0, 0));
    EXPECT_EQ(front.screenDepthAtPoint({0, 0, 0}), 5.0);

    // Columns r, u, -f; translation (-r.eye, -u.eye, f.eye) = (0, 0, -3).
    const Camera side = sideCamera();
    koLinear::AffineMatrix m;
    side.getWorldToEye(m);
    EXPECT_EQ(m, koLinear::AffineMatrix({0, 0, 1}, {1, 0, 0}, {0, 1, 0}, {0, 0, -3}));
    EXPECT_EQ(side.getRightVector(), koLinear::Normal(0, 1, 0));
    EXPECT_EQ(side.getUpVector(), koLinear::Normal(0, 0, 1));
    EXPECT_EQ(side.getViewVector(), koLinear::Normal(-1, 0, 0));
    EXPECT_EQ(side.getEyeLocation(), koLinear::Point(3, 0, 0));
    EXPECT_EQ(side.distanceToPoint({0, 4, 0}), 5.0);
}

TEST(Camera, MatrixChainElementByElement) {
    const Camera camera = sideCamera();
    koLinear::ProjMatrix m;
    // Rows of W · P: row 0 of W picks P's row 2, row 1 P's row 0, row 2 P's row 1, and row 3
    // is -3 (P's row 2) + P's row 3 = (0, 0, 303/99 - 200/99, 3).
    camera.getWorldToClip(m);
    expectMatrix(m, {0, 0, -101.0 / 99, -1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 103.0 / 99, 3});
    // Then the viewport, scale (100, 50, 0.5) and offset (100, 50, 0.5):
    // row 0 = (0 - 100, 0 - 50, -101/198 - 0.5, -1), row 3 = (300, 150, 103/198 + 1.5, 3).
    camera.getWorldToViewport(m);
    expectMatrix(m,
                 {-100, -50, -100.0 / 99, -1, 100, 0, 0, 0, 0, 50, 0, 0, 300, 150, 200.0 / 99, 3});
    koLinear::ProjMatrix back;
    camera.getViewportToWorld(back);
    expectInverses(m, back);
    camera.getEyeToClip(m);
    EXPECT_EQ(m(2, 3), -1.0);
}

TEST(Camera, ProjectsAndUnprojects) {
    const Camera camera = sideCamera();
    // (0, 1, 0.5) is eye (1, 0.5, -3): normalised (1/3, 1/6), pixels (100 + 100/3, 50 + 50/6).
    const koLinear::Point p(0, 1, 0.5);
    koLinear::Point out;
    ASSERT_TRUE(camera.project(p, out));
    EXPECT_NEAR(out.x, 100 + 100.0 / 3, 1e-12);
    EXPECT_NEAR(out.y, 50 + 50.0 / 6, 1e-12);
    const koLinear::Point2 rows = camera.getWorldPointToViewport(p); // rows from the top
    EXPECT_NEAR(rows.x, out.x, 1e-12);
    EXPECT_NEAR(rows.y, 100 - out.y, 1e-12);

    koLinear::Point again;
    camera.getWorldSpacePoint({out.x, out.y}, out.z, again);
    EXPECT_TRUE(equivalent(again, p, 1e-9));
    koLinear::Line ray;
    camera.getWorldSpaceRay(koLinear::Point2(out.x, out.y), ray);
    EXPECT_EQ(ray.origin, koLinear::Point(3, 0, 0));
    EXPECT_LT(distance(p, ray), 1e-12);
    koLinear::Vector direction;
    camera.getWorldSpaceRay(p, direction);
    EXPECT_EQ(direction, koLinear::Vector(-3, 1, 0.5));

    // Behind the eye: false and untouched. Deliberate: orthographic fills it all the same and
    // still says false.
    koLinear::Point untouched(7, 7, 7);
    EXPECT_FALSE(camera.project({5, 0, 0}, untouched));
    EXPECT_EQ(untouched, koLinear::Point(7, 7, 7));
    Camera ortho = camera;
    EyeSpaceFrustum frustum;
    frustum.setOrthographic(true);
    ortho.setFrustum(frustum);
    EXPECT_FALSE(ortho.project({0, 5, 0}, untouched)); // x = 5 beyond the frame's 1
    EXPECT_NEAR(untouched.x, 100 + 5 * 100, 1e-9);
    ortho.getWorldSpaceRay(koLinear::Tuple2(1.0, 0.5), ray); // right edge, from the near plane
    EXPECT_TRUE(equivalent(ray.origin, koLinear::Point(2, 1, 0), 1e-12));
    EXPECT_EQ(ray.direction, koLinear::Normal(-1, 0, 0));
}

TEST(Camera, DeliberateRaysIgnoreAnOffCentreFrame) {
    // Deliberate: rays come from the centred near section, so the viewport's centre pixel
    // looks down the view axis although this frame is shifted to x 0..2.
    Camera camera = sideCamera();
    EyeSpaceFrustum frustum;
    frustum.setFrame({0, -1}, {2, 1});
    camera.setFrustum(frustum);
    koLinear::Line ray;
    camera.getWorldSpaceRay(koLinear::Point2(100, 50), ray);
    EXPECT_EQ(ray.direction, camera.getViewVector());
    koLinear::Point centre;
    ASSERT_TRUE(camera.project({0, 0, 0}, centre));
    EXPECT_NEAR(centre.x, 0.0, 1e-12); // projection does use the shift
}

TEST(Camera, DeliberatePickingUsesTheClosedFrustum) {
    Camera camera = sideCamera();
    camera.setOpenFrustum(true);
    koLinear::ProjMatrix pick, worldToClip;
    camera.getPickMatrix(koLinear::Point2(100, 50), pick, 100.0); // 200 x 200: x scale 1
    camera.getWorldToClip(worldToClip);
    EXPECT_NE(pick(3, 2), worldToClip(3, 2));
    EXPECT_NEAR(pick(3, 2), 103.0 / 99, 1e-12); // the closed value
    // y: 100 / 200 = 0.5, as a half-size view.
    expectMatrix(pick, {0, 0, -101.0 / 99, -1, 1, 0, 0, 0, 0, 0.5, 0, 0, 0, 0, 103.0 / 99, 3});
}

TEST(Camera, PickMatricesSelectThePixelSquare) {
    Camera camera = sideCamera();
    camera.setMinimumPickRadius(1.0);
    koLinear::Point at;
    const koLinear::Point p(0, 1, 0.5);
    ASSERT_TRUE(camera.project(p, at));
    koLinear::ProjMatrix pick;
    // Radius 2 + 1: p, 2.5 pixels to the side of the centre, is in; 3.5 pixels is out.
    camera.getPickMatrix(koLinear::Point2(at.x + 2.5, at.y), pick, 2.0);
    EXPECT_TRUE((koLinear::HPoint(p) * pick).insideView(true));
    camera.getPickMatrix(koLinear::Point2(at.x, at.y - 3.5), pick, 2.0);
    EXPECT_FALSE((koLinear::HPoint(p) * pick).insideView(true));
    // Coinciding corners: a point pick of radius 1 + the minimum.
    koLinear::ProjMatrix byPoint;
    camera.getPickMatrix(koLinear::Range2d({at.x, at.y}, {at.x, at.y}), pick);
    camera.getPickMatrix(koLinear::Point2(at.x, at.y), byPoint, 1.0);
    EXPECT_EQ(pick, byPoint);
    camera.getPickMatrix(koLinear::Range2d({at.x - 4, at.y - 1}, {at.x + 4, at.y + 1}), pick);
    EXPECT_TRUE((koLinear::HPoint(p) * pick).insideView(true));
}

TEST(Camera, PlanesDepthsAndPixelScales) {
    const Camera camera = sideCamera();
    koLinear::ParamPlane plane; // eye (-1, -1, -1), edges 2x, 2y mapped to the world
    camera.getScreenAlignedNearPlane(plane);
    EXPECT_EQ(plane.origin, koLinear::Point(2, -1, -1));
    EXPECT_EQ(plane.uEdge, koLinear::Vector(0, 2, 0));
    EXPECT_EQ(plane.normal, koLinear::Normal(1, 0, 0));
    camera.getScreenAlignedFarPlane(plane);
    EXPECT_EQ(plane.origin, koLinear::Point(-97, -100, -100));

    EXPECT_TRUE(camera.pointInFrontOfCamera({3, 9, 9})); // in the eye's plane
    EXPECT_EQ(camera.screenDepthAtPoint({3, 9, 9}), 0.0);
    EXPECT_FALSE(camera.pointInFrontOfCamera({3.5, 0, 0}));
    EXPECT_EQ(camera.screenDepthAtPoint({3.5, 0, 0}), -1.0);

    double dist = 0.0; // eye y 1 and 0 at depth 3: 1/3 of the half-width of 100 pixels
    EXPECT_TRUE(camera.pixelDistance({0, 1, 0}, {0, 0, 0}, dist));
    EXPECT_NEAR(dist, 100.0 / 3, 1e-12);
    EXPECT_FALSE(camera.pixelDistance({0, 9, 0}, {0, 0, 0}, dist));
    EXPECT_EQ(dist, std::numeric_limits<double>::max());
    // Height 2 d at depth d over 100 pixels.
    EXPECT_DOUBLE_EQ(camera.pixelScaleForDepth(5.0, 10.0), 1.0);
    EXPECT_EQ(camera.pixelScaleOrtho(), 0.0);
}

TEST(Camera, FitsNearAndFarToABox) {
    Camera camera; // looking down -z: the box spans depths 10 to 20
    const float min[3] = {-1, -1, -20}, max[3] = {1, 1, -10};
    camera.setNearFar(BoundingBox(min, max));
    EyeSpaceFrustum frustum;
    camera.getFrustum(frustum);
    EXPECT_DOUBLE_EQ(frustum.getNearDist(), 9.9);
    EXPECT_DOUBLE_EQ(frustum.getFarDist(), 20.2);
    EXPECT_DOUBLE_EQ(frustum.getHeightAtDepth(9.9), 19.8); // the angle is kept
    EXPECT_TRUE(camera.isDirty());
    camera.update();
    camera.setNearFar(BoundingBox(min, max)); // the same distances: no change
    EXPECT_FALSE(camera.isDirty());

    const float behindMin[3] = {-1, -1, 5}, behindMax[3] = {1, 1, 6};
    camera.setNearFar(BoundingBox(behindMin, behindMax));
    camera.getFrustum(frustum);
    EXPECT_EQ(frustum.getFarDist(), 1.0);
    EXPECT_EQ(frustum.getNearDist(), 0.001);
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
    Camera camera;
    Recorder recorder(camera);
    using Log = std::vector<std::string>;

    camera.update(); // clean: nothing
    camera.setViewport(Viewport());
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
    EXPECT_EQ(recorder.log, (Log{"begun", "changed", "changed", "ended"}));

    recorder.log.clear();
    camera.beginInteraction();
    camera.endInteraction(); // no change: neither begun nor ended
    camera.setFrustum(AngleAspect());
    camera.update();
    EXPECT_EQ(recorder.log, Log{"changed"});

    // Within tolerance: a frustum is copied all the same, a viewport is not; neither is dirty.
    EyeSpaceFrustum nearlySame;
    camera.getFrustum(nearlySame);
    nearlySame.setDepthRange(1.0 + 1e-11, 100.0, false);
    camera.setFrustum(nearlySame);
    Viewport nearlyDefault;
    nearlyDefault.setSize(1.0 + 1e-11, 1.0);
    camera.setViewport(nearlyDefault);
    EXPECT_FALSE(camera.isDirty());
    EyeSpaceFrustum kept;
    camera.getFrustum(kept);
    EXPECT_EQ(kept.getNearDist(), 1.0 + 1e-11);
    Viewport unchanged;
    camera.getViewport(unchanged);
    EXPECT_EQ(unchanged.getAspectRatio(), 1.0);

    const Camera copy(camera); // the copy has no listeners
    Camera assigned;
    assigned = camera;
    EXPECT_EQ(copy.cameraChanged.numConnections(), 0);
    EXPECT_EQ(assigned.cameraChanged.numConnections(), 0);
    EXPECT_EQ(camera.cameraChanged.numConnections(), 1);
    EXPECT_TRUE(camera.clone()->equivalent(camera));
}

TEST(Camera, EquivalenceIgnoresTheInverseAndThePickRadius) {
    const Camera a = sideCamera();
    Camera b = a;
    b.setMinimumPickRadius(4.0);
    EXPECT_TRUE(a.equivalent(b));
    b.setOpenFrustum(true);
    EXPECT_FALSE(a.equivalent(b));
    b = a;
    b.setWorldToEye({0, 0, 0}, {3, 0, 1e-9}, koLinear::Normal::unitZ());
    EXPECT_FALSE(a.equivalent(b));
}

TEST(Camera, PrintsItsPartsAndTheWorldToEyeMatrix) {
    koOS::DebugChannel& channel = debugChannel();
    std::string printed;
    channel.setSink([&printed](std::string_view text) { printed += text; });
    channel.setEnabled(true);
    Camera camera = sideCamera();
    camera.setWorldToEye(
        koLinear::AffineMatrix({0, 0, 1}, {1, 0, 0}, {0, 1, 0}, {0.5, -0.25, 1.0 / 3}));
    camera.debugPrint(channel, "main");
    channel.setEnabled(false);
    channel.setSink(nullptr);
    EXPECT_EQ(printed,
              "main Camera is\n"
              "main Viewport is\n  origin 0.00 0.00\n  size   200.00 100.00\n  range  0.00 1.00\n"
              "main frustum is\n  top 1.000\n  bot -1.000\n  lef -1.000\n  rig 1.000\n"
              "  nea 1.000\n  far 100.000\n"
              "w2e Matrix is\n"
              "  0.000000000000 0.000000000000 1.000000000000\n"
              "  1.000000000000 0.000000000000 0.000000000000\n"
              "  0.000000000000 1.000000000000 0.000000000000\n"
              "  0.500000000000 -0.250000000000 0.333333333333\n");
}

} // namespace
} // namespace koGeom

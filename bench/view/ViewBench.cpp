// Projecting ten million points to the screen through a camera, beside glm doing the same in
// float in the same run.
//
// Two pairs, each run side by side in every iteration:
// - cameraProjectVsGlm: `Camera::project` (clip-space test, division, viewport transform)
//   against `glm::project` with the same model-view and projection matrices.
// - worldToViewportVsGlm: the camera's world-to-viewport matrix applied in a loop (product and
//   division by w) against glm's mat4 · vec4 product and division with the same matrix.
// Both sides read the same float points, as meshes store their vertices; the camera widens
// each to double and works in double, glm works in float. The time reported is the camera's;
// "vs_glm" is its total divided by glm's, and "max_diff_px" the largest difference in pixels
// between the two results over the points in view, checked before timing.

#include <benchmark/benchmark.h>

#include <glm/glm.hpp>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtc/type_ptr.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <random>
#include <vector>

#include "tessar/linear/PointFlt.h"

#include "geom/view/Camera.h"

namespace {

constexpr int numPoints = 10000000;
constexpr double width = 1920.0;
constexpr double height = 1080.0;
// Float results agree with double ones to a small fraction of a pixel.
constexpr double tolerancePx = 0.01;

struct Scene {
    koGeom::Camera camera;
    std::vector<koLinear::PointFlt> points;
    std::vector<glm::vec3> pointsFlt;
    std::vector<koLinear::Point> out;
    std::vector<glm::vec3> outFlt;
    glm::mat4 modelView{1.0f};
    glm::mat4 projection{1.0f};
    glm::mat4 worldToViewport{1.0f};
    glm::vec4 viewport{0.0f, 0.0f, static_cast<float>(width), static_cast<float>(height)};
};

// glm multiplies column vectors with column-major storage: the transpose of a row-vector
// matrix stored by rows, which is the same sixteen values in the same order.
glm::mat4 toGlm(const koLinear::ProjMatrix& m) { return glm::make_mat4(m.data()); }

Scene& scene() {
    static Scene s = [] {
        Scene s;
        s.camera.setWorldToEye({0, 0, 0}, {4, -10, 6}, koLinear::Normal::unitZ());
        koGeom::Viewport viewport;
        viewport.setSize(width, height);
        s.camera.setViewport(viewport);
        koGeom::AngleAspect lens;
        lens.setAspectRatio(width / height);
        lens.setDepthRange(1.0, 50.0);
        s.camera.setFrustum(lens);

        // Points in a cube about the target, mostly in view.
        std::mt19937 random(20261122);
        std::uniform_real_distribution<double> coordinate(-4.0, 4.0);
        s.points.resize(numPoints);
        s.pointsFlt.resize(numPoints);
        for (int i = 0; i < numPoints; ++i) {
            const glm::vec3 p(static_cast<float>(coordinate(random)),
                              static_cast<float>(coordinate(random)),
                              static_cast<float>(coordinate(random)));
            s.pointsFlt[i] = p;
            s.points[i] = {p.x, p.y, p.z};
        }
        s.out.resize(numPoints);
        s.outFlt.resize(numPoints);

        koLinear::AffineMatrix worldToEye;
        s.camera.getWorldToEye(worldToEye);
        s.modelView = toGlm(koLinear::ProjMatrix(worldToEye));
        koLinear::ProjMatrix m;
        s.camera.getEyeToClip(m);
        s.projection = toGlm(m);
        s.camera.getWorldToViewport(m);
        s.worldToViewport = toGlm(m);
        return s;
    }();
    return s;
}

int cameraProject(Scene& s) {
    const koGeom::Camera& camera = s.camera;
    const koLinear::PointFlt* in = s.points.data();
    koLinear::Point* out = s.out.data();
    int inside = 0;
    for (int i = 0; i < numPoints; ++i) {
        inside += camera.project(koLinear::Point(in[i]), out[i]);
    }
    return inside;
}

// Each side holds its matrices in locals, so that the stores of the results cannot be taken
// to change them and they stay in registers.
void glmProject(Scene& s) {
    const glm::mat4 modelView = s.modelView;
    const glm::mat4 projection = s.projection;
    const glm::vec4 viewport = s.viewport;
    const glm::vec3* in = s.pointsFlt.data();
    glm::vec3* out = s.outFlt.data();
    for (int i = 0; i < numPoints; ++i) {
        out[i] = glm::project(in[i], modelView, projection, viewport);
    }
}

void matrixLoop(Scene& s, const koLinear::ProjMatrix m) {
    const koLinear::PointFlt* in = s.points.data();
    koLinear::Point* out = s.out.data();
    for (int i = 0; i < numPoints; ++i) {
        out[i] = (koLinear::HPoint(koLinear::Point(in[i])) * m).dehomogenize();
    }
}

void glmMatrixLoop(Scene& s) {
    const glm::mat4 m = s.worldToViewport;
    const glm::vec3* in = s.pointsFlt.data();
    glm::vec3* out = s.outFlt.data();
    for (int i = 0; i < numPoints; ++i) {
        const glm::vec4 h = m * glm::vec4(in[i], 1.0f);
        out[i] = glm::vec3(h) / h.w;
    }
}

// The largest pixel difference between the two results over the points in view.
double maxDifference(Scene& s) {
    double worst = 0.0;
    for (int i = 0; i < numPoints; ++i) {
        koLinear::Point unused;
        if (!s.camera.project(koLinear::Point(s.points[i]), unused)) {
            continue;
        }
        worst = std::max(
            {worst, std::fabs(s.out[i].x - s.outFlt[i].x), std::fabs(s.out[i].y - s.outFlt[i].y)});
    }
    return worst;
}

template <class Work>
double seconds(Work&& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    benchmark::ClobberMemory();
    return elapsed.count();
}

template <class Ours, class Theirs>
void sideBySide(benchmark::State& state, Ours&& ours, Theirs&& theirs) {
    Scene& s = scene();
    ours();
    theirs();
    const double diff = maxDifference(s);
    if (!(diff < tolerancePx)) {
        state.SkipWithError("the camera and glm disagree");
        return;
    }
    double oursTotal = 0.0;
    double glmTotal = 0.0;
    for (auto _ : state) {
        const double t = seconds(ours);
        glmTotal += seconds(theirs);
        oursTotal += t;
        state.SetIterationTime(t);
    }
    const double iterations = static_cast<double>(state.iterations());
    state.SetItemsProcessed(state.iterations() * numPoints);
    state.counters["glm_ms"] = 1e3 * glmTotal / iterations;
    state.counters["vs_glm"] = oursTotal / glmTotal;
    state.counters["max_diff_px"] = diff;
}

void cameraProjectVsGlm(benchmark::State& state) {
    int inside = 0;
    sideBySide(
        state, [&] { inside = cameraProject(scene()); }, [] { glmProject(scene()); });
    state.counters["in_view"] = inside;
}
BENCHMARK(cameraProjectVsGlm)->UseManualTime()->Unit(benchmark::kMillisecond);

void worldToViewportVsGlm(benchmark::State& state) {
    koLinear::ProjMatrix m;
    scene().camera.getWorldToViewport(m);
    sideBySide(
        state, [&] { matrixLoop(scene(), m); }, [] { glmMatrixLoop(scene()); });
}
BENCHMARK(worldToViewportVsGlm)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

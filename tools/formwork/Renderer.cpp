#include "tools/formwork/Renderer.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tessar/linear/Angle.h"
#include "tessar/linear/HPoint.h"
#include "tessar/linear/Normal.h"
#include "tessar/linear/ProjMatrix.h"

#include "geom/spatial/BoundingBox.h"
#include "geom/view/AngleOfView.h"
#include "geom/view/Viewport.h"

namespace formworkTool {

namespace {

constexpr double angleOfViewDegrees = 30.0;
constexpr float clay[3] = {0.80f, 0.77f, 0.72f};
constexpr float lineColour[3] = {0.12f, 0.13f, 0.16f};

struct Colour {
    float r, g, b;
};

// A vertex in the viewport: pixels (y up), window depth, and 1 / w for perspective-correct
// interpolation; w ≤ 0 (behind the eye) marks it unusable.
struct ScreenVertex {
    double x, y, z, invW;
    bool usable;
};

// Colour and depth of the supersampled picture.
class Canvas {
public:
    Canvas(int width, int height)
        : width_(width),
          height_(height),
          colour_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)),
          depth_(colour_.size(), std::numeric_limits<float>::infinity()) {
        // A soft vertical gradient, lighter at the top.
        for (int y = 0; y < height; ++y) {
            const float t = static_cast<float>(y) / static_cast<float>(std::max(1, height - 1));
            const Colour c{0.97f - 0.10f * t, 0.97f - 0.08f * t, 0.98f - 0.05f * t};
            std::fill_n(&colour_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width)],
                        width, c);
        }
    }

    int width() const { return width_; }
    int height() const { return height_; }

    // Writes the colour when `depth` passes the depth test (nearer, or within `slack` of the
    // nearest for lines drawn over their own surface).
    void plot(int x, int y, float depth, const Colour& c, float slack = 0.0f) {
        if (x < 0 || y < 0 || x >= width_ || y >= height_) {
            return;
        }
        // Viewport rows count up from the bottom; the picture's from the top.
        const std::size_t i = static_cast<std::size_t>(height_ - 1 - y) * width_ + x;
        if (depth < depth_[i] || (slack > 0.0f && depth <= depth_[i] + slack)) {
            depth_[i] = std::min(depth, depth_[i]);
            colour_[i] = c;
        }
    }

    // Averages each factor × factor block into one pixel of the picture.
    Image downsample(int factor) const {
        Image image;
        image.width = width_ / factor;
        image.height = height_ / factor;
        image.rgb.resize(3 * static_cast<std::size_t>(image.width) * image.height);
        const float scale = 255.0f / static_cast<float>(factor * factor);
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                float sum[3] = {0.0f, 0.0f, 0.0f};
                for (int dy = 0; dy < factor; ++dy) {
                    for (int dx = 0; dx < factor; ++dx) {
                        const Colour& c =
                            colour_[static_cast<std::size_t>(y * factor + dy) * width_ +
                                    static_cast<std::size_t>(x * factor + dx)];
                        sum[0] += c.r;
                        sum[1] += c.g;
                        sum[2] += c.b;
                    }
                }
                std::uint8_t* out = &image.rgb[3 * (static_cast<std::size_t>(y) * image.width + x)];
                for (int k = 0; k < 3; ++k) {
                    out[k] = static_cast<std::uint8_t>(
                        std::lround(std::clamp(sum[k] * scale, 0.0f, 255.0f)));
                }
            }
        }
        return image;
    }

private:
    int width_;
    int height_;
    std::vector<Colour> colour_;
    std::vector<float> depth_;
};

// Lighting from beside the eye: a key light above and to the left of the view direction,
// two-sided, with a little ambient light and a soft highlight.
class Shader {
public:
    explicit Shader(const koGeom::Camera& camera) {
        const koLinear::Normal view = camera.getViewVector();
        const koLinear::Normal up = camera.getUpVector();
        const koLinear::Normal right = camera.getRightVector();
        koLinear::Vector light(-view.x + 0.5 * up.x - 0.4 * right.x,
                               -view.y + 0.5 * up.y - 0.4 * right.y,
                               -view.z + 0.5 * up.z - 0.4 * right.z);
        light.normalize();
        koLinear::Vector half(light.x - view.x, light.y - view.y, light.z - view.z);
        half.normalize();
        light_ = light;
        half_ = half;
    }

    Colour shade(double nx, double ny, double nz, const Colour& base) const {
        const double length = std::sqrt(nx * nx + ny * ny + nz * nz);
        double diffuse = 0.0;
        double highlight = 0.0;
        if (length > 0.0) {
            diffuse = std::fabs(nx * light_.x + ny * light_.y + nz * light_.z) / length;
            const double h = std::fabs(nx * half_.x + ny * half_.y + nz * half_.z) / length;
            highlight = 0.25 * std::pow(h, 40.0);
        } else {
            diffuse = 0.5; // no direction to light: an even middle tone
        }
        const auto lit = [&](float channel) {
            return static_cast<float>(channel * (0.22 + 0.78 * diffuse) + highlight);
        };
        return {lit(base.r), lit(base.g), lit(base.b)};
    }

private:
    koLinear::Vector light_;
    koLinear::Vector half_;
};

koGeom::BoundingBox boxOf(const MeshList& meshes) {
    koGeom::BoundingBox box;
    box.setInvalid();
    for (const ko::Reference<koGeom::CompactMesh>& mesh : meshes) {
        if (mesh->getNumVertices() > 0) {
            koGeom::BoundingBox meshBox;
            mesh->getBoundingBox(meshBox);
            box.extend(meshBox);
        }
    }
    return box;
}

// Draws a segment between two viewport points, depth interpolated along it, stepping one
// pixel along its longer axis.
void drawLine(Canvas& canvas, const ScreenVertex& a, const ScreenVertex& b, const Colour& colour) {
    if (!a.usable || !b.usable) {
        return;
    }
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    const int steps = static_cast<int>(std::ceil(std::max(std::fabs(dx), std::fabs(dy))));
    for (int i = 0; i <= steps; ++i) {
        const double t = steps == 0 ? 0.0 : static_cast<double>(i) / steps;
        const double z = a.z + (b.z - a.z) * t;
        canvas.plot(static_cast<int>(std::floor(a.x + dx * t)),
                    static_cast<int>(std::floor(a.y + dy * t)), static_cast<float>(z), colour,
                    2e-4f);
    }
}

// Fills one triangle: pixel centres inside or on its edges, depth and attributes
// interpolated with perspective correction.
void fillTriangle(Canvas& canvas, const Shader& shader, const ScreenVertex* s[3], const float* n[3],
                  const Colour c[3]) {
    if (!s[0]->usable || !s[1]->usable || !s[2]->usable) {
        return;
    }
    const double area =
        (s[1]->x - s[0]->x) * (s[2]->y - s[0]->y) - (s[2]->x - s[0]->x) * (s[1]->y - s[0]->y);
    if (area == 0.0 || !std::isfinite(area)) {
        return;
    }
    const double minX = std::min({s[0]->x, s[1]->x, s[2]->x});
    const double maxX = std::max({s[0]->x, s[1]->x, s[2]->x});
    const double minY = std::min({s[0]->y, s[1]->y, s[2]->y});
    const double maxY = std::max({s[0]->y, s[1]->y, s[2]->y});
    const int x0 = std::max(0, static_cast<int>(std::floor(minX)));
    const int x1 = std::min(canvas.width() - 1, static_cast<int>(std::ceil(maxX)));
    const int y0 = std::max(0, static_cast<int>(std::floor(minY)));
    const int y1 = std::min(canvas.height() - 1, static_cast<int>(std::ceil(maxY)));
    for (int y = y0; y <= y1; ++y) {
        const double py = y + 0.5;
        for (int x = x0; x <= x1; ++x) {
            const double px = x + 0.5;
            double b[3];
            for (int k = 0; k < 3; ++k) {
                const ScreenVertex& p = *s[(k + 1) % 3];
                const ScreenVertex& q = *s[(k + 2) % 3];
                b[k] = ((q.x - p.x) * (py - p.y) - (px - p.x) * (q.y - p.y)) / area;
            }
            if (b[0] < 0.0 || b[1] < 0.0 || b[2] < 0.0) {
                continue;
            }
            const double z = b[0] * s[0]->z + b[1] * s[1]->z + b[2] * s[2]->z;
            // Perspective-correct weights for the attributes.
            double w[3];
            double sum = 0.0;
            for (int k = 0; k < 3; ++k) {
                w[k] = b[k] * s[k]->invW;
                sum += w[k];
            }
            for (double& weight : w) {
                weight /= sum;
            }
            Colour base{0.0f, 0.0f, 0.0f};
            double normal[3] = {0.0, 0.0, 0.0};
            for (int k = 0; k < 3; ++k) {
                base.r += static_cast<float>(w[k]) * c[k].r;
                base.g += static_cast<float>(w[k]) * c[k].g;
                base.b += static_cast<float>(w[k]) * c[k].b;
                for (int i = 0; i < 3; ++i) {
                    normal[i] += w[k] * n[k][i];
                }
            }
            canvas.plot(x, y, static_cast<float>(z),
                        shader.shade(normal[0], normal[1], normal[2], base));
        }
    }
}

void drawMesh(Canvas& canvas, const Shader& shader, const koLinear::ProjMatrix& toViewport,
              const koGeom::CompactMesh& mesh, const RenderOptions& options, Progress& progress,
              double done, double share) {
    const int n = mesh.getNumVertices();
    const float* positions = mesh.getVerticesRaw();
    std::vector<ScreenVertex> screen(static_cast<std::size_t>(n));
    for (int v = 0; v < n; ++v) {
        const float* p = positions + 3 * v;
        const koLinear::HPoint h = koLinear::HPoint(koLinear::Point(p[0], p[1], p[2])) * toViewport;
        screen[static_cast<std::size_t>(v)] = {h.x / h.w, h.y / h.w, h.z / h.w, 1.0 / h.w,
                                               h.w > 0.0};
    }
    const std::vector<int> triangles = surfaceTriangles(mesh);
    std::vector<float> computedNormals;
    const float* normals = mesh.getNormalsRaw();
    if (normals == nullptr) {
        computedNormals = vertexNormals(mesh, triangles);
        normals = computedNormals.data();
    }
    const float* colours = mesh.getColoursRaw();
    const Colour plain{clay[0], clay[1], clay[2]};
    const std::size_t numTriangles = triangles.size() / 3;
    for (std::size_t t = 0; t < numTriangles; ++t) {
        const ScreenVertex* s[3];
        const float* nk[3];
        Colour c[3];
        for (int k = 0; k < 3; ++k) {
            const auto v = static_cast<std::size_t>(triangles[3 * t + static_cast<std::size_t>(k)]);
            s[k] = &screen[v];
            nk[k] = normals + 3 * v;
            c[k] = colours != nullptr
                       ? Colour{colours[4 * v], colours[4 * v + 1], colours[4 * v + 2]}
                       : plain;
        }
        fillTriangle(canvas, shader, s, nk, c);
        if ((t & 0x3FF) == 0) {
            progress.update(done + share * 0.9 * static_cast<double>(t) /
                                       static_cast<double>(numTriangles));
        }
    }
    const Colour ink{lineColour[0], lineColour[1], lineColour[2]};
    if (options.wireframe) {
        for (std::size_t t = 0; t < numTriangles; ++t) {
            for (std::size_t k = 0; k < 3; ++k) {
                drawLine(canvas, screen[static_cast<std::size_t>(triangles[3 * t + k])],
                         screen[static_cast<std::size_t>(triangles[3 * t + (k + 1) % 3])], ink);
            }
        }
    }
    std::vector<char> used(static_cast<std::size_t>(n), 0);
    for (const int v : triangles) {
        used[static_cast<std::size_t>(v)] = 1;
    }
    const int* points = mesh.getLineStripPoints();
    for (int strip = 0; strip < mesh.getNumLineStrips(); ++strip) {
        const int length = mesh.getLineStripLengths()[strip];
        for (int i = 0; i < length; ++i) {
            used[static_cast<std::size_t>(points[i])] = 1;
            if (i + 1 < length) {
                drawLine(canvas, screen[static_cast<std::size_t>(points[i])],
                         screen[static_cast<std::size_t>(points[i + 1])], ink);
            }
        }
        points += length;
    }
    for (int l = 0; l < mesh.getNumLines(); ++l) {
        const koGeom::MeshLine& line = mesh.getLines()[l];
        used[static_cast<std::size_t>(line[0])] = used[static_cast<std::size_t>(line[1])] = 1;
        drawLine(canvas, screen[static_cast<std::size_t>(line[0])],
                 screen[static_cast<std::size_t>(line[1])], ink);
    }
    // Loose vertices as square dots two pixels of the picture wide.
    const int dot = 2 * options.supersample;
    for (int v = 0; v < n; ++v) {
        const ScreenVertex& s = screen[static_cast<std::size_t>(v)];
        if (used[static_cast<std::size_t>(v)] || !s.usable) {
            continue;
        }
        const int x = static_cast<int>(std::floor(s.x)) - dot / 2;
        const int y = static_cast<int>(std::floor(s.y)) - dot / 2;
        for (int dy = 0; dy < dot; ++dy) {
            for (int dx = 0; dx < dot; ++dx) {
                canvas.plot(x + dx, y + dy, static_cast<float>(s.z), ink);
            }
        }
    }
}

} // namespace

koGeom::Camera fitCamera(const MeshList& meshes, const RenderOptions& options) {
    const koGeom::BoundingBox box = boxOf(meshes);
    double centre[3];
    box.center(centre);
    const double aspect = static_cast<double>(options.width) / options.height;
    const double halfVertical = koLinear::toRadians(angleOfViewDegrees) / 2.0;
    const double tanVertical = std::tan(halfVertical);
    const double tanHorizontal = tanVertical * aspect;
    const double azimuth = koLinear::toRadians(options.azimuth);
    const double elevation = koLinear::toRadians(options.elevation);
    const koLinear::Vector direction(std::cos(elevation) * std::sin(azimuth), std::sin(elevation),
                                     std::cos(elevation) * std::cos(azimuth));
    const koLinear::Point target(centre[0], centre[1], centre[2]);
    // Looking straight up or down, y cannot be the picture's up.
    const koLinear::Normal up = std::fabs(direction.y) > 0.999
                                    ? koLinear::Normal(0.0, 0.0, direction.y > 0 ? -1.0 : 1.0)
                                    : koLinear::Normal::unitY();
    // The camera's turn first, from an eye one unit out; then the distance at which every
    // corner of the box lies inside the lens, its sideways extent widened by 5 per cent.
    koGeom::Camera camera;
    camera.setWorldToEye(target, target + direction, up);
    const koLinear::Normal right = camera.getRightVector();
    const koLinear::Normal upward = camera.getUpVector();
    const koLinear::Normal view = camera.getViewVector();
    double distance = 0.0;
    for (int corner = 0; corner < 8; ++corner) {
        koLinear::PointFlt p;
        box.getPoint(corner, p);
        const double o[3] = {p.x - centre[0], p.y - centre[1], p.z - centre[2]};
        const auto along = [&](const koLinear::Normal& axis) {
            return o[0] * axis.x + o[1] * axis.y + o[2] * axis.z;
        };
        const double depth = along(view);
        distance = std::max({distance, 1.05 * std::fabs(along(right)) / tanHorizontal - depth,
                             1.05 * std::fabs(along(upward)) / tanVertical - depth});
    }
    if (!(distance > 0.0)) {
        distance = 1.0; // a single point: any distance shows it
    }
    camera.setWorldToEye(target, target + direction * distance, up);
    koGeom::AngleAspect lens;
    lens.setAngleOfViewRad(2.0 * halfVertical);
    lens.setAspectRatio(aspect);
    lens.setDepthRange(0.5 * distance, 2.0 * distance);
    camera.setFrustum(lens);
    koGeom::Viewport viewport;
    viewport.setSize(static_cast<double>(options.width) * options.supersample,
                     static_cast<double>(options.height) * options.supersample);
    camera.setViewport(viewport);
    camera.setNearFar(box);
    camera.update();
    return camera;
}

Image renderMeshes(const MeshList& meshes, const RenderOptions& options, Progress& progress) {
    progress.start("render");
    const koGeom::Camera camera = fitCamera(meshes, options);
    koLinear::ProjMatrix toViewport;
    camera.getWorldToViewport(toViewport);
    Canvas canvas(options.width * options.supersample, options.height * options.supersample);
    const Shader shader(camera);
    double total = 0.0;
    for (const ko::Reference<koGeom::CompactMesh>& mesh : meshes) {
        total += 1.0 + mesh->getNumTriangles();
    }
    double done = 0.0;
    for (const ko::Reference<koGeom::CompactMesh>& mesh : meshes) {
        const double share = (1.0 + mesh->getNumTriangles()) / total;
        drawMesh(canvas, shader, toViewport, *mesh, options, progress, done, share);
        done += share;
    }
    Image image = canvas.downsample(options.supersample);
    progress.finish();
    return image;
}

} // namespace formworkTool

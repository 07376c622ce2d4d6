#include "geom/view/Camera.h"

#include <algorithm>
#include <limits>

#include "tessar/linear/HPoint.h"
#include "tessar/linear/Tolerance.h"

#include "geom/view/detail/Projection.h"

namespace koGeom {

namespace {

// The margin by which fitted near and far distances are widened.
constexpr double nearFarMargin = 0.01;

} // namespace

Camera::Camera() noexcept { refreshMatrices(); }

Camera::Camera(const Camera& other) noexcept : Camera() { *this = other; }

Camera& Camera::operator=(const Camera& other) noexcept {
    if (this == &other) {
        return *this;
    }
    viewport_ = other.viewport_;
    frustum_ = other.frustum_;
    worldToEye_ = other.worldToEye_;
    eyeToWorld_ = other.eyeToWorld_;
    minimumPickRadius_ = other.minimumPickRadius_;
    openFrustum_ = other.openFrustum_;
    dirty_ = other.dirty_;
    inInteraction_ = other.inInteraction_;
    changedInInteraction_ = other.changedInInteraction_;
    worldToClip_ = other.worldToClip_;
    viewTransform_ = other.viewTransform_;
    return *this;
}

Camera::~Camera() = default;

std::unique_ptr<Camera> Camera::clone() const { return std::make_unique<Camera>(*this); }

void Camera::refreshMatrices() noexcept {
    koLinear::ProjMatrix eyeToClip;
    getEyeToClip(eyeToClip);
    worldToClip_ = koLinear::ProjMatrix(worldToEye_) * eyeToClip;
    viewport_.getViewTransform(viewTransform_);
}

void Camera::setWorldToEye(const koLinear::AffineMatrix& m) noexcept {
    worldToEye_ = m;
    eyeToWorld_ = m.inverse();
    refreshMatrices();
    setDirty();
}

void Camera::setWorldToEye(const koLinear::Point& target, const koLinear::Point& eye,
                           const koLinear::Normal& up) noexcept {
    const koLinear::Vector f = (target - eye).normalized();
    const koLinear::Vector r = cross(f, up).normalized();
    const koLinear::Vector u = cross(r, f).normalized();
    // Columns r, u and −f: eye x, y and z are the world point's components along them.
    koLinear::AffineMatrix m({r.x, u.x, -f.x}, {r.y, u.y, -f.y}, {r.z, u.z, -f.z}, {});
    m.translate(-koLinear::Vector(eye));
    setWorldToEye(m);
}

void Camera::setViewport(const Viewport& viewport) noexcept {
    if (viewport_ == viewport) {
        return;
    }
    viewport_ = viewport;
    refreshMatrices();
    setDirty();
}

void Camera::setFrustum(const EyeSpaceFrustum& frustum) noexcept {
    if (!(frustum_ == frustum)) {
        setDirty();
    }
    frustum_ = frustum;
    refreshMatrices();
}

void Camera::setFrustum(const AngleAspect& lens) noexcept {
    EyeSpaceFrustum frustum;
    lens.getEyeSpaceFrustum(frustum);
    setFrustum(frustum);
}

void Camera::setOpenFrustum(bool open) noexcept {
    if (openFrustum_ == open) {
        return;
    }
    openFrustum_ = open;
    refreshMatrices();
    setDirty();
}

void Camera::setNearFar(const BoundingBox& box) noexcept {
    double near = std::numeric_limits<double>::max();
    double far = 0.0;
    for (int i = 0; i < 8; ++i) {
        koLinear::PointFlt corner;
        box.getPoint(i, corner);
        const double d = screenDepthAtPoint(koLinear::Point(corner));
        near = std::min(near, d);
        far = std::max(far, d);
    }
    near *= 1.0 - nearFarMargin;
    far *= 1.0 + nearFarMargin;
    if (far < koLinear::epsilonTol) {
        far = 1.0;
    }
    near = std::max(near, std::max(0.001, far / 2048.0));
    if (near == frustum_.getNearDist() && far == frustum_.getFarDist()) {
        return;
    }
    frustum_.setDepthRange(near, far, true);
    refreshMatrices();
    setDirty();
}

koLinear::Point Camera::getEyeLocation() const noexcept {
    return koLinear::Point(eyeToWorld_.row(3));
}

koLinear::Normal Camera::getRightVector() const noexcept {
    const koLinear::Vector v = eyeToWorld_.row(0);
    return {v.x, v.y, v.z};
}

koLinear::Normal Camera::getUpVector() const noexcept {
    const koLinear::Vector v = eyeToWorld_.row(1);
    return {v.x, v.y, v.z};
}

koLinear::Normal Camera::getViewVector() const noexcept {
    const koLinear::Vector v = eyeToWorld_.row(2);
    return {-v.x, -v.y, -v.z};
}

double Camera::distanceToPoint(const koLinear::Point& p) const noexcept {
    return distance(getEyeLocation(), p);
}

void Camera::getEyeToClip(koLinear::ProjMatrix& m) const noexcept {
    frustum_.getMatrix(m, openFrustum_);
}

void Camera::getWorldToViewport(koLinear::ProjMatrix& m) const noexcept {
    m = worldToClip_ * koLinear::ProjMatrix(viewTransform_);
}

void Camera::getViewportToWorld(koLinear::ProjMatrix& m) const noexcept {
    getWorldToViewport(m);
    m = m.inverse();
}

void Camera::getPickMatrixImpl(const koLinear::Range2d& range,
                               koLinear::ProjMatrix& m) const noexcept {
    // Deliberate: picking always projects through the closed frustum, whatever the open flag
    // says, so that pick depths stay finite and comparable.
    koLinear::ProjMatrix eyeToClip;
    frustum_.getMatrix(eyeToClip, false);
    koLinear::AffineMatrix pick;
    viewport_.getPickTransform(range, pick);
    m = koLinear::ProjMatrix(worldToEye_) * eyeToClip * koLinear::ProjMatrix(pick);
}

void Camera::getPickMatrix(const koLinear::Point2& centre, koLinear::ProjMatrix& m,
                           double radius) const noexcept {
    const double s = radius + minimumPickRadius_;
    getPickMatrixImpl({{centre.x - s, centre.y - s}, {centre.x + s, centre.y + s}}, m);
}

void Camera::getPickMatrix(const koLinear::Range2d& range, koLinear::ProjMatrix& m) const noexcept {
    if (koLinear::equivalent(range.min, range.max, koLinear::epsilonTol)) {
        getPickMatrix(range.min, m, 1.0);
        return;
    }
    getPickMatrixImpl(range, m);
}

bool Camera::project(const koLinear::Point& p, koLinear::Point& out) const noexcept {
    const koLinear::HPoint h = koLinear::HPoint(p) * worldToClip_;
    const bool inside = h.insideView(true);
    // Deliberate: an orthographic camera fills `out` even for a point outside the view, as
    // its image is still well defined; the result still reports that it is outside.
    if (inside || frustum_.getOrthographic()) {
        out = h.dehomogenize() * viewTransform_;
    }
    return inside;
}

koLinear::Point2 Camera::getWorldPointToViewport(const koLinear::Point& p) const noexcept {
    koLinear::ProjMatrix worldToViewport;
    getWorldToViewport(worldToViewport);
    const koLinear::Point q = (koLinear::HPoint(p) * worldToViewport).dehomogenize();
    double width = 0.0;
    double height = 0.0;
    viewport_.getSize(width, height);
    return {q.x, height - q.y};
}

void Camera::getWorldSpacePoint(const koLinear::Point2& v, double depth,
                                koLinear::Point& out) const noexcept {
    koLinear::AffineMatrix toNormalised;
    viewport_.getInverseViewTransform(toNormalised);
    const koLinear::Point normalised = koLinear::Point(v.x, v.y, depth) * toNormalised;
    out = (koLinear::HPoint(normalised) * worldToClip_.inverse()).dehomogenize();
}

void Camera::getWorldSpaceRay(const koLinear::Point2& v, koLinear::Line& ray) const noexcept {
    koLinear::AffineMatrix2 toNormalised;
    viewport_.getInverseViewTransform(toNormalised);
    const koLinear::Point2 n = v * toNormalised;
    getWorldSpaceRay(koLinear::Tuple2((n.x + 1.0) * 0.5, (n.y + 1.0) * 0.5), ray);
}

void Camera::getWorldSpaceRay(const koLinear::Tuple2& t, koLinear::Line& ray) const noexcept {
    koLinear::ParamPlane near;
    getScreenAlignedNearPlane(near);
    const koLinear::Point q = near.eval(t.x, t.y);
    if (frustum_.getOrthographic()) {
        ray = {q, getViewVector()};
        return;
    }
    const koLinear::Point eye = getEyeLocation();
    ray = {eye, koLinear::Normal(q - eye)};
}

void Camera::getWorldSpaceRay(const koLinear::Point& p,
                              koLinear::Vector& direction) const noexcept {
    direction =
        frustum_.getOrthographic() ? koLinear::Vector(getViewVector()) : p - getEyeLocation();
}

void Camera::getScreenAlignedNearPlane(koLinear::ParamPlane& plane) const noexcept {
    getScreenAlignedPlaneAtDepth(frustum_.getNearDist(), plane);
}

void Camera::getScreenAlignedFarPlane(koLinear::ParamPlane& plane) const noexcept {
    getScreenAlignedPlaneAtDepth(frustum_.getFarDist(), plane);
}

void Camera::getScreenAlignedPlaneAtDepth(double d, koLinear::ParamPlane& plane) const noexcept {
    frustum_.getPlaneAtDepth(d, plane);
    plane.transform(eyeToWorld_);
}

bool Camera::pointInFrontOfCamera(const koLinear::Point& p) const noexcept {
    return koLinear::projectParam(p, koLinear::Line(getEyeLocation(), getViewVector())) >= 0.0;
}

double Camera::screenDepthAtPoint(const koLinear::Point& p) const noexcept {
    const koLinear::Line axis(getEyeLocation(), getViewVector());
    const double t = koLinear::projectParam(p, axis);
    if (t < 0.0) {
        return -1.0;
    }
    return distance(axis.origin, axis.eval(t));
}

bool Camera::pixelDistance(const koLinear::Point& a, const koLinear::Point& b,
                           double& dist) const noexcept {
    const koLinear::HPoint ha = koLinear::HPoint(a) * worldToClip_;
    const koLinear::HPoint hb = koLinear::HPoint(b) * worldToClip_;
    if (!ha.insideView(false) || !hb.insideView(false)) {
        dist = std::numeric_limits<double>::max();
        return false;
    }
    double width = 0.0;
    double height = 0.0;
    viewport_.getSize(width, height);
    const koLinear::Point pa = ha.dehomogenize();
    const koLinear::Point pb = hb.dehomogenize();
    dist = distance(koLinear::Point2(pa.x * width * 0.5, pa.y * height * 0.5),
                    koLinear::Point2(pb.x * width * 0.5, pb.y * height * 0.5));
    return true;
}

double Camera::pixelScaleForDepth(double depth, double pixels) const noexcept {
    double width = 0.0;
    double height = 0.0;
    viewport_.getSize(width, height);
    return pixels / height * frustum_.getHeightAtDepth(depth);
}

double Camera::pixelScaleOrtho() const noexcept {
    double width = 0.0;
    double height = 0.0;
    viewport_.getSize(width, height);
    return frustum_.getHeightAtDepth(0.0) / height;
}

void Camera::endInteraction() {
    update();
    if (!inInteraction_) {
        return;
    }
    inInteraction_ = false;
    if (changedInInteraction_) {
        changedInInteraction_ = false;
        interactionChangeEnded.emit(*this);
    }
}

void Camera::update() {
    if (!dirty_) {
        return;
    }
    if (inInteraction_ && !changedInInteraction_) {
        changedInInteraction_ = true;
        interactionChangeBegun.emit(*this);
    }
    dirty_ = false;
    cameraChanged.emit(*this);
}

bool Camera::equivalent(const Camera& other) const noexcept {
    return frustum_ == other.frustum_ && viewport_ == other.viewport_ &&
           openFrustum_ == other.openFrustum_ &&
           koLinear::equivalent(worldToEye_, other.worldToEye_, koLinear::epsilonTol);
}

void Camera::debugPrint(koOS::DebugChannel& channel, const char* name) const {
    if (!channel.enabled()) {
        return;
    }
    channel.print("%s Camera is\n", detail::printedName(name));
    viewport_.debugPrint(channel, name);
    frustum_.debugPrint(channel, name);
    channel.print("%s Matrix is\n", "w2e");
    for (int r = 0; r < 4; ++r) {
        channel.print("  %.12f %.12f %.12f\n", worldToEye_(r, 0), worldToEye_(r, 1),
                      worldToEye_(r, 2));
    }
}

} // namespace koGeom

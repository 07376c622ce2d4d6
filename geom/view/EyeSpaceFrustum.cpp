#include "geom/view/EyeSpaceFrustum.h"

#include <cmath>

#include "tessar/linear/Tolerance.h"

#include "geom/view/AngleOfView.h"
#include "geom/view/detail/Projection.h"

namespace koGeom {

bool EyeSpaceFrustum::operator==(const EyeSpaceFrustum& other) const noexcept {
    if (orthographic_ != other.orthographic_) {
        return false;
    }
    const double mine[6] = {left_, right_, top_, bottom_, near_, far_};
    const double theirs[6] = {other.left_,   other.right_, other.top_,
                              other.bottom_, other.near_,  other.far_};
    return koLinear::detail::allWithin(mine, theirs, 6, koLinear::epsilonTol);
}

void EyeSpaceFrustum::setFrame(const koLinear::Tuple2& leftBottom,
                               const koLinear::Tuple2& rightTop) noexcept {
    left_ = leftBottom.x;
    bottom_ = leftBottom.y;
    right_ = rightTop.x;
    top_ = rightTop.y;
}

void EyeSpaceFrustum::getFrame(koLinear::Tuple2& leftBottom,
                               koLinear::Tuple2& rightTop) const noexcept {
    leftBottom = {left_, bottom_};
    rightTop = {right_, top_};
}

void EyeSpaceFrustum::setDepthRange(double near, double far, bool keepAngle) noexcept {
    if (keepAngle && !orthographic_) {
        AngleAspect lens;
        getAngleAspect(lens);
        lens.setDepthRange(near, far);
        lens.getEyeSpaceFrustum(*this);
        return;
    }
    near_ = near;
    far_ = far;
}

void EyeSpaceFrustum::setOrthographic(bool orthographic, double depth) noexcept {
    if (orthographic_ == orthographic) {
        return;
    }
    koLinear::ParamPlane section;
    getPlaneAtDepth(depth, section);
    double w = section.uEdge.x;
    double h = section.vEdge.y;
    if (orthographic_) {
        // To perspective: the section at `depth` becomes the frame at the near distance.
        w *= near_ / depth;
        h *= near_ / depth;
    }
    setFrame({-w / 2.0, -h / 2.0}, {w / 2.0, h / 2.0});
    orthographic_ = orthographic;
}

double EyeSpaceFrustum::getAspectRatio() const noexcept {
    return (right_ - left_) / (top_ - bottom_);
}

double EyeSpaceFrustum::getHeightAtDepth(double d) const noexcept {
    const double h = top_ - bottom_;
    return orthographic_ ? h : h * d / near_;
}

void EyeSpaceFrustum::getPlaneAtDepth(double d, koLinear::ParamPlane& plane) const noexcept {
    double w = right_ - left_;
    double h = top_ - bottom_;
    if (!orthographic_) {
        h = getHeightAtDepth(d);
        w = getWidthForHeight(h);
    }
    // Deliberate: the section is centred on the view axis even for an off-centre frame; the
    // camera's rays and screen-aligned planes are built on this centred section.
    plane = koLinear::ParamPlane({-w / 2.0, -h / 2.0, -d}, {w, 0.0, 0.0}, {0.0, h, 0.0});
}

void EyeSpaceFrustum::getMatrix(koLinear::ProjMatrix& m, bool open) const noexcept {
    const double l = left_, r = right_, t = top_, b = bottom_, n = near_, f = far_;
    m = detail::zeroProjMatrix();
    if (orthographic_) {
        m(0, 0) = 2.0 / (r - l);
        m(1, 1) = 2.0 / (t - b);
        m(2, 2) = -2.0 / (f - n);
        m(3, 0) = -(l + r) / (r - l);
        m(3, 1) = -(b + t) / (t - b);
        m(3, 2) = -(n + f) / (f - n);
        m(3, 3) = 1.0;
        return;
    }
    m(0, 0) = 2.0 * n / (r - l);
    m(1, 1) = 2.0 * n / (t - b);
    m(2, 0) = (l + r) / (r - l);
    m(2, 1) = (b + t) / (t - b);
    detail::setPerspectiveDepth(m, n, f, open);
}

void EyeSpaceFrustum::getInverseMatrix(koLinear::ProjMatrix& m) const noexcept {
    const double l = left_, r = right_, t = top_, b = bottom_, n = near_, f = far_;
    m = detail::zeroProjMatrix();
    if (orthographic_) {
        m(0, 0) = (r - l) / 2.0;
        m(1, 1) = (t - b) / 2.0;
        m(2, 2) = -(f - n) / 2.0;
        m(3, 0) = (l + r) / 2.0;
        m(3, 1) = (b + t) / 2.0;
        m(3, 2) = -(f + n) / 2.0;
        m(3, 3) = 1.0;
        return;
    }
    m(0, 0) = (r - l) / (2.0 * n);
    m(1, 1) = (t - b) / (2.0 * n);
    m(2, 3) = (f - n) / (-2.0 * f * n);
    m(3, 0) = (l + r) / (2.0 * n);
    m(3, 1) = (b + t) / (2.0 * n);
    m(3, 2) = -1.0;
    m(3, 3) = (f + n) / (2.0 * f * n);
}

void EyeSpaceFrustum::setFromOrthographicProjection(const koLinear::ProjMatrix& m) noexcept {
    const double sx = 2.0 / m(0, 0);
    const double sy = 2.0 / m(1, 1);
    const double sz = -2.0 / m(2, 2);
    const double tx = sx * m(3, 0);
    const double ty = sy * m(3, 1);
    const double tz = -sz * m(3, 2);
    orthographic_ = true;
    right_ = (sx - tx) / 2.0;
    left_ = -tx - right_;
    top_ = (sy - ty) / 2.0;
    bottom_ = -ty - top_;
    far_ = (tz + sz) / 2.0;
    near_ = tz - far_;
}

void EyeSpaceFrustum::getAngleAspect(AngleAspect& lens) const noexcept {
    koLinear::ProjMatrix m;
    getMatrix(m, false);
    lens.setAngleOfViewRad(getVerticalAngleRadians(m));
    lens.setAspectRatio(getAspectRatio());
    lens.setDepthRange(near_, far_);
}

void EyeSpaceFrustum::debugPrint(koOS::DebugChannel& channel, const char* name) const {
    if (!channel.enabled()) {
        return;
    }
    channel.print("%s frustum is\n", detail::printedName(name));
    channel.print("  top %.3f\n", top_);
    channel.print("  bot %.3f\n", bottom_);
    channel.print("  lef %.3f\n", left_);
    channel.print("  rig %.3f\n", right_);
    channel.print("  nea %.3f\n", near_);
    channel.print("  far %.3f\n", far_);
}

} // namespace koGeom

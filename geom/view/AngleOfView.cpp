#include "geom/view/AngleOfView.h"

#include <cmath>

#include "tessar/linear/Tolerance.h"

#include "geom/view/EyeSpaceFrustum.h"
#include "geom/view/detail/Projection.h"

namespace koGeom {

namespace {

// The angle tolerance in radians, converted once.
constexpr double angleTolRad = koLinear::toRadians(koLinear::degreeTol);

} // namespace

bool AngleAspect::operator==(const AngleAspect& other) const noexcept {
    return std::fabs(angleOfView_ - other.angleOfView_) < angleTolRad &&
           std::fabs(aspectRatio_ - other.aspectRatio_) < koLinear::epsilonTol &&
           std::fabs(near_ - other.near_) < koLinear::epsilonTol &&
           std::fabs(far_ - other.far_) < koLinear::epsilonTol;
}

double AngleAspect::getHeightAtDepth(double d) const noexcept {
    return 2.0 * std::tan(angleOfView_ / 2.0) * d;
}

void AngleAspect::getMatrix(koLinear::ProjMatrix& m, bool open) const noexcept {
    const double c = 1.0 / std::tan(angleOfView_ / 2.0);
    m = detail::zeroProjMatrix();
    m(0, 0) = c / aspectRatio_;
    m(1, 1) = c;
    detail::setPerspectiveDepth(m, near_, far_, open);
}

void AngleAspect::getEyeSpaceFrustum(EyeSpaceFrustum& frustum) const noexcept {
    const double t = std::tan(angleOfView_ / 2.0) * near_;
    const double r = t * aspectRatio_;
    frustum.setOrthographic(false);
    frustum.setDepthRange(near_, far_, false);
    frustum.setFrame({-r, -t}, {r, t});
}

void AngleAspect::debugPrint(koOS::DebugChannel& channel, const char* name) const {
    if (!channel.enabled()) {
        return;
    }
    channel.print("%s AngleAspect is\n", detail::printedName(name));
    // Deliberate: the second heading takes the name as given, not the "unnamed" form; a null
    // name is spelled out as the C library prints it rather than handed to printf.
    channel.print("%s lens is\n", name != nullptr ? name : "(null)");
    channel.print("  aov %.3f\n", angleOfView_);
    channel.print("  asp %.3f\n", aspectRatio_);
    channel.print("  nea %.3f\n", near_);
    channel.print("  far %.3f\n", far_);
}

double getAspectRatio(const koLinear::ProjMatrix& m) noexcept { return m(1, 1) / m(0, 0); }

double getVerticalAngleRadians(const koLinear::ProjMatrix& m) noexcept {
    return 2.0 * std::atan(1.0 / m(1, 1));
}

} // namespace koGeom

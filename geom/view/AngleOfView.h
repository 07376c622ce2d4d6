#pragma once

#include "tessar/linear/Angle.h"
#include "tessar/linear/ProjMatrix.h"
#include "tessar/os/DebugChannel.h"

#include "geom/FormworkExport.h"
#include "geom/entity/LibraryDebugChannel.h"

namespace koGeom {

class EyeSpaceFrustum;

/// The angle of view: the lens class `AngleAspect`, and the free functions that read the
/// aspect ratio and the vertical angle back from a perspective projection matrix.
///
/// A perspective view volume told as a lens: the full vertical angle of view (radians), the
/// aspect ratio (width / height), and the near and far distances. It is always centred on the
/// view axis.
///
/// A default-made lens has a 55-degree angle of view, aspect ratio 1, near 1 and far 100.
class FORMWORK_EXPORT AngleAspect {
public:
    AngleAspect() noexcept = default;

    /// The angles differ by strictly less than `koLinear::degreeTol` (in radians), and the
    /// aspect ratio, near and far each by strictly less than `koLinear::epsilonTol`.
    bool operator==(const AngleAspect& other) const noexcept;

    /// \name Parts
    /// @{
    double getAngleOfViewRad() const noexcept { return angleOfView_; }
    void setAngleOfViewRad(double radians) noexcept { angleOfView_ = radians; }
    double getAspectRatio() const noexcept { return aspectRatio_; }
    void setAspectRatio(double aspectRatio) noexcept { aspectRatio_ = aspectRatio; }
    double getNearDist() const noexcept { return near_; }
    double getFarDist() const noexcept { return far_; }
    void setDepthRange(double near, double far) noexcept {
        near_ = near;
        far_ = far;
    }
    /// @}

    /// \name Sizes
    /// @{
    /// The picture's height at distance `d`: 2 · tan(angleOfView / 2) · d.
    double getHeightAtDepth(double d) const noexcept;
    /// h · aspectRatio.
    double getWidthForHeight(double h) const noexcept { return h * aspectRatio_; }
    /// @}

    /// \name Conversions
    /// @{

    /// The perspective projection matrix: with c = 1 / tan(angleOfView / 2), m00 =
    /// c / aspectRatio, m11 = c, and the depth elements of `EyeSpaceFrustum::getMatrix`
    /// (closed, or with the far plane at infinity when `open`).
    void getMatrix(koLinear::ProjMatrix& m, bool open) const noexcept;
    /// Makes `frustum` the same volume: perspective, this lens's near and far, and the
    /// centred frame ±(t · aspectRatio, t) with t = tan(angleOfView / 2) · near.
    void getEyeSpaceFrustum(EyeSpaceFrustum& frustum) const noexcept;
    /// @}

    /// Prints the lens on `channel` (by default the library's channel) when it is enabled: "<name>
    /// AngleAspect is" (a null name as "unnamed"), then "<name> lens is" with the name as given,
    /// then the angle of view in radians, the aspect ratio, near and far with three decimals. A
    /// null name in the second line prints as "(null)", as the C library prints a null string.
    void debugPrint(koOS::DebugChannel& channel = debugChannel(), const char* name = nullptr) const;

private:
    double angleOfView_ = koLinear::toRadians(55.0);
    double aspectRatio_ = 1.0;
    double near_ = 1.0;
    double far_ = 100.0;
};

/// \name Reading a lens back from a perspective matrix
/// @{

/// The aspect ratio m11 / m00.
FORMWORK_EXPORT double getAspectRatio(const koLinear::ProjMatrix& m) noexcept;
/// The full vertical angle of view in radians, 2 · atan(1 / m11).
FORMWORK_EXPORT double getVerticalAngleRadians(const koLinear::ProjMatrix& m) noexcept;
/// @}

} // namespace koGeom

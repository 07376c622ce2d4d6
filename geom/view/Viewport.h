#pragma once

#include "tessar/linear/AffineMatrix.h"
#include "tessar/linear/AffineMatrix2.h"
#include "tessar/linear/Point2.h"
#include "tessar/linear/ProjMatrix.h"
#include "tessar/linear/Range2d.h"
#include "tessar/linear/Tuple2.h"
#include "tessar/os/DebugChannel.h"

#include "geom/FormworkExport.h"
#include "geom/entity/LibraryDebugChannel.h"

namespace koGeom {

/// The pixel rectangle a camera draws into, with its window depth range: the lower-left
/// corner (origin), the size in pixels, and the depths that the near and far planes map to.
/// Viewport coordinates run from the origin to the right and up.
///
/// A default-made viewport is the single pixel at (0, 0) with depth range 0 to 1.
class FORMWORK_EXPORT Viewport {
public:
    Viewport() noexcept = default;

    /// All six values differ by strictly less than `koLinear::epsilonTol`.
    bool operator==(const Viewport& other) const noexcept;

    /// \name Parts
    /// @{
    void setOrigin(double x, double y) noexcept;
    void setOrigin(const koLinear::Tuple2& origin) noexcept { setOrigin(origin.x, origin.y); }
    void getOrigin(double& x, double& y) const noexcept;
    void getOrigin(koLinear::Tuple2& origin) const noexcept { getOrigin(origin.x, origin.y); }
    void setSize(double width, double height) noexcept;
    void setSize(const koLinear::Tuple2& size) noexcept { setSize(size.x, size.y); }
    void getSize(double& width, double& height) const noexcept;
    void getSize(koLinear::Tuple2& size) const noexcept { getSize(size.x, size.y); }
    void setDepthRange(double near, double far) noexcept;
    void getDepthRange(double& near, double& far) const noexcept;
    /// width / height.
    double getAspectRatio() const noexcept { return width_ / height_; }
    /// origin + size / 2.
    void getCenter(koLinear::Point2& centre) const noexcept;
    /// @}

    /// \name Normalised coordinates to pixels and back
    /// The view transform maps normalised coordinates [−1, 1] to pixels: x scale width/2, y
    /// scale height/2, translation (ox + width/2, oy + height/2). The 3-D forms also map depth
    /// with z scale (df − dn)/2 and z translation (df − dn)/2 − dn, which equals the usual
    /// (df + dn)/2 only for a depth range starting at 0. The inverse forms undo x and y
    /// exactly; their depth has z scale 1 / ((df − dn)/2) and z translation −(dn + 1), so
    /// forward and inverse depth agree only for a depth range starting at 0.
    /// @{
    void getViewTransform(koLinear::AffineMatrix2& m) const noexcept;
    void getViewTransform(koLinear::AffineMatrix& m) const noexcept;
    void getViewTransform(koLinear::ProjMatrix& m) const noexcept;
    void getInverseViewTransform(koLinear::AffineMatrix2& m) const noexcept;
    void getInverseViewTransform(koLinear::AffineMatrix& m) const noexcept;
    void getInverseViewTransform(koLinear::ProjMatrix& m) const noexcept;
    /// @}

    /// The transform that magnifies the pixel rectangle `range` (viewport coordinates) to the
    /// whole normalised square: applied after a projection, it makes the points that land in
    /// `range` the ones inside the view. A side of zero size uses a factor of 1 on its axis.
    void getPickTransform(const koLinear::Range2d& range, koLinear::AffineMatrix& m) const noexcept;

    /// Prints the viewport on `channel` (by default the library's channel) when it is enabled:
    /// "<name> Viewport is", then the origin, size and depth range with two decimals. A null name
    /// prints as "unnamed".
    void debugPrint(koOS::DebugChannel& channel = debugChannel(), const char* name = nullptr) const;

private:
    double originX_ = 0.0;
    double originY_ = 0.0;
    double width_ = 1.0;
    double height_ = 1.0;
    double depthNear_ = 0.0;
    double depthFar_ = 1.0;
};

} // namespace koGeom

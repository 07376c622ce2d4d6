#pragma once

#include "tessar/linear/ParamPlane.h"
#include "tessar/linear/ProjMatrix.h"
#include "tessar/linear/Tuple2.h"
#include "tessar/os/DebugChannel.h"

#include "geom/FormworkExport.h"
#include "geom/entity/LibraryDebugChannel.h"

namespace koGeom {

class AngleAspect;

/// The view volume of a camera in eye space (right-handed, x to the right, y up, looking down
/// −z): a frame (left, right, bottom, top) on the near plane z = −near, the far plane at
/// z = −far, and the choice of a perspective or an orthographic projection. In an
/// orthographic volume the frame is the same at every depth; in a perspective one it grows in
/// proportion to the depth.
///
/// A default-made frustum is the perspective volume with frame (−1, −1) to (1, 1), near 1 and
/// far 100: a 90-degree vertical angle of view.
///
/// Nothing is checked: a zero frame extent or near distance gives infinities or NaNs in the
/// matrices.
class FORMWORK_EXPORT EyeSpaceFrustum {
public:
    EyeSpaceFrustum() noexcept = default;

    /// Orthographic flags equal, and each of the six distances differs by strictly less than
    /// `koLinear::epsilonTol`.
    bool operator==(const EyeSpaceFrustum& other) const noexcept;

    /// \name Frame and depth
    /// @{
    void setFrame(const koLinear::Tuple2& leftBottom, const koLinear::Tuple2& rightTop) noexcept;
    void getFrame(koLinear::Tuple2& leftBottom, koLinear::Tuple2& rightTop) const noexcept;

    /// Sets the near and far distances. With `keepAngle` on a perspective frustum the angle of
    /// view and the aspect ratio stay: the frustum is rebuilt through its `AngleAspect`, which
    /// also centres the frame at the new near distance. Otherwise only the two distances are
    /// stored (which, for a perspective frustum, changes the angle of view).
    void setDepthRange(double near, double far, bool keepAngle) noexcept;
    double getNearDist() const noexcept { return near_; }
    double getFarDist() const noexcept { return far_; }
    /// @}

    /// \name Projection kind
    /// @{

    /// Sets the flag only.
    void setOrthographic(bool orthographic) noexcept { orthographic_ = orthographic; }
    /// Switches between perspective and orthographic so that the picture at `depth` keeps its
    /// size: the frame becomes the centred cross-section at `depth` (scaled back to the near
    /// plane when switching to perspective). Does nothing when the flag already equals
    /// `orthographic`.
    void setOrthographic(bool orthographic, double depth) noexcept;
    bool getOrthographic() const noexcept { return orthographic_; }
    /// @}

    /// \name Sizes and cross-sections
    /// @{

    /// (right − left) / (top − bottom).
    double getAspectRatio() const noexcept;
    /// h · getAspectRatio().
    double getWidthForHeight(double h) const noexcept { return h * getAspectRatio(); }
    /// The frame's height at distance `d` from the eye: top − bottom when orthographic,
    /// (top − bottom) · d / near when perspective.
    double getHeightAtDepth(double d) const noexcept;
    /// The cross-section at distance `d` as a parametric plane: origin (−w/2, −h/2, −d),
    /// edges (w, 0, 0) and (0, h, 0), normal +z, so parameters (0, 0) to (1, 1) span it.
    /// It is centred on the view axis: an off-centre frame's offset is not applied.
    void getPlaneAtDepth(double d, koLinear::ParamPlane& plane) const noexcept;
    /// @}

    /// \name Matrices
    /// @{

    /// The eye-to-clip projection matrix (row vectors: p · m). `open` puts the far plane of a
    /// perspective matrix at infinity; an orthographic matrix ignores it.
    void getMatrix(koLinear::ProjMatrix& m, bool open) const noexcept;
    /// The inverse of the closed `getMatrix`, in closed form.
    void getInverseMatrix(koLinear::ProjMatrix& m) const noexcept;
    /// Rebuilds an orthographic frustum from its matrix: the exact inverse of the
    /// orthographic `getMatrix`.
    void setFromOrthographicProjection(const koLinear::ProjMatrix& m) noexcept;
    /// @}

    /// The same volume as a lens: the vertical angle read back from the closed matrix, this
    /// frustum's aspect ratio, near and far. An orthographic frustum goes through the same
    /// formulas on its orthographic matrix.
    void getAngleAspect(AngleAspect& lens) const noexcept;

    /// Prints the frame and depths on `channel` (by default the library's channel) when it is
    /// enabled: "<name> frustum is", then top, bottom, left, right, near and far, one to a line
    /// with three decimals. A null name prints as "unnamed".
    void debugPrint(koOS::DebugChannel& channel = debugChannel(), const char* name = nullptr) const;

private:
    double left_ = -1.0;
    double right_ = 1.0;
    double top_ = 1.0;
    double bottom_ = -1.0;
    double near_ = 1.0;
    double far_ = 100.0;
    bool orthographic_ = false;
};

} // namespace koGeom

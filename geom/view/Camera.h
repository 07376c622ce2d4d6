#pragma once

#include <memory>

#include "tessar/linear/AffineMatrix.h"
#include "tessar/linear/Line.h"
#include "tessar/linear/Normal.h"
#include "tessar/linear/ParamPlane.h"
#include "tessar/linear/Point.h"
#include "tessar/linear/Point2.h"
#include "tessar/linear/ProjMatrix.h"
#include "tessar/linear/Range2d.h"
#include "tessar/linear/Tuple2.h"
#include "tessar/linear/Vector.h"
#include "tessar/os/DebugChannel.h"
#include "tessar/rtb/Signal.h"
#include "tessar/rtb/SignalClient.h"

#include "geom/FormworkExport.h"
#include "geom/entity/LibraryDebugChannel.h"
#include "geom/spatial/BoundingBox.h"
#include "geom/view/AngleOfView.h"
#include "geom/view/EyeSpaceFrustum.h"
#include "geom/view/Viewport.h"

namespace koGeom {

/// The viewing state: where the eye is and how it is turned (a rigid world-to-eye transform
/// and its inverse), what it sees (an `EyeSpaceFrustum`) and where the picture goes (a
/// `Viewport`). From these it derives the matrix chain
///
///     world --worldToEye--> eye --frustum--> clip --divide by w--> normalised
///           --viewport--> viewport (pixels, y up from the viewport's origin)
///
/// and with it projects points, turns pixels back into world rays and points, builds pick
/// matrices, measures in pixels and fits its near and far planes to a box.
///
/// Eye space is right-handed: x to the right, y up, looking down −z. The camera's right, up
/// and view vectors and its eye location are read from the eye-to-world matrix (rows 0 and 1,
/// the negation of row 2, and row 3).
///
/// Changes are announced, not at once, but by `update()`: every setter (except
/// `setMinimumPickRadius`) marks the camera dirty, and `update()` on a dirty camera emits
/// `cameraChanged`. Between `beginInteraction()` and `endInteraction()` the first dirty
/// update also emits `interactionChangeBegun`, and `endInteraction()` then emits
/// `interactionChangeEnded`; an interaction without changes emits neither. All signals pass
/// the camera and run their listeners synchronously, in connection order.
///
/// Nothing reports errors: points behind the eye show only in return values (`project`,
/// `pixelDistance`) or as −1 (`screenDepthAtPoint`), and a singular matrix inverts to the
/// identity, as the linear-algebra library gives it.
class FORMWORK_EXPORT Camera {
public:
    /// \name Signals
    /// @{
    /// Emitted by `update()` when the camera is dirty.
    koRTB::Signal<Camera&> cameraChanged;
    /// Emitted at the first dirty `update()` inside an interaction.
    koRTB::Signal<Camera&> interactionChangeBegun;
    /// Emitted by `endInteraction()` when the interaction changed anything.
    koRTB::Signal<Camera&> interactionChangeEnded;
    /// The camera's own receiving end, through which it can be connected to other signals.
    koRTB::SignalClient signalClient;
    /// @}

    /// \name Construction and copying
    /// Copies take the viewing state and the flags, never the signals' connections.
    /// @{

    /// At the origin looking down −z with up +y (both matrices the identity), default
    /// viewport and frustum, no pick radius, all flags clear.
    Camera() noexcept;
    Camera(const Camera& other) noexcept;
    Camera& operator=(const Camera& other) noexcept;
    ~Camera();
    /// A new camera copied from this one, owned by the caller.
    std::unique_ptr<Camera> clone() const;
    /// @}

    /// \name Setting
    /// None of these emits a signal; call `update()` to announce the changes.
    /// @{

    /// worldToEye = m and eyeToWorld = its inverse (the identity when `m` is singular); dirty.
    void setWorldToEye(const koLinear::AffineMatrix& m) noexcept;
    /// Looks from `eye` at `target` with `up` as the screen's upward direction (it need not
    /// be perpendicular to the view, only not parallel to it). Afterwards the right vector is
    /// (target − eye) × up normalised, the up vector right × view, the view vector points at
    /// the target and the eye location is `eye`; dirty.
    void setWorldToEye(const koLinear::Point& target, const koLinear::Point& eye,
                       const koLinear::Normal& up) noexcept;
    /// Copies `viewport` and marks dirty only when it differs (`Viewport::operator==`).
    void setViewport(const Viewport& viewport) noexcept;
    /// Copies `frustum`; dirty only when it differs (`EyeSpaceFrustum::operator==`).
    void setFrustum(const EyeSpaceFrustum& frustum) noexcept;
    /// The lens as a frustum (`AngleAspect::getEyeSpaceFrustum`), then as above.
    void setFrustum(const AngleAspect& lens) noexcept;
    /// Whether the projection matrix puts the far plane at infinity; dirty only on a change.
    void setOpenFrustum(bool open) noexcept;
    /// The radius, in pixels, added to every point pick; does not mark the camera dirty.
    void setMinimumPickRadius(double radius) noexcept { minimumPickRadius_ = radius; }

    /// Fits the near and far distances to `box`: the depths (`screenDepthAtPoint`) of its
    /// eight corners, a corner behind the eye counting as −1, widened by one per cent on both
    /// sides; a far distance below `koLinear::epsilonTol` becomes 1, and the near distance is
    /// never below 0.001 nor below far / 2048. The frustum takes them with its angle kept
    /// (`EyeSpaceFrustum::setDepthRange(near, far, true)`) and the camera turns dirty, unless
    /// both equal the current distances exactly.
    void setNearFar(const BoundingBox& box) noexcept;
    /// @}

    /// \name Getting
    /// @{
    void getWorldToEye(koLinear::AffineMatrix& m) const noexcept { m = worldToEye_; }
    void getEyeToWorld(koLinear::AffineMatrix& m) const noexcept { m = eyeToWorld_; }
    void getViewport(Viewport& viewport) const noexcept { viewport = viewport_; }
    void getFrustum(EyeSpaceFrustum& frustum) const noexcept { frustum = frustum_; }
    /// The frustum as a lens (`EyeSpaceFrustum::getAngleAspect`).
    void getFrustum(AngleAspect& lens) const noexcept { frustum_.getAngleAspect(lens); }
    bool getOpenFrustum() const noexcept { return openFrustum_; }
    double getMinimumPickRadius() const noexcept { return minimumPickRadius_; }
    koLinear::Point getEyeLocation() const noexcept;
    void getEyeLocation(koLinear::Point& eye) const noexcept { eye = getEyeLocation(); }
    koLinear::Normal getRightVector() const noexcept;
    void getRightVector(koLinear::Normal& right) const noexcept { right = getRightVector(); }
    koLinear::Normal getUpVector() const noexcept;
    void getUpVector(koLinear::Normal& up) const noexcept { up = getUpVector(); }
    /// The direction the camera looks in.
    koLinear::Normal getViewVector() const noexcept;
    void getViewVector(koLinear::Normal& view) const noexcept { view = getViewVector(); }
    /// The distance from the eye location to `p`.
    double distanceToPoint(const koLinear::Point& p) const noexcept;
    /// @}

    /// \name Matrices
    /// Row-vector matrices (p · m), composed in reading order.
    /// @{

    /// The frustum's projection (`EyeSpaceFrustum::getMatrix`, open as `getOpenFrustum`).
    void getEyeToClip(koLinear::ProjMatrix& m) const noexcept;
    /// worldToEye · eyeToClip.
    void getWorldToClip(koLinear::ProjMatrix& m) const noexcept { m = worldToClip_; }
    /// worldToClip · the viewport's view transform: after the division by w, x and y are
    /// viewport pixels and z the window depth.
    void getWorldToViewport(koLinear::ProjMatrix& m) const noexcept;
    /// The inverse of `getWorldToViewport`; the identity when that is singular (an empty
    /// viewport, say).
    void getViewportToWorld(koLinear::ProjMatrix& m) const noexcept;

    /// The pick matrix of the pixel square of half-side radius + minimumPickRadius about
    /// `centre` (viewport coordinates): a world point is in the pick region when its image
    /// under `m` is inside the view (`HPoint::insideView`).
    void getPickMatrix(const koLinear::Point2& centre, koLinear::ProjMatrix& m,
                       double radius) const noexcept;
    /// The pick matrix of the pixel rectangle `range`; a range whose corners coincide (within
    /// `koLinear::epsilonTol`) is a point pick at its first corner with radius 1.
    void getPickMatrix(const koLinear::Range2d& range, koLinear::ProjMatrix& m) const noexcept;
    /// @}

    /// \name Between the screen and the world
    /// @{

    /// Projects `p` to viewport coordinates (x, y in pixels, z the window depth). Returns
    /// whether its clip-space image is inside the view volume, near and far included. `out`
    /// is set when inside, and also outside for an orthographic camera (which then still
    /// returns false); otherwise it is left unchanged.
    bool project(const koLinear::Point& p, koLinear::Point& out) const noexcept;
    /// `p` in pixels with rows counted from the top: (x, height − y) of its viewport image.
    koLinear::Point2 getWorldPointToViewport(const koLinear::Point& p) const noexcept;
    /// The world point at viewport position `v` and window depth `depth` (taken back through
    /// the inverse viewport transform and the inverse of worldToClip, the identity when that
    /// is singular).
    void getWorldSpacePoint(const koLinear::Point2& v, double depth,
                            koLinear::Point& out) const noexcept;
    /// The world ray through viewport position `v` (pixels, y up).
    void getWorldSpaceRay(const koLinear::Point2& v, koLinear::Line& ray) const noexcept;
    /// The world ray through parameters `t` of the screen-aligned near plane ((0, 0) its
    /// lower-left corner, (1, 1) its upper right): from the eye through that point in
    /// perspective, from that point along the view vector in orthographic projection.
    void getWorldSpaceRay(const koLinear::Tuple2& t, koLinear::Line& ray) const noexcept;
    /// The direction of the ray to `p`: p − eye (not normalised) in perspective, the view
    /// vector in orthographic projection.
    void getWorldSpaceRay(const koLinear::Point& p, koLinear::Vector& direction) const noexcept;

    /// The frustum's centred cross-section at the near distance, in world space.
    void getScreenAlignedNearPlane(koLinear::ParamPlane& plane) const noexcept;
    /// The frustum's centred cross-section at the far distance, in world space.
    void getScreenAlignedFarPlane(koLinear::ParamPlane& plane) const noexcept;
    /// The frustum's centred cross-section at distance `d` (`EyeSpaceFrustum::getPlaneAtDepth`),
    /// in world space.
    void getScreenAlignedPlaneAtDepth(double d, koLinear::ParamPlane& plane) const noexcept;

    /// True when `p` lies in front of the eye's plane or on it.
    bool pointInFrontOfCamera(const koLinear::Point& p) const noexcept;
    /// The distance of `p` from the eye along the view vector; −1 for a point behind the eye.
    double screenDepthAtPoint(const koLinear::Point& p) const noexcept;
    /// @}

    /// \name Measuring in pixels
    /// @{

    /// Sets `dist` to the distance in pixels between the images of `a` and `b` and returns
    /// true; when either is outside the view in x, y or w (depth is not tested), sets `dist`
    /// to the largest double and returns false.
    bool pixelDistance(const koLinear::Point& a, const koLinear::Point& b,
                       double& dist) const noexcept;
    /// The world length that `pixels` pixels cover at distance `depth`.
    double pixelScaleForDepth(double depth, double pixels) const noexcept;
    /// World units per pixel of an orthographic view.
    double pixelScaleOrtho() const noexcept;
    /// @}

    /// \name Notification
    /// @{
    void beginInteraction() noexcept { inInteraction_ = true; }
    /// Runs `update()`, then ends the interaction, emitting `interactionChangeEnded` when it
    /// changed anything.
    void endInteraction();
    /// Announces the changes since the last update; does nothing when the camera is not dirty.
    void update();
    /// True when a change awaits `update()`.
    bool isDirty() const noexcept { return dirty_; }
    bool isInInteraction() const noexcept { return inInteraction_; }
    /// @}

    /// Same frustum and viewport (their `operator==`), same open flag, and world-to-eye
    /// matrices equal element by element within `koLinear::epsilonTol`. The eye-to-world
    /// matrix and the pick radius are not compared.
    bool equivalent(const Camera& other) const noexcept;

    /// Prints the camera on `channel` (by default the library's channel) when it is enabled:
    /// "<name> Camera is" (a null name as "unnamed"), the viewport's and the frustum's prints with
    /// the same name, then the world-to-eye matrix as "w2e Matrix is" and its four rows with twelve
    /// decimals.
    void debugPrint(koOS::DebugChannel& channel = debugChannel(), const char* name = nullptr) const;

private:
    void setDirty() noexcept { dirty_ = true; }
    // Recomputes the cached matrices after a change of the transform, frustum or viewport.
    void refreshMatrices() noexcept;
    void getPickMatrixImpl(const koLinear::Range2d& range, koLinear::ProjMatrix& m) const noexcept;

    Viewport viewport_;
    EyeSpaceFrustum frustum_;
    koLinear::AffineMatrix worldToEye_{1.0};
    koLinear::AffineMatrix eyeToWorld_{1.0};
    double minimumPickRadius_ = 0.0;
    bool openFrustum_ = false;
    bool dirty_ = false;
    bool inInteraction_ = false;
    bool changedInInteraction_ = false;

    // Derived from the state above, so that projecting a point is one matrix product.
    koLinear::ProjMatrix worldToClip_;
    koLinear::AffineMatrix viewTransform_{1.0};
};

} // namespace koGeom

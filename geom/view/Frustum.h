#pragma once

#include <memory>

#include "tessar/linear/AffineMatrix.h"
#include "tessar/linear/Line.h"
#include "tessar/linear/Plane.h"
#include "tessar/linear/Point.h"
#include "tessar/linear/Vector.h"

#include "geom/FormworkExport.h"

namespace koGeom {

/// A view volume as a solid: eight corner points and the six planes that bound them, which
/// can be moved by a matrix.
///
/// Corners 0 to 3 lie on the near rectangle and 4 to 7 on the far one, corner k + 4 on the
/// same side edge as corner k. Made from a frame, the near corners are 0 = (right, top),
/// 1 = (left, top), 2 = (left, bottom), 3 = (right, bottom), at z = −near. Planes 0 to 3 are
/// the sides (plane s through corners s, s + 4 and (s + 1) mod 4), plane 4 the near and plane
/// 5 the far plane; every normal points out of the volume, and stays so through `transform`.
///
/// The planes live in an array that every constructor allocates.
class FORMWORK_EXPORT Frustum {
public:
    /// The volume on the eye-space frame left, right, bottom, top at z = −near, reaching to
    /// z = −far: a perspective volume widens towards the far plane (its side edges meet at the
    /// eye), an orthographic one keeps its frame.
    Frustum(double left, double right, double bottom, double top, double near, double far,
            bool perspective);
    /// The volume on eight corners given side edge by side edge: near and far corner of edge
    /// 0, then of edges 1, 2 and 3.
    Frustum(const koLinear::Point& near0, const koLinear::Point& far0, const koLinear::Point& near1,
            const koLinear::Point& far1, const koLinear::Point& near2, const koLinear::Point& far2,
            const koLinear::Point& near3, const koLinear::Point& far3);
    Frustum(const Frustum& other);
    /// Copies into a temporary and swaps, so a failed copy leaves this frustum as it was.
    Frustum& operator=(const Frustum& other);
    ~Frustum();

    /// Exchanges the corners and the plane arrays.
    void swap(Frustum& other) noexcept;

    /// \name Corners and planes
    /// @{
    /// The 24 coordinates, corner by corner (x, y, z).
    const double* getPoints() const noexcept { return points_; }
    /// The six planes: four sides, near, far.
    const koLinear::Plane* getPlanes() const noexcept { return planes_.get(); }
    /// The mean of corners 0 to 3.
    koLinear::Point getNearCenter() const noexcept { return centre(0); }
    /// The mean of corners 4 to 7.
    koLinear::Point getFarCenter() const noexcept { return centre(4); }
    /// getFarCenter() − getNearCenter().
    koLinear::Vector getVector() const noexcept { return getFarCenter() - getNearCenter(); }
    /// The line from the near centre along `getVector()`, normalised.
    koLinear::Line getRay() const noexcept;
    /// @}

    /// Multiplies every corner by `m` and recomputes the planes. A mirroring `m` (negative
    /// determinant) also exchanges corners 0 and 3, 1 and 2, 4 and 7, 5 and 6, so that the
    /// planes still face outwards.
    void transform(const koLinear::AffineMatrix& m) noexcept;

private:
    void setPersp(double left, double right, double bottom, double top, double near,
                  double far) noexcept;
    void setOrtho(double left, double right, double bottom, double top, double near,
                  double far) noexcept;
    // Sets the near corners of a frame; the far ones are left to the caller.
    void setNearCorners(double left, double right, double bottom, double top, double near) noexcept;
    koLinear::Point corner(int k) const noexcept {
        return {points_[3 * k], points_[3 * k + 1], points_[3 * k + 2]};
    }
    void setCorner(int k, const koLinear::Point& p) noexcept;
    void swapCorners(int a, int b) noexcept;
    koLinear::Point centre(int first) const noexcept;
    void computePlanes() noexcept;
    // The plane through corner a with normal (b − a) × (c − a), normalised.
    void computePlane(int a, int b, int c, koLinear::Plane& out) const noexcept;

    double points_[24] = {};
    std::unique_ptr<koLinear::Plane[]> planes_;
};

} // namespace koGeom

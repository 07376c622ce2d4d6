#include "geom/spatial/BoundingBox.h"

#include <cmath>

namespace koGeom {

namespace {

// Restarts `box` as the degenerate box at the image of corner 0 and extends it by the images
// of corners 1 to 7, read from the box as it was.
template <class MapCorner>
void boxAboutCornerImages(BoundingBox& box, MapCorner mapCorner) noexcept {
    const BoundingBox original = box;
    for (int i = 0; i < 8; ++i) {
        koLinear::PointFlt corner;
        original.getPoint(i, corner);
        const koLinear::PointFlt image = mapCorner(corner);
        if (i == 0) {
            const float start[3] = {image.x, image.y, image.z};
            box = BoundingBox(start);
        } else {
            box.extend(image);
        }
    }
}

} // namespace

ko::vector<koLinear::Point> BoundingBox::getVertices() const {
    const koLinear::Point lo(minPt());
    const koLinear::Point hi(maxPt());
    // Deliberate: face order (bottom face from the min corner through +y, then the top face),
    // not the bit order of getPoint; both orders are relied on as they are.
    return {{lo.x, lo.y, lo.z}, {lo.x, hi.y, lo.z}, {hi.x, hi.y, lo.z}, {hi.x, lo.y, lo.z},
            {lo.x, lo.y, hi.z}, {lo.x, hi.y, hi.z}, {hi.x, hi.y, hi.z}, {hi.x, lo.y, hi.z}};
}

void BoundingBox::transform(const koLinear::AffineMatrix& m) noexcept {
    boxAboutCornerImages(*this, [&m](const koLinear::PointFlt& corner) {
        return koLinear::PointFlt(koLinear::Point(corner) * m);
    });
}

void BoundingBox::transform(const koLinear::AffineMatrixFlt& m) noexcept {
    boxAboutCornerImages(*this, [&m](const koLinear::PointFlt& corner) { return corner * m; });
}

bool equivalent(const BoundingBox& a, const BoundingBox& b, float tolerance) {
    float valuesA[6];
    float valuesB[6];
    a.minPt(valuesA);
    a.maxPt(valuesA + 3);
    b.minPt(valuesB);
    b.maxPt(valuesB + 3);
    for (int i = 0; i < 6; ++i) {
        const float difference = valuesA[i] - valuesB[i];
        const float magnitude = static_cast<float>(std::fabs(static_cast<double>(difference)));
        // Deliberate: strictly below the tolerance, so a tolerance of 0 matches nothing, as
        // with the equivalence of points.
        if (!(tolerance > magnitude)) {
            return false;
        }
    }
    return true;
}

} // namespace koGeom

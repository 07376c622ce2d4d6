#include "geom/view/Frustum.h"

#include <gtest/gtest.h>

#include <cmath>

namespace koGeom {
namespace {

using P = koLinear::Point;
using M = koLinear::AffineMatrix;

P corner(const Frustum& f, int k) {
    return {f.getPoints()[3 * k], f.getPoints()[3 * k + 1], f.getPoints()[3 * k + 2]};
}

TEST(Frustum, CornersPlanesAndRayThroughMovesAndMirrors) {
    const Frustum f(-1, 1, -1, 1, 1, 2, true);
    EXPECT_TRUE(corner(f, 0) == P(1, 1, -1) && corner(f, 2) == P(-1, -1, -1)); // (r, t, -n)
    EXPECT_EQ(corner(f, 4), P(2, 2, -2));                                      // scaled by f / n
    const double h = std::sqrt(0.5);
    EXPECT_TRUE(equivalent(f.getPlanes()[0].normal, koLinear::Vector(0, h, h), 1e-12)); // top
    EXPECT_EQ(f.getPlanes()[4].normal, koLinear::Normal(0, 0, 1));                      // near
    EXPECT_EQ(f.getPlanes()[5].normal, koLinear::Normal(0, 0, -1));                     // far
    EXPECT_EQ(f.getRay(), koLinear::Line(P(0, 0, -1), koLinear::Normal(0, 0, -1)));
    const Frustum ortho(-1, 3, -2, 2, 1, 5, false);
    EXPECT_EQ(corner(ortho, 5), P(-1, 2, -5)); // corner 1 moved to z = -f
    // The same corners given edge by edge, and a copy, give the same planes.
    Frustum copy = ortho;
    copy = Frustum(corner(f, 0), corner(f, 4), corner(f, 1), corner(f, 5), corner(f, 2),
                   corner(f, 6), corner(f, 3), corner(f, 7));
    for (int s = 0; s < 6; ++s) EXPECT_EQ(copy.getPlanes()[s], f.getPlanes()[s]);

    // Every corner on or behind every plane, and the middle strictly behind each, through
    // moves and mirrors too.
    const M moves[] = {M(1.0), M::makeScale(-1, 1, 1), M::makeScale(1, -2, 1),
                       M::makeRotation({1, 2, 3}, 0.7) * M::makeTranslation({5, -1, 2})};
    for (const Frustum& original : {f, ortho}) {
        for (const M& m : moves) {
            Frustum g = original;
            g.transform(m);
            EXPECT_TRUE(equivalent(g.getFarCenter(), original.getFarCenter() * m, 1e-12));
            const P mid = combine(g.getNearCenter(), 0.5, g.getFarCenter(), 0.5);
            for (int s = 0; s < 6; ++s) {
                for (int k = 0; k < 8; ++k)
                    EXPECT_LT(g.getPlanes()[s].signedDistance(corner(g, k)), 1e-9);
                EXPECT_LT(g.getPlanes()[s].signedDistance(mid), -1e-3) << "plane " << s;
            }
        }
    }
}

} // namespace
} // namespace koGeom

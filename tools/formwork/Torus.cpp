#include "tools/formwork/Torus.h"

#include <cmath>
#include <numbers>

namespace formworkTool {

MeshArrays makeTorus(int segments, int rings, double majorRadius, double minorRadius) {
    MeshArrays arrays;
    const int columns = segments + 1;
    const auto numVertices =
        static_cast<std::size_t>(columns) * static_cast<std::size_t>(rings + 1);
    arrays.positions.reserve(3 * numVertices);
    arrays.normals.reserve(3 * numVertices);
    arrays.uvs.reserve(2 * numVertices);
    arrays.colours.reserve(4 * numVertices);
    constexpr double turn = 2.0 * std::numbers::pi;
    for (int j = 0; j <= rings; ++j) {
        for (int i = 0; i <= segments; ++i) {
            const double u = static_cast<double>(i) / segments;
            const double v = static_cast<double>(j) / rings;
            arrays.uvs.insert(arrays.uvs.end(), {static_cast<float>(u), static_cast<float>(v)});
            arrays.colours.insert(
                arrays.colours.end(),
                {static_cast<float>(0.55 + 0.35 * std::cos(turn * u)),
                 static_cast<float>(0.55 + 0.25 * std::cos(turn * u + 2.1)),
                 static_cast<float>(0.55 + 0.35 * std::cos(turn * u + 4.2)), 1.0f});
            if (i == segments || j == rings) {
                // A seam vertex repeats the one where its angles wrap to 0, bit for bit.
                const std::size_t source =
                    3 * static_cast<std::size_t>((j == rings ? 0 : j) * columns +
                                                 (i == segments ? 0 : i));
                for (std::vector<float>* channel : {&arrays.positions, &arrays.normals}) {
                    for (std::size_t k = 0; k < 3; ++k) {
                        channel->push_back((*channel)[source + k]);
                    }
                }
                continue;
            }
            const double around = turn * u;
            const double tube = turn * v;
            const double normal[3] = {std::cos(tube) * std::cos(around), std::sin(tube),
                                      std::cos(tube) * std::sin(around)};
            const double ring = majorRadius + minorRadius * std::cos(tube);
            arrays.positions.insert(arrays.positions.end(),
                                    {static_cast<float>(ring * std::cos(around)),
                                     static_cast<float>(minorRadius * normal[1]),
                                     static_cast<float>(ring * std::sin(around))});
            arrays.normals.insert(arrays.normals.end(),
                                  {static_cast<float>(normal[0]), static_cast<float>(normal[1]),
                                   static_cast<float>(normal[2])});
        }
    }
    arrays.triangles.reserve(6 * static_cast<std::size_t>(segments) * rings);
    for (int j = 0; j < rings; ++j) {
        for (int i = 0; i < segments; ++i) {
            const int a = j * columns + i; // (u, v)
            const int b = a + 1;           // one step round the axis
            const int c = b + columns;     // and round the tube
            const int d = a + columns;     // round the tube only
            // Round the tube first, then round the axis: outward.
            arrays.triangles.insert(arrays.triangles.end(), {a, d, c, a, c, b});
        }
    }
    return arrays;
}

} // namespace formworkTool

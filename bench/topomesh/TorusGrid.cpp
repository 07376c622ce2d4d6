#include "bench/topomesh/TorusGrid.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numbers>

namespace topoBench {

TorusGrid::TorusGrid(int columns, int rows) : columns(columns), rows(rows) {
    constexpr double majorRadius = 3.0;
    constexpr double minorRadius = 1.0;
    points.reserve(static_cast<std::size_t>(numVertices()));
    for (int column = 0; column < columns; ++column) {
        const double u = 2.0 * std::numbers::pi * column / columns;
        for (int row = 0; row < rows; ++row) {
            const double v = 2.0 * std::numbers::pi * row / rows;
            const double ring = majorRadius + minorRadius * std::cos(v);
            points.push_back({ring * std::cos(u), ring * std::sin(u), minorRadius * std::sin(v)});
        }
    }
    triangles.reserve(static_cast<std::size_t>(numTriangles()));
    // The lower triangle (a, b, c) and the upper one (a, c, d) of the quad at (column, row).
    const auto lower = [&](int column, int row) {
        triangles.push_back(
            {vertex(column, row), vertex(column + 1, row), vertex(column + 1, row + 1)});
    };
    const auto upper = [&](int column, int row) {
        triangles.push_back(
            {vertex(column, row), vertex(column + 1, row + 1), vertex(column, row + 1)});
    };
    for (int row = 0; row + 1 < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            lower(column, row);
            upper(column, row);
        }
    }
    // The last row closes the torus onto row 0; see the order in the header.
    const int last = rows - 1;
    lower(0, last);
    for (int column = 1; column < columns; ++column) {
        upper(column, last);
        lower(column, last);
    }
    upper(0, last);
}

int TorusGrid::vertex(int column, int row) const {
    column = (column % columns + columns) % columns;
    row = (row % rows + rows) % rows;
    return column * rows + row;
}

std::array<int, 6> TorusGrid::neighbours(int index) const {
    const int column = index / rows;
    const int row = index % rows;
    return {vertex(column + 1, row), vertex(column - 1, row),     vertex(column, row + 1),
            vertex(column, row - 1), vertex(column + 1, row + 1), vertex(column - 1, row - 1)};
}

const TorusGrid& benchGrid() {
    static const TorusGrid grid = [] {
        int columns = 1000;
        int rows = 500;
        if (const char* size = std::getenv("TOPO_BENCH_GRID")) {
            std::sscanf(size, "%dx%d", &columns, &rows);
        }
        return TorusGrid(columns, rows);
    }();
    return grid;
}

double referenceSmoothingSum(const TorusGrid& grid) {
    std::vector<std::array<double, 3>> points = grid.points;
    double sum = 0.0;
    for (int index = 0; index < grid.numVertices(); ++index) {
        std::array<double, 3> mean{};
        for (const int neighbour : grid.neighbours(index)) {
            for (int axis = 0; axis < 3; ++axis) {
                mean[axis] += points[static_cast<std::size_t>(neighbour)][axis];
            }
        }
        for (int axis = 0; axis < 3; ++axis) {
            points[static_cast<std::size_t>(index)][axis] = mean[axis] / 6.0;
        }
    }
    for (const auto& point : points) {
        sum += point[0] * point[0] + point[1] * point[1] + point[2] * point[2];
    }
    return sum;
}

} // namespace topoBench

#pragma once

#include <cmath>

namespace koLinear {

/// \name Tolerances shared by the geometry code
/// Absolute tolerances in model units unless stated otherwise. Every comparison against one of
/// them is strict: a difference equal to the tolerance is outside it.
/// @{

/// Lengths and distances in double precision.
inline constexpr double epsilonTol = 1e-10;

/// Squared lengths and areas in double precision (`epsilonTol` squared).
inline constexpr double epsilon2Tol = 1e-20;

/// Lengths and distances in single precision.
inline constexpr float epsilonTolFlt = 1e-6f;

/// Parallelism: the largest sine of the angle between two directions that still counts as
/// parallel (see `isParallel`).
inline constexpr double parallelTol = 1e-10;

/// Angles, in degrees.
inline constexpr double degreeTol = 1e-6;

/// @}

namespace detail {

// True when each of the `count` elements of `a` differs from the same element of `b` by
// strictly less than `tol`: the element-wise equivalence of every matrix type.
template <class Scalar>
bool allWithin(const Scalar* a, const Scalar* b, int count, Scalar tol) noexcept {
    for (int i = 0; i < count; ++i) {
        if (!(std::fabs(a[i] - b[i]) < tol)) {
            return false;
        }
    }
    return true;
}

} // namespace detail

} // namespace koLinear

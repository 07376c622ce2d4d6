#pragma once

#include <array>
#include <span>

#include "tessar/TessarExport.h"
#include "tessar/linear/AffineMatrix.h"
#include "tessar/linear/HPoint.h"
#include "tessar/linear/Tolerance.h"

namespace koLinear {

/// A projective transform: a 4×4 matrix in double precision multiplying homogeneous row
/// vectors on its left (`h * m`). Element (r, c) is row r, column c; for an affine transform
/// the translation is row 3 and column 3 is (0, 0, 0, 1). Products compose in reading order,
/// as for `AffineMatrix`.
///
/// A matrix counts as singular when its determinant is no more than `epsilonTol` times the
/// product of its row lengths.
class TESSAR_EXPORT ProjMatrix {
public:
    /// The identity.
    constexpr ProjMatrix() noexcept
        : m_{1.0, 0.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0, 1.0} {}
    /// The affine transform `a` as a 4×4 matrix: its twelve elements with a fourth column of
    /// (0, 0, 0, 1).
    constexpr explicit ProjMatrix(const AffineMatrix& a) noexcept : m_{} {
        for (int r = 0; r < 4; ++r) {
            for (int c = 0; c < 3; ++c) {
                (*this)(r, c) = a(r, c);
            }
            (*this)(r, 3) = r == 3 ? 1.0 : 0.0;
        }
    }
    /// Sixteen values in row order (m00, m01, m02, m03, m10, ..., m33).
    constexpr explicit ProjMatrix(std::span<const double, 16> values) noexcept : m_{} {
        for (int i = 0; i < 16; ++i) {
            m_[i] = values[i];
        }
    }

    /// \name Elements
    /// Indices are not checked: rows and columns 0 to 3.
    /// @{
    constexpr double& operator()(int row, int col) noexcept { return m_[row * 4 + col]; }
    constexpr double operator()(int row, int col) const noexcept { return m_[row * 4 + col]; }
    constexpr HPoint row(int r) const noexcept {
        return {m_[r * 4], m_[r * 4 + 1], m_[r * 4 + 2], m_[r * 4 + 3]};
    }
    constexpr void setRow(int r, const HPoint& h) noexcept {
        m_[r * 4] = h.x;
        m_[r * 4 + 1] = h.y;
        m_[r * 4 + 2] = h.z;
        m_[r * 4 + 3] = h.w;
    }
    /// The sixteen values in row order.
    constexpr const double* data() const noexcept { return m_.data(); }
    constexpr double* data() noexcept { return m_.data(); }
    /// @}

    /// Makes this matrix `*this * b`: this transform followed by `b`.
    constexpr ProjMatrix& operator*=(const ProjMatrix& b) noexcept;

    /// The transpose (rows become columns).
    constexpr ProjMatrix transposed() const noexcept {
        ProjMatrix result;
        for (int r = 0; r < 4; ++r) {
            for (int c = 0; c < 4; ++c) {
                result(c, r) = (*this)(r, c);
            }
        }
        return result;
    }

    /// \name Inverses
    /// @{

    /// The determinant of the whole 4×4 matrix. Cost: a 4×4 elimination.
    double determinant() const noexcept;

    /// Sets `out` to the inverse and returns true; returns false and leaves `out` unchanged
    /// when the matrix is singular. `out` may be `*this`. Cost: a 4×4 elimination with
    /// partial pivoting.
    bool inverse(ProjMatrix& out) const noexcept;

    /// The inverse; the identity when the matrix is singular.
    ProjMatrix inverse() const noexcept;
    /// @}

    /// Exact comparison of all sixteen elements; see `equivalent` for a tolerance.
    constexpr bool operator==(const ProjMatrix&) const noexcept = default;

private:
    std::array<double, 16> m_;
};

/// \name Products
/// @{

/// `a` followed by `b`: h * (a * b) = (h * a) * b.
constexpr ProjMatrix operator*(const ProjMatrix& a, const ProjMatrix& b) noexcept {
    ProjMatrix result;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            result(r, c) =
                a(r, 0) * b(0, c) + a(r, 1) * b(1, c) + a(r, 2) * b(2, c) + a(r, 3) * b(3, c);
        }
    }
    return result;
}

constexpr ProjMatrix& ProjMatrix::operator*=(const ProjMatrix& b) noexcept {
    *this = *this * b;
    return *this;
}

/// The homogeneous point transformed: (x, y, z, w) times the matrix.
constexpr HPoint operator*(const HPoint& h, const ProjMatrix& m) noexcept {
    return {h.x * m(0, 0) + h.y * m(1, 0) + h.z * m(2, 0) + h.w * m(3, 0),
            h.x * m(0, 1) + h.y * m(1, 1) + h.z * m(2, 1) + h.w * m(3, 1),
            h.x * m(0, 2) + h.y * m(1, 2) + h.z * m(2, 2) + h.w * m(3, 2),
            h.x * m(0, 3) + h.y * m(1, 3) + h.z * m(2, 3) + h.w * m(3, 3)};
}

constexpr HPoint& operator*=(HPoint& h, const ProjMatrix& m) noexcept { return h = h * m; }
/// @}

/// True when every element of `a` differs from that of `b` by strictly less than `tol`.
inline bool equivalent(const ProjMatrix& a, const ProjMatrix& b, double tol) noexcept {
    return detail::allWithin(a.data(), b.data(), 16, tol);
}

} // namespace koLinear

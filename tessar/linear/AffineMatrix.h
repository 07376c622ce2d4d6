#pragma once

#include <array>
#include <span>

#include "tessar/TessarExport.h"
#include "tessar/linear/Point.h"
#include "tessar/linear/Tolerance.h"
#include "tessar/linear/Vector.h"

namespace koLinear {

namespace detail {

// The arithmetic of the 4 × 3 affine layout, written once for the double and the float
// matrices and their points and vectors.

// `a` followed by `b`.
template <class Matrix>
constexpr Matrix affineProduct(const Matrix& a, const Matrix& b) noexcept {
    Matrix result;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 3; ++c) {
            result(r, c) = a(r, 0) * b(0, c) + a(r, 1) * b(1, c) + a(r, 2) * b(2, c);
        }
    }
    // Row 3 of a is a point, not a direction: b's translation applies to it as well.
    result.setTranslation(result.translation() + b.translation());
    return result;
}

// (x, y, z) times the 3×3 part.
template <class Triple, class Matrix>
constexpr Triple affineLinear(const Triple& v, const Matrix& m) noexcept {
    return {v.x * m(0, 0) + v.y * m(1, 0) + v.z * m(2, 0),
            v.x * m(0, 1) + v.y * m(1, 1) + v.z * m(2, 1),
            v.x * m(0, 2) + v.y * m(1, 2) + v.z * m(2, 2)};
}

// (x, y, z, 1) times the matrix.
template <class Triple, class Matrix>
constexpr Triple affinePoint(const Triple& p, const Matrix& m) noexcept {
    Triple result = affineLinear(p, m);
    result.x += m(3, 0);
    result.y += m(3, 1);
    result.z += m(3, 2);
    return result;
}

} // namespace detail

/// An affine transform of space in double precision, stored as 4 rows × 3 columns: the
/// linear (3×3) part in rows 0 to 2 and the translation in row 3. The matrix multiplies row
/// vectors on its left: `p * m` is (p.x, p.y, p.z, 1) times the matrix, so row i is the
/// image of axis i and row 3 the image of the origin. Products compose in reading order:
/// `p * (a * b)` is `(p * a) * b`, a applied first.
///
/// A matrix counts as singular when the determinant of its 3×3 part is no more than
/// `epsilonTol` times the product of that part's row lengths, that is when its rows are
/// nearly dependent, whatever their scale. Inverting a singular matrix fails.
class TESSAR_EXPORT AffineMatrix {
public:
    /// The identity.
    constexpr AffineMatrix() noexcept : AffineMatrix(1.0) {}
    /// `s` times the identity in the 3×3 part and no translation: `AffineMatrix(1.0)` is the
    /// identity, `AffineMatrix(0.0)` the zero matrix.
    constexpr explicit AffineMatrix(double s) noexcept
        : m_{s, 0.0, 0.0, 0.0, s, 0.0, 0.0, 0.0, s, 0.0, 0.0, 0.0} {}
    /// The matrix with the given rows: the images of the x, y and z axes, then the
    /// translation.
    constexpr AffineMatrix(const Vector& row0, const Vector& row1, const Vector& row2,
                           const Vector& translation) noexcept
        : m_{row0.x, row0.y, row0.z, row1.x,        row1.y,        row1.z,
             row2.x, row2.y, row2.z, translation.x, translation.y, translation.z} {}
    /// Twelve values in row order (m00, m01, m02, m10, ..., m32).
    constexpr explicit AffineMatrix(std::span<const double, 12> values) noexcept : m_{} {
        for (int i = 0; i < 12; ++i) {
            m_[i] = values[i];
        }
    }

    /// \name Common transforms
    /// @{
    static constexpr AffineMatrix makeTranslation(const Vector& v) noexcept {
        return {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}, v};
    }
    static constexpr AffineMatrix makeScale(double sx, double sy, double sz) noexcept {
        return {{sx, 0.0, 0.0}, {0.0, sy, 0.0}, {0.0, 0.0, sz}, {}};
    }
    /// The rotation by `radians` about the line through the origin along `axis`,
    /// counter-clockwise when seen from the tip of the axis looking back at the origin (the
    /// right-hand rule). The axis need not be unit length; a zero axis gives the identity.
    static AffineMatrix makeRotation(const Vector& axis, double radians) noexcept;
    /// @}

    /// \name Elements
    /// Indices are not checked: rows 0 to 3, columns 0 to 2.
    /// @{
    constexpr double& operator()(int row, int col) noexcept { return m_[row * 3 + col]; }
    constexpr double operator()(int row, int col) const noexcept { return m_[row * 3 + col]; }
    constexpr Vector row(int r) const noexcept { return {m_[r * 3], m_[r * 3 + 1], m_[r * 3 + 2]}; }
    constexpr void setRow(int r, const Vector& v) noexcept {
        m_[r * 3] = v.x;
        m_[r * 3 + 1] = v.y;
        m_[r * 3 + 2] = v.z;
    }
    constexpr Vector translation() const noexcept { return row(3); }
    constexpr void setTranslation(const Vector& v) noexcept { setRow(3, v); }
    /// The twelve values in row order.
    constexpr const double* data() const noexcept { return m_.data(); }
    constexpr double* data() noexcept { return m_.data(); }
    /// @}

    /// \name Building
    /// @{

    /// Makes the matrix the frame with axes `x`, `y`, `z` (rows 0 to 2) at `origin` (row 3):
    /// it maps the unit axes to the given vectors and the origin to `origin`.
    constexpr AffineMatrix& setFrame(const Point& origin, const Vector& x, const Vector& y,
                                     const Vector& z) noexcept {
        *this = AffineMatrix(x, y, z, Vector(origin));
        return *this;
    }

    /// Puts a translation by `v` before this transform: afterwards p maps where p + v mapped
    /// before, so the point −v maps where the origin did.
    constexpr AffineMatrix& translate(const Vector& v) noexcept {
        const Vector shift = v.x * row(0) + v.y * row(1) + v.z * row(2);
        setTranslation(translation() + shift);
        return *this;
    }

    /// Makes this matrix `*this * b`: this transform followed by `b`.
    constexpr AffineMatrix& operator*=(const AffineMatrix& b) noexcept;
    /// @}

    /// \name Inverses
    /// @{

    /// The determinant of the 3×3 part (negative for a mirroring transform).
    constexpr double determinant() const noexcept {
        return m_[0] * (m_[4] * m_[8] - m_[5] * m_[7]) - m_[1] * (m_[3] * m_[8] - m_[5] * m_[6]) +
               m_[2] * (m_[3] * m_[7] - m_[4] * m_[6]);
    }

    /// Sets `out` to the inverse transform and returns true; returns false and leaves `out`
    /// unchanged when the matrix is singular (see the class comment). `out` may be `*this`.
    bool inverse(AffineMatrix& out) const noexcept;

    /// The inverse transform; the identity when the matrix is singular.
    AffineMatrix inverse() const noexcept;

    /// Sets `out` to the matrix that transforms surface normals: the inverse transpose of the
    /// 3×3 part, with no translation. Multiply a normal by it as a vector and normalise the
    /// result. Returns false and leaves `out` unchanged when the matrix is singular.
    bool normalMatrix(AffineMatrix& out) const noexcept;
    /// @}

    /// Exact comparison of all twelve elements; see `equivalent` for a tolerance.
    constexpr bool operator==(const AffineMatrix&) const noexcept = default;

private:
    std::array<double, 12> m_;
};

/// \name Products
/// @{

/// `a` followed by `b`: p * (a * b) = (p * a) * b.
constexpr AffineMatrix operator*(const AffineMatrix& a, const AffineMatrix& b) noexcept {
    return detail::affineProduct(a, b);
}

constexpr AffineMatrix& AffineMatrix::operator*=(const AffineMatrix& b) noexcept {
    *this = *this * b;
    return *this;
}

/// The point transformed, translation included.
constexpr Point operator*(const Point& p, const AffineMatrix& m) noexcept {
    return detail::affinePoint(p, m);
}

/// The vector transformed by the 3×3 part only (a displacement ignores translation). A
/// `Normal` multiplies as a vector; use `normalMatrix` for surface normals.
constexpr Vector operator*(const Vector& v, const AffineMatrix& m) noexcept {
    return detail::affineLinear(v, m);
}

constexpr Point& operator*=(Point& p, const AffineMatrix& m) noexcept { return p = p * m; }
constexpr Vector& operator*=(Vector& v, const AffineMatrix& m) noexcept { return v = v * m; }
/// @}

/// True when every element of `a` differs from the same element of `b` by strictly less
/// than `tol`.
inline bool equivalent(const AffineMatrix& a, const AffineMatrix& b, double tol) noexcept {
    return detail::allWithin(a.data(), b.data(), 12, tol);
}

} // namespace koLinear

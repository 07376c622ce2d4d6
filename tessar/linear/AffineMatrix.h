#pragma once

#include <array>
#include <concepts>
#include <span>
#include <type_traits>

#include "tessar/TessarExport.h"
#include "tessar/linear/LinearScalar.h"
#include "tessar/linear/Point.h"
#include "tessar/linear/Tolerance.h"
#include "tessar/linear/Vector.h"

namespace koLinear {

/// An affine transform of space, stored as 4 rows × 3 columns: the linear (3×3) part in rows
/// 0 to 2 and the translation in row 3. The matrix multiplies row vectors on its left:
/// `p * m` is (p.x, p.y, p.z, 1) times the matrix, so row i is the image of axis i and row 3
/// the image of the origin. Products compose in reading order: `p * (a * b)` is
/// `(p * a) * b`, a applied first.
///
/// A matrix counts as singular when the determinant of its 3×3 part is no more than
/// `epsilonTol` times the product of that part's row lengths, that is when its rows are
/// nearly dependent, whatever their scale. Inverting a singular matrix fails.
///
/// `AffineMatrix` holds doubles. `AffineMatrixFlt` holds floats, the form in which mesh
/// placements store their transforms: its products and point transforms are carried out in
/// float, while its determinant, inverse and normal matrix are computed in double and
/// rounded, with the same singularity rule. Conversions between the two are explicit both
/// ways.
template <LinearScalar T>
class BasicAffineMatrix {
public:
    /// The identity.
    constexpr BasicAffineMatrix() noexcept : BasicAffineMatrix(T(1)) {}
    /// `s` times the identity in the 3×3 part and no translation: `AffineMatrix(1.0)` is the
    /// identity, `AffineMatrix(0.0)` the zero matrix.
    constexpr explicit BasicAffineMatrix(T s) noexcept : m_{s, 0, 0, 0, s, 0, 0, 0, s, 0, 0, 0} {}
    /// The matrix with the given rows: the images of the x, y and z axes, then the
    /// translation.
    constexpr BasicAffineMatrix(const BasicVector<T>& row0, const BasicVector<T>& row1,
                                const BasicVector<T>& row2,
                                const BasicVector<T>& translation) noexcept
        : m_{row0.x, row0.y, row0.z, row1.x,        row1.y,        row1.z,
             row2.x, row2.y, row2.z, translation.x, translation.y, translation.z} {}
    /// Twelve values in row order (m00, m01, m02, m10, ..., m32).
    constexpr explicit BasicAffineMatrix(std::span<const T, 12> values) noexcept : m_{} {
        for (int i = 0; i < 12; ++i) {
            m_[i] = values[i];
        }
    }
    /// Each element of `m` rounded to the nearest float, or widened exactly to double.
    constexpr explicit BasicAffineMatrix(
        const BasicAffineMatrix<detail::OtherScalar<T>>& m) noexcept
        : m_{} {
        for (int i = 0; i < 12; ++i) {
            m_[i] = static_cast<T>(m.data()[i]);
        }
    }

    /// \name Common transforms, for double matrices only
    /// @{
    static constexpr BasicAffineMatrix makeTranslation(
        const BasicVector<T>& v) noexcept requires std::same_as<T, double> {
        return {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}, v};
    }
    static constexpr BasicAffineMatrix makeScale(T sx, T sy,
                                                 T sz) noexcept requires std::same_as<T, double> {
        return {{sx, 0.0, 0.0}, {0.0, sy, 0.0}, {0.0, 0.0, sz}, {}};
    }
    /// The rotation by `radians` about the line through the origin along `axis`,
    /// counter-clockwise when seen from the tip of the axis looking back at the origin (the
    /// right-hand rule). The axis need not be unit length; a zero axis gives the identity.
    TESSAR_EXPORT static BasicAffineMatrix makeRotation(
        const BasicVector<T>& axis, T radians) noexcept requires std::same_as<T, double>;
    /// @}

    /// \name Elements
    /// Indices are not checked: rows 0 to 3, columns 0 to 2.
    /// @{
    constexpr T& operator()(int row, int col) noexcept { return m_[row * 3 + col]; }
    constexpr T operator()(int row, int col) const noexcept { return m_[row * 3 + col]; }
    constexpr BasicVector<T> row(int r) const noexcept {
        return {m_[r * 3], m_[r * 3 + 1], m_[r * 3 + 2]};
    }
    constexpr void setRow(int r, const BasicVector<T>& v) noexcept {
        m_[r * 3] = v.x;
        m_[r * 3 + 1] = v.y;
        m_[r * 3 + 2] = v.z;
    }
    constexpr BasicVector<T> translation() const noexcept { return row(3); }
    constexpr void setTranslation(const BasicVector<T>& v) noexcept { setRow(3, v); }
    /// The twelve values in row order.
    constexpr const T* data() const noexcept { return m_.data(); }
    constexpr T* data() noexcept { return m_.data(); }
    /// @}

    /// \name Building, in the matrix's scalar
    /// @{

    /// Makes the matrix the frame with axes `x`, `y`, `z` (rows 0 to 2) at `origin` (row 3):
    /// it maps the unit axes to the given vectors and the origin to `origin`.
    constexpr BasicAffineMatrix& setFrame(const BasicPoint<T>& origin, const BasicVector<T>& x,
                                          const BasicVector<T>& y,
                                          const BasicVector<T>& z) noexcept {
        *this = BasicAffineMatrix(x, y, z, BasicVector<T>(origin));
        return *this;
    }

    /// Puts a translation by `v` before this transform: afterwards p maps where p + v mapped
    /// before, so the point −v maps where the origin did.
    constexpr BasicAffineMatrix& translate(const BasicVector<T>& v) noexcept {
        const BasicVector<T> shift = v.x * row(0) + v.y * row(1) + v.z * row(2);
        setTranslation(translation() + shift);
        return *this;
    }

    /// Makes this matrix `*this * b`: this transform followed by `b`.
    constexpr BasicAffineMatrix& operator*=(const BasicAffineMatrix& b) noexcept {
        *this = *this * b;
        return *this;
    }
    /// @}

    /// \name Inverses, computed in double
    /// @{

    /// The determinant of the 3×3 part (negative for a mirroring transform).
    constexpr T determinant() const noexcept {
        // Each element widened first, so that a float matrix gets the determinant of its
        // exact double form, rounded once.
        const auto e = [this](int i) { return static_cast<double>(m_[i]); };
        return static_cast<T>(e(0) * (e(4) * e(8) - e(5) * e(7)) -
                              e(1) * (e(3) * e(8) - e(5) * e(6)) +
                              e(2) * (e(3) * e(7) - e(4) * e(6)));
    }

    /// Sets `out` to the inverse transform and returns true; returns false and leaves `out`
    /// unchanged when the matrix is singular (see the class comment). `out` may be `*this`.
    TESSAR_EXPORT bool inverse(BasicAffineMatrix& out) const noexcept;

    /// The inverse transform; the identity when the matrix is singular.
    TESSAR_EXPORT BasicAffineMatrix inverse() const noexcept;

    /// Sets `out` to the matrix that transforms surface normals: the inverse transpose of the
    /// 3×3 part, with no translation. Multiply a normal by it as a vector and normalise the
    /// result. Returns false and leaves `out` unchanged when the matrix is singular.
    TESSAR_EXPORT bool normalMatrix(BasicAffineMatrix& out) const noexcept;
    /// @}

    /// Exact comparison of all twelve elements; see `equivalent` for a tolerance.
    constexpr bool operator==(const BasicAffineMatrix&) const noexcept = default;

private:
    std::array<T, 12> m_;
};

// The inverses and the rotation are defined in AffineMatrix.cpp, which compiles them into the
// library for both scalars.

using AffineMatrix = BasicAffineMatrix<double>;
using AffineMatrixFlt = BasicAffineMatrix<float>;

/// \name Products, in the matrix's scalar
/// The matrix fixes the scalar; a point or vector multiplied by it converts as for an
/// ordinary function (a `Normal` to a `Vector`).
/// @{

/// `a` followed by `b`: p * (a * b) = (p * a) * b.
template <LinearScalar T>
constexpr BasicAffineMatrix<T> operator*(
    const BasicAffineMatrix<T>& a, const std::type_identity_t<BasicAffineMatrix<T>>& b) noexcept {
    BasicAffineMatrix<T> result;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 3; ++c) {
            result(r, c) = a(r, 0) * b(0, c) + a(r, 1) * b(1, c) + a(r, 2) * b(2, c);
        }
    }
    // Row 3 of a is a point, not a direction: b's translation applies to it as well.
    result.setTranslation(result.translation() + b.translation());
    return result;
}

/// The vector transformed by the 3×3 part only (a displacement ignores translation). A
/// `Normal` multiplies as a vector; use `normalMatrix` for surface normals.
template <LinearScalar T>
constexpr BasicVector<T> operator*(const std::type_identity_t<BasicVector<T>>& v,
                                   const BasicAffineMatrix<T>& m) noexcept {
    return {v.x * m(0, 0) + v.y * m(1, 0) + v.z * m(2, 0),
            v.x * m(0, 1) + v.y * m(1, 1) + v.z * m(2, 1),
            v.x * m(0, 2) + v.y * m(1, 2) + v.z * m(2, 2)};
}

/// The point transformed, translation included.
template <LinearScalar T>
constexpr BasicPoint<T> operator*(const std::type_identity_t<BasicPoint<T>>& p,
                                  const BasicAffineMatrix<T>& m) noexcept {
    return BasicPoint<T>(BasicVector<T>(p) * m + m.translation());
}

template <LinearScalar T>
constexpr BasicPoint<T>& operator*=(BasicPoint<T>& p,
                                    const std::type_identity_t<BasicAffineMatrix<T>>& m) noexcept {
    return p = p * m;
}
template <LinearScalar T>
constexpr BasicVector<T>& operator*=(BasicVector<T>& v,
                                     const std::type_identity_t<BasicAffineMatrix<T>>& m) noexcept {
    return v = v * m;
}
/// @}

/// True when every element of `a` differs from the same element of `b` by strictly less
/// than `tol`.
template <LinearScalar T>
bool equivalent(const BasicAffineMatrix<T>& a, const std::type_identity_t<BasicAffineMatrix<T>>& b,
                std::type_identity_t<T> tol) noexcept {
    return detail::allWithin(a.data(), b.data(), 12, tol);
}

} // namespace koLinear

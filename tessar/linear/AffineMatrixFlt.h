#pragma once

#include <array>
#include <span>

#include "tessar/linear/AffineMatrix.h"
#include "tessar/linear/PointFlt.h"
#include "tessar/linear/Tolerance.h"
#include "tessar/linear/VectorFlt.h"

namespace koLinear {

/// An affine transform in single precision, laid out and applied exactly like
/// `AffineMatrix` (4 rows × 3 columns, row vectors on the left, translation in row 3): the
/// form in which mesh placements store their transforms. Products and point transforms are
/// carried out in float; the determinant, the inverse and the normal matrix are computed in
/// double and rounded, with the singularity rule of `AffineMatrix`. Conversions to and from
/// `AffineMatrix` are explicit both ways.
class AffineMatrixFlt {
public:
    /// The identity.
    constexpr AffineMatrixFlt() noexcept : AffineMatrixFlt(1.0f) {}
    /// `s` times the identity in the 3×3 part and no translation.
    constexpr explicit AffineMatrixFlt(float s) noexcept
        : m_{s, 0.0f, 0.0f, 0.0f, s, 0.0f, 0.0f, 0.0f, s, 0.0f, 0.0f, 0.0f} {}
    /// The matrix with the given rows: the images of the three axes, then the translation.
    constexpr AffineMatrixFlt(const VectorFlt& row0, const VectorFlt& row1, const VectorFlt& row2,
                              const VectorFlt& translation) noexcept
        : m_{row0.x, row0.y, row0.z, row1.x,        row1.y,        row1.z,
             row2.x, row2.y, row2.z, translation.x, translation.y, translation.z} {}
    /// Twelve values in row order.
    constexpr explicit AffineMatrixFlt(std::span<const float, 12> values) noexcept : m_{} {
        for (int i = 0; i < 12; ++i) {
            m_[i] = values[i];
        }
    }
    /// Each element of `m` rounded to the nearest float.
    constexpr explicit AffineMatrixFlt(const AffineMatrix& m) noexcept : m_{} {
        for (int i = 0; i < 12; ++i) {
            m_[i] = static_cast<float>(m.data()[i]);
        }
    }
    /// Each element widened exactly to double.
    constexpr explicit operator AffineMatrix() const noexcept {
        AffineMatrix result;
        for (int i = 0; i < 12; ++i) {
            result.data()[i] = m_[i];
        }
        return result;
    }

    /// \name Elements
    /// Indices are not checked: rows 0 to 3, columns 0 to 2.
    /// @{
    constexpr float& operator()(int row, int col) noexcept { return m_[row * 3 + col]; }
    constexpr float operator()(int row, int col) const noexcept { return m_[row * 3 + col]; }
    constexpr VectorFlt row(int r) const noexcept {
        return {m_[r * 3], m_[r * 3 + 1], m_[r * 3 + 2]};
    }
    constexpr void setRow(int r, const VectorFlt& v) noexcept {
        m_[r * 3] = v.x;
        m_[r * 3 + 1] = v.y;
        m_[r * 3 + 2] = v.z;
    }
    constexpr VectorFlt translation() const noexcept { return row(3); }
    constexpr void setTranslation(const VectorFlt& v) noexcept { setRow(3, v); }
    /// The twelve values in row order.
    constexpr const float* data() const noexcept { return m_.data(); }
    constexpr float* data() noexcept { return m_.data(); }
    /// @}

    /// \name Building
    /// @{

    /// Makes the matrix the frame with axes `x`, `y`, `z` (rows 0 to 2) at `origin` (row 3).
    constexpr AffineMatrixFlt& setFrame(const PointFlt& origin, const VectorFlt& x,
                                        const VectorFlt& y, const VectorFlt& z) noexcept {
        *this = AffineMatrixFlt(x, y, z, VectorFlt(origin));
        return *this;
    }

    /// Puts a translation by `v` before this transform, as `AffineMatrix::translate`.
    constexpr AffineMatrixFlt& translate(const VectorFlt& v) noexcept {
        const VectorFlt shift = v.x * row(0) + v.y * row(1) + v.z * row(2);
        setTranslation(translation() + shift);
        return *this;
    }

    /// Makes this matrix `*this * b`: this transform followed by `b`.
    constexpr AffineMatrixFlt& operator*=(const AffineMatrixFlt& b) noexcept;
    /// @}

    /// \name Inverses, computed in double
    /// @{
    float determinant() const noexcept {
        return static_cast<float>(AffineMatrix(*this).determinant());
    }

    /// Sets `out` to the inverse (rounded to float) and returns true; returns false and
    /// leaves `out` unchanged when the matrix is singular.
    bool inverse(AffineMatrixFlt& out) const noexcept {
        AffineMatrix result;
        if (!AffineMatrix(*this).inverse(result)) {
            return false;
        }
        out = AffineMatrixFlt(result);
        return true;
    }

    /// The inverse; the identity when the matrix is singular.
    AffineMatrixFlt inverse() const noexcept {
        return AffineMatrixFlt(AffineMatrix(*this).inverse());
    }

    /// As `AffineMatrix::normalMatrix`: false, `out` unchanged, when singular.
    bool normalMatrix(AffineMatrixFlt& out) const noexcept {
        AffineMatrix result;
        if (!AffineMatrix(*this).normalMatrix(result)) {
            return false;
        }
        out = AffineMatrixFlt(result);
        return true;
    }
    /// @}

    constexpr bool operator==(const AffineMatrixFlt&) const noexcept = default;

private:
    std::array<float, 12> m_;
};

/// \name Products, in float
/// @{

/// `a` followed by `b`.
constexpr AffineMatrixFlt operator*(const AffineMatrixFlt& a, const AffineMatrixFlt& b) noexcept {
    return detail::affineProduct(a, b);
}

constexpr AffineMatrixFlt& AffineMatrixFlt::operator*=(const AffineMatrixFlt& b) noexcept {
    *this = *this * b;
    return *this;
}

/// The point transformed, translation included.
constexpr PointFlt operator*(const PointFlt& p, const AffineMatrixFlt& m) noexcept {
    return detail::affinePoint(p, m);
}

/// The vector transformed by the 3×3 part only.
constexpr VectorFlt operator*(const VectorFlt& v, const AffineMatrixFlt& m) noexcept {
    return detail::affineLinear(v, m);
}

constexpr PointFlt& operator*=(PointFlt& p, const AffineMatrixFlt& m) noexcept { return p = p * m; }
constexpr VectorFlt& operator*=(VectorFlt& v, const AffineMatrixFlt& m) noexcept {
    return v = v * m;
}
/// @}

/// True when every element of `a` differs from that of `b` by strictly less than `tol`.
inline bool equivalent(const AffineMatrixFlt& a, const AffineMatrixFlt& b, float tol) noexcept {
    return detail::allWithin(a.data(), b.data(), 12, tol);
}

} // namespace koLinear

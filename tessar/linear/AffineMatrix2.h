#pragma once

#include <array>
#include <cmath>
#include <span>

#include "tessar/TessarExport.h"
#include "tessar/linear/Point2.h"
#include "tessar/linear/Tolerance.h"
#include "tessar/linear/Tuple2.h"

namespace koLinear {

/// An affine transform of the plane in double precision, stored as 3 rows × 2 columns: the
/// linear (2×2) part in rows 0 and 1 and the translation in row 2. It follows the
/// conventions of `AffineMatrix`: row vectors on the left (`p * m`), products in reading
/// order, and singular when the 2×2 determinant is no more than `epsilonTol` times the
/// product of the two row lengths.
class TESSAR_EXPORT AffineMatrix2 {
public:
    /// The identity.
    constexpr AffineMatrix2() noexcept : AffineMatrix2(1.0) {}
    /// `s` times the identity in the 2×2 part and no translation.
    constexpr explicit AffineMatrix2(double s) noexcept : m_{s, 0.0, 0.0, s, 0.0, 0.0} {}
    /// The matrix with the given rows: the images of the x and y axes, then the translation.
    constexpr AffineMatrix2(const Tuple2& row0, const Tuple2& row1,
                            const Tuple2& translation) noexcept
        : m_{row0.x, row0.y, row1.x, row1.y, translation.x, translation.y} {}
    /// Six values in row order (m00, m01, m10, m11, m20, m21).
    constexpr explicit AffineMatrix2(std::span<const double, 6> values) noexcept : m_{} {
        for (int i = 0; i < 6; ++i) {
            m_[i] = values[i];
        }
    }

    /// \name Common transforms
    /// @{
    static constexpr AffineMatrix2 makeTranslation(const Tuple2& t) noexcept {
        return {{1.0, 0.0}, {0.0, 1.0}, t};
    }
    static constexpr AffineMatrix2 makeScale(double sx, double sy) noexcept {
        return {{sx, 0.0}, {0.0, sy}, {}};
    }
    /// The counter-clockwise rotation by `radians` about the origin.
    static AffineMatrix2 makeRotation(double radians) noexcept {
        const double c = std::cos(radians);
        const double s = std::sin(radians);
        return {{c, s}, {-s, c}, {}};
    }
    /// @}

    /// \name Elements
    /// Indices are not checked: rows 0 to 2, columns 0 and 1.
    /// @{
    constexpr double& operator()(int row, int col) noexcept { return m_[row * 2 + col]; }
    constexpr double operator()(int row, int col) const noexcept { return m_[row * 2 + col]; }
    constexpr Tuple2 row(int r) const noexcept { return {m_[r * 2], m_[r * 2 + 1]}; }
    constexpr void setRow(int r, const Tuple2& t) noexcept {
        m_[r * 2] = t.x;
        m_[r * 2 + 1] = t.y;
    }
    constexpr Tuple2 translation() const noexcept { return row(2); }
    constexpr void setTranslation(const Tuple2& t) noexcept { setRow(2, t); }
    /// The six values in row order.
    constexpr const double* data() const noexcept { return m_.data(); }
    constexpr double* data() noexcept { return m_.data(); }
    /// @}

    /// \name Building
    /// @{

    /// Makes the matrix the frame with axes `x`, `y` (rows 0 and 1) at `origin` (row 2).
    constexpr AffineMatrix2& setFrame(const Point2& origin, const Tuple2& x,
                                      const Tuple2& y) noexcept {
        *this = AffineMatrix2(x, y, Tuple2(origin));
        return *this;
    }

    /// Puts a translation by `t` before this transform: the point −t maps where the origin
    /// did.
    constexpr AffineMatrix2& translate(const Tuple2& t) noexcept {
        setTranslation(translation() + t.x * row(0) + t.y * row(1));
        return *this;
    }

    /// Makes this matrix `*this * b`: this transform followed by `b`.
    constexpr AffineMatrix2& operator*=(const AffineMatrix2& b) noexcept;
    /// @}

    /// \name Inverses
    /// @{

    /// The determinant of the 2×2 part.
    constexpr double determinant() const noexcept { return m_[0] * m_[3] - m_[1] * m_[2]; }

    /// Sets `out` to the inverse transform and returns true; returns false and leaves `out`
    /// unchanged when the matrix is singular. `out` may be `*this`.
    bool inverse(AffineMatrix2& out) const noexcept;

    /// The inverse transform; the identity when the matrix is singular.
    AffineMatrix2 inverse() const noexcept;
    /// @}

    constexpr bool operator==(const AffineMatrix2&) const noexcept = default;

private:
    std::array<double, 6> m_;
};

/// \name Products
/// @{

/// `a` followed by `b`: p * (a * b) = (p * a) * b.
constexpr AffineMatrix2 operator*(const AffineMatrix2& a, const AffineMatrix2& b) noexcept {
    AffineMatrix2 result;
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 2; ++c) {
            result(r, c) = a(r, 0) * b(0, c) + a(r, 1) * b(1, c);
        }
    }
    result.setTranslation(result.translation() + b.translation());
    return result;
}

/// The point transformed, translation included.
constexpr Point2 operator*(const Point2& p, const AffineMatrix2& m) noexcept {
    return {p.x * m(0, 0) + p.y * m(1, 0) + m(2, 0), p.x * m(0, 1) + p.y * m(1, 1) + m(2, 1)};
}

/// The displacement transformed by the 2×2 part only.
constexpr Tuple2 operator*(const Tuple2& t, const AffineMatrix2& m) noexcept {
    return {t.x * m(0, 0) + t.y * m(1, 0), t.x * m(0, 1) + t.y * m(1, 1)};
}

constexpr Point2& operator*=(Point2& p, const AffineMatrix2& m) noexcept { return p = p * m; }
constexpr Tuple2& operator*=(Tuple2& t, const AffineMatrix2& m) noexcept { return t = t * m; }
/// @}

constexpr AffineMatrix2& AffineMatrix2::operator*=(const AffineMatrix2& b) noexcept {
    *this = *this * b;
    return *this;
}

/// True when every element of `a` differs from that of `b` by strictly less than `tol`.
inline bool equivalent(const AffineMatrix2& a, const AffineMatrix2& b, double tol) noexcept {
    return detail::allWithin(a.data(), b.data(), 6, tol);
}

} // namespace koLinear

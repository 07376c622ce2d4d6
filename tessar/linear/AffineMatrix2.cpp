#include "tessar/linear/AffineMatrix2.h"

#include "tessar/linear/detail/Conditioning.h"

namespace koLinear {

bool AffineMatrix2::inverse(AffineMatrix2& out) const noexcept {
    const double det = determinant();
    if (detail::nearlySingular(det, row(0).length() * row(1).length())) {
        return false;
    }
    AffineMatrix2 result({m_[3] / det, -m_[1] / det}, {-m_[2] / det, m_[0] / det}, {});
    result.setTranslation(-(translation() * result));
    out = result;
    return true;
}

AffineMatrix2 AffineMatrix2::inverse() const noexcept {
    AffineMatrix2 result(1.0);
    inverse(result);
    return result;
}

} // namespace koLinear

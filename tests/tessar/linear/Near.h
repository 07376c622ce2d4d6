#pragma once

#include <array>
#include <bit>
#include <cmath>

namespace koLinearTest {

// True when every element of `actual` is within `tol` (inclusive) of the same element of
// `expected`. The types compared here are made of doubles and nothing else.
template <class T>
bool near(const T& actual, const T& expected, double tol) {
    using Elements = std::array<double, sizeof(T) / sizeof(double)>;
    const Elements a = std::bit_cast<Elements>(actual);
    const Elements e = std::bit_cast<Elements>(expected);
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (!(std::fabs(a[i] - e[i]) <= tol)) {
            return false;
        }
    }
    return true;
}

} // namespace koLinearTest

#pragma once

#include <cmath>
#include <sstream>
#include <utility>

#include <gtest/gtest.h>

namespace koLinearTest {

// Compares every element of two values of the same type within `tol` (inclusive), through
// data() for matrices and operator[] for the small types, and prints both when they differ.
// Every member of these types is an element, so the count follows from the type's size.
template <class T>
::testing::AssertionResult near(const T& actual, const T& expected, double tol) {
    constexpr bool isMatrix = requires(const T& value) { value.data(); };
    auto element = [](const T& value, int i) -> double {
        if constexpr (isMatrix) {
            return value.data()[i];
        } else {
            return value[i];
        }
    };
    constexpr int count = [] {
        if constexpr (isMatrix) {
            return static_cast<int>(sizeof(T) / sizeof(*std::declval<const T&>().data()));
        } else {
            return static_cast<int>(sizeof(T) / sizeof(std::declval<const T&>()[0]));
        }
    }();
    bool same = true;
    std::ostringstream text;
    text.precision(17);
    for (int i = 0; i < count; ++i) {
        same = same && std::fabs(element(actual, i) - element(expected, i)) <= tol;
        text << (i ? ", " : "actual (") << element(actual, i);
    }
    for (int i = 0; i < count; ++i) {
        text << (i ? ", " : ") expected (") << element(expected, i);
    }
    text << ") within " << tol;
    return same ? ::testing::AssertionSuccess() : ::testing::AssertionFailure() << text.str();
}

} // namespace koLinearTest

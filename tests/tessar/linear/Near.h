#pragma once

#include <cmath>
#include <sstream>
#include <utility>

#include <gtest/gtest.h>

namespace koLinearTest {

// Element i of a value: through data() for matrices, through operator[] for the small types.
template <class T>
double element(const T& value, int i) {
    if constexpr (requires { value.data(); }) {
        return value.data()[i];
    } else {
        return value[i];
    }
}

// The number of elements: every member of these types is an element.
template <class T>
constexpr int elementCount() {
    if constexpr (requires(const T& v) { v.data(); }) {
        return static_cast<int>(sizeof(T) / sizeof(*std::declval<const T&>().data()));
    } else {
        return static_cast<int>(sizeof(T) / sizeof(std::declval<const T&>()[0]));
    }
}

// Compares every element of two values of the same type within `tol` (inclusive) and prints
// both in full when they differ.
template <class T>
::testing::AssertionResult near(const T& actual, const T& expected, double tol) {
    constexpr int count = elementCount<T>();
    bool same = true;
    std::ostringstream text;
    text.precision(17);
    text << "actual (";
    for (int i = 0; i < count; ++i) {
        same = same && std::fabs(element(actual, i) - element(expected, i)) <= tol;
        text << (i ? ", " : "") << element(actual, i);
    }
    text << ") expected (";
    for (int i = 0; i < count; ++i) {
        text << (i ? ", " : "") << element(expected, i);
    }
    text << ") within " << tol;
    return same ? ::testing::AssertionSuccess() : ::testing::AssertionFailure() << text.str();
}

}  // namespace koLinearTest

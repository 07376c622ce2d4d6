#pragma once

#include <concepts>
#include <type_traits>

namespace koLinear {

/// The scalar types of the vector, point and matrix templates: double for computation, float
/// for what meshes store. Each template computes in its own scalar and converts to and from
/// the other one only explicitly.
template <class T>
concept LinearScalar = std::same_as<T, double> || std::same_as<T, float>;

namespace detail {

// The other of the two scalars: the one a template converts from, rounding to the nearest
// float or widening exactly to double.
template <LinearScalar T>
using OtherScalar = std::conditional_t<std::same_as<T, double>, float, double>;

} // namespace detail

} // namespace koLinear

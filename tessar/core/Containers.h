#pragma once

#include <functional>
#include <list>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace ko {

/// \name Containers
/// The container names used across the libraries; they are the standard ones.
/// @{
template <class T, class Allocator = std::allocator<T>>
using vector = std::vector<T, Allocator>;

template <class T, class Allocator = std::allocator<T>>
using list = std::list<T, Allocator>;

template <class Key, class Compare = std::less<Key>, class Allocator = std::allocator<Key>>
using set = std::set<Key, Compare, Allocator>;

template <class Key>
using hash = std::hash<Key>;

template <class T = void>
using equal_to = std::equal_to<T>;

template <class Key, class Hash = hash<Key>, class KeyEqual = equal_to<Key>,
          class Allocator = std::allocator<Key>>
using unordered_set = std::unordered_set<Key, Hash, KeyEqual, Allocator>;

template <class Key, class T, class Hash = hash<Key>, class KeyEqual = equal_to<Key>,
          class Allocator = std::allocator<std::pair<const Key, T>>>
using unordered_map = std::unordered_map<Key, T, Hash, KeyEqual, Allocator>;
/// @}

} // namespace ko

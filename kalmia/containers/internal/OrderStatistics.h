#pragma once

#include <cstddef>
#include <vector>

namespace kalmia {

/// Sorts ascending; a NaN, which has no place among the numbers, goes behind all of them.
template <class T>
void SortAscending(std::vector<T>& values);

/// Median of `count` sorted values: the middle one, or the mean of the two middle ones; -99 of none.
template <class T>
long double MedianOfSorted(const T* values, std::size_t count);

}  // namespace kalmia

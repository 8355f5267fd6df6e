#include "kalmia/containers/internal/OrderStatistics.h"

#include <algorithm>
#include <cmath>

#include "kalmia/containers/Missing.h"

namespace kalmia {

template <class T>
void SortAscending(std::vector<T>& values) {
  const auto numbersEnd = std::partition(values.begin(), values.end(), [](T x) { return !std::isnan(x); });
  std::sort(values.begin(), numbersEnd);
}

template <class T>
long double MedianOfSorted(const T* values, std::size_t count) {
  if (count == 0) return kMissing;
  const std::size_t middle = count / 2;
  if (count % 2 == 1) return values[middle];
  return (static_cast<long double>(values[middle - 1]) + values[middle]) * 0.5L;
}

template void SortAscending(std::vector<float>& values);
template void SortAscending(std::vector<double>& values);
template long double MedianOfSorted(const float* values, std::size_t count);
template long double MedianOfSorted(const double* values, std::size_t count);

}  // namespace kalmia

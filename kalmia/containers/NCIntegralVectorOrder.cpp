#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <numeric>
#include <type_traits>
#include <utility>
#include <vector>

#include "kalmia/containers/Missing.h"
#include "kalmia/containers/NCIntegralVector.h"

// Statistics, comparison, order and search.

namespace {

constexpr double kNoEstimate = kalmia::kMissing;

/// The order of a sort: below or above, and a missing cell behind every other, if that is wanted.
template <class T, int M>
struct CellOrder {
  bool ascending;
  bool misValAware;

  bool operator()(T a, T b) const {
    constexpr T missing = static_cast<T>(M);
    if (misValAware && (a == missing || b == missing)) return a != missing;
    return ascending ? a < b : b < a;
  }
};

/// 15 bits of rand() at a time, as many times as it takes to reach `count`.
std::uint64_t RandomBelow(std::uint64_t count) {
  constexpr int kBits = 15;
  constexpr std::uint64_t kMask = (1u << kBits) - 1;
  const auto draw = [] { return static_cast<std::uint64_t>(std::rand()) & kMask; };
  std::uint64_t bound = kMask;
  std::uint64_t r = draw();
  for (; bound < count; bound = bound << kBits | kMask) r = r << kBits | draw();
  return r % count;
}

}  // namespace

template <class T, int M>
long int NCIntegralVector<T, M>::GetSum() const {
  // Unsigned cells are added as such: their sum wraps where a signed one would overflow. It is cast once.
  using Sum = std::conditional_t<std::is_same_v<T, unsigned long>, unsigned long, long int>;
  return static_cast<long int>(std::accumulate(begin(), end(), Sum{0}));
}

template <class T, int M>
double NCIntegralVector<T, M>::GetMean() const {
  return size_ < 1 ? kNoEstimate : static_cast<double>(GetSum()) / size_;
}

template <class T, int M>
double NCIntegralVector<T, M>::GetVariance() const {
  const double mean = GetMean();
  if (mean == kNoEstimate || size_ < 2) return kNoEstimate;
  double sum = 0;
  for (T cell : *this) sum += (static_cast<double>(cell) - mean) * (static_cast<double>(cell) - mean);
  return sum / (size_ - 1);
}

template <class T, int M>
double NCIntegralVector<T, M>::GetStdDev() const {
  const double variance = GetVariance();
  return variance == kNoEstimate ? kNoEstimate : std::sqrt(variance);
}

template <class T, int M>
bool NCIntegralVector<T, M>::operator==(const NCIntegralVector& other) const {
  return std::equal(begin(), end(), other.begin(), other.end());
}

template <class T, int M>
bool NCIntegralVector<T, M>::operator!=(const NCIntegralVector& other) const {
  return !(*this == other);
}

template <class T, int M>
bool NCIntegralVector<T, M>::operator<(const NCIntegralVector& other) const {
  return std::lexicographical_compare(begin(), end(), other.begin(), other.end());
}

template <class T, int M>
bool NCIntegralVector<T, M>::operator<=(const NCIntegralVector& other) const {
  return !(other < *this);
}

template <class T, int M>
bool NCIntegralVector<T, M>::operator>(const NCIntegralVector& other) const {
  return other < *this;
}

template <class T, int M>
bool NCIntegralVector<T, M>::operator>=(const NCIntegralVector& other) const {
  return !(*this < other);
}

template <class T, int M>
bool NCIntegralVector<T, M>::IsSorted(bool ascending) const {
  return std::is_sorted(begin(), end(), CellOrder<T, M>{ascending, /*misValAware=*/false});
}

template <class T, int M>
void NCIntegralVector<T, M>::Sort(bool ascending, bool misValAware) {
  if (size_ == 0) return;
  ForceUnlink();
  std::sort(storage_.Get() + 1, storage_.Get() + 1 + size_, CellOrder<T, M>{ascending, misValAware});
}

template <class T, int M>
void NCIntegralVector<T, M>::SortWithOriginalIndex(bool ascending, bool misValAware, std::vector<int>& order) {
  std::vector<std::pair<T, int>> cells;
  cells.reserve(static_cast<std::size_t>(size_));
  for (int i = 1; i <= size_; ++i) cells.emplace_back(storage_[i], i);
  const CellOrder<T, M> before{ascending, misValAware};
  // Ties are settled by position, so that the order does not depend on the standard library at hand.
  std::sort(cells.begin(), cells.end(), [before](const auto& a, const auto& b) {
    return a.first == b.first ? a.second < b.second : before(a.first, b.first);
  });
  std::vector<int> positions;
  positions.reserve(cells.size());
  for (const auto& [cell, position] : cells) positions.push_back(position);
  ForceUnlink();
  int at = 0;
  for (const auto& [cell, position] : cells) storage_[++at] = cell;
  order.swap(positions);
}

template <class T, int M>
int NCIntegralVector<T, M>::LowerBound(T value, bool ascending) const {
  const CellOrder<T, M> before{ascending, /*misValAware=*/false};
  return static_cast<int>(std::lower_bound(begin(), end(), value, before) - begin()) + 1;
}

template <class T, int M>
int NCIntegralVector<T, M>::Find(T value, SortType type, int first, int last) const {
  if (size_ == 0) return -1;
  if (type != NotSorted) {
    const int at = LowerBound(value, type == SortedAscending);
    return at <= size_ && storage_[at] == value ? at : -1;
  }
  const int end = last == -1 ? size_ : last;
  for (int i = first; i <= end; ++i)
    if (storage_[i] == value) return i;
  return -1;
}

template <class T, int M>
void NCIntegralVector<T, M>::Scramble() {
  ForceUnlink();
  for (int k = 2; k <= size_; ++k)
    std::swap(storage_[k], storage_[static_cast<int>(RandomBelow(static_cast<std::uint64_t>(k))) + 1]);
}

#define KALMIA_INSTANTIATE(T, M)                                                                \
  template long int NCIntegralVector<T, M>::GetSum() const;                                     \
  template double NCIntegralVector<T, M>::GetMean() const;                                      \
  template double NCIntegralVector<T, M>::GetVariance() const;                                  \
  template double NCIntegralVector<T, M>::GetStdDev() const;                                    \
  template bool NCIntegralVector<T, M>::operator==(const NCIntegralVector<T, M>&) const;        \
  template bool NCIntegralVector<T, M>::operator!=(const NCIntegralVector<T, M>&) const;        \
  template bool NCIntegralVector<T, M>::operator<(const NCIntegralVector<T, M>&) const;         \
  template bool NCIntegralVector<T, M>::operator<=(const NCIntegralVector<T, M>&) const;        \
  template bool NCIntegralVector<T, M>::operator>(const NCIntegralVector<T, M>&) const;         \
  template bool NCIntegralVector<T, M>::operator>=(const NCIntegralVector<T, M>&) const;        \
  template bool NCIntegralVector<T, M>::IsSorted(bool) const;                                   \
  template void NCIntegralVector<T, M>::Sort(bool, bool);                                       \
  template void NCIntegralVector<T, M>::SortWithOriginalIndex(bool, bool, std::vector<int>&);   \
  template int NCIntegralVector<T, M>::LowerBound(T, bool) const;                               \
  template int NCIntegralVector<T, M>::Find(T, SortType, int, int) const;                       \
  template void NCIntegralVector<T, M>::Scramble();
KALMIA_INSTANTIATE(int, -99)
KALMIA_INSTANTIATE(bool, 0)
KALMIA_INSTANTIATE(unsigned long, 0)
#undef KALMIA_INSTANTIATE

NCIntegralVector<int, -99> GetIndexLookupVector(const NCIntegralVector<unsigned long, 0>& wanted,
                                                const NCIntegralVector<unsigned long, 0>& table) {
  std::map<unsigned long, int> positions;
  for (int i = 1; i <= table.Size(); ++i) positions.emplace(table[i], i);  // the first position of a value stays
  NCIntegralVector<int, -99> result(wanted.Size(), -1);
  for (int i = 1; i <= wanted.Size(); ++i) {
    const auto found = positions.find(wanted[i]);
    if (found != positions.end()) result(i) = found->second;
  }
  return result;
}

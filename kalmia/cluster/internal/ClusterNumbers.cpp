#include "kalmia/cluster/internal/ClusterNumbers.h"

#include <numeric>
#include <utility>

namespace kalmia {

ClusterNumbers::ClusterNumbers(int rows)
    : next_(static_cast<std::size_t>(rows), kCurrent), firstRow_(next_.size()), position_(next_.size()) {
  std::iota(firstRow_.begin(), firstRow_.end(), 0);
  std::iota(position_.begin(), position_.end(), 0);
}

int ClusterNumbers::Latest(int number) {
  int latest = number;
  while (next_[Index(latest)] > 0) latest = next_[Index(latest)];
  while (number != latest) number = std::exchange(next_[Index(number)], latest);  // a shorter way for the next time
  return next_[Index(latest)] == kGone ? 0 : latest;
}

int ClusterNumbers::Merge(int a, int b) {
  next_.push_back(kCurrent);
  firstRow_.push_back(FirstRow(a));
  const int merged = static_cast<int>(next_.size());
  next_[Index(a)] = merged;
  next_[Index(b)] = kGone;
  for (std::size_t row = Index(FirstRow(b) + 1); row < position_.size(); ++row) --position_[row];
  return merged;
}

}  // namespace kalmia

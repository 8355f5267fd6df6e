#pragma once

#include <cstddef>
#include <vector>

namespace kalmia {

/// What has become of clusters. Rows have the numbers 1, 2, ...; each merge makes a new number, and the numbers of what
/// it merged lead to it: from the earlier cluster as from a former name, from the later one to nowhere.
class ClusterNumbers {
 public:
  explicit ClusterNumbers(int rows = 0);

  bool IsCurrent(int number) const { return next_[Index(number)] == kCurrent; }
  /// The present number of the cluster that was called so; 0 where it went into an earlier one.
  int Latest(int number);
  /// The place of the row at which the cluster began, from 0: the clusters keep the order of these.
  int FirstRow(int number) const { return firstRow_[Index(number)]; }
  /// The position of a current cluster among all that are current, from 0.
  int Position(int number) const { return position_[Index(FirstRow(number) + 1)]; }
  /// Merges two current clusters, a in front of b, into a new one, which stands where a stood. Returns its number.
  int Merge(int a, int b);

 private:
  static constexpr int kCurrent = 0;
  static constexpr int kGone = -1;
  static std::size_t Index(int number) { return static_cast<std::size_t>(number) - 1; }

  std::vector<int> next_;      ///< by number: kCurrent, kGone, or a later number of the same cluster
  std::vector<int> firstRow_;  ///< by number
  std::vector<int> position_;  ///< by first row
};

}  // namespace kalmia

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "kalmia/statistics/internal/CochranApproximation.h"
#include "kalmia/statistics/internal/CompletionBounds.h"
#include "kalmia/statistics/internal/LogFactorials.h"
#include "kalmia/statistics/internal/NetworkWorkspace.h"
#include "kalmia/statistics/internal/PartialTable.h"
#include "kalmia/statistics/internal/PathTable.h"

namespace kalmia {

/// The network of Mehta and Patel: stage c holds the partial tables whose first c columns are filled. Columns are taken
/// out one after the other; partial tables that leave the same row margins, in whatever order, meet in a node. Paths of
/// which all completions count, or none, go no further. Under Cochran's conditions the other paths to a node go no
/// further either: the chi-square distribution says which share of the completions counts. The whole table is never
/// judged so, unless its smallest column is empty: what is left without that one is all of it.
/// The exact test takes the largest column first. Under conditions the smallest goes first, as published: the order
/// decides which parts are approximated, and with them the result.
class ContingencyNetwork {
 public:
  /// Margins descending, at least two of rows and of columns, rows above 0. `observed` is ln of the product of 1 / x!
  /// over the cells of the table to be judged. The product of all (row + 1) is within int.
  ContingencyNetwork(const std::vector<int>& rows, const std::vector<int>& columns, double observed,
                     const CochranConditions& conditions, int workspace);

  /// Of all tables that are at most as probable as the observed one. Once only.
  double Probability();

 private:
  /// What is known of the completions of a partial table.
  struct Completions {
    double total = 0;     ///< ln of the sum of their products
    double longest = 0;   ///< no completion is above
    double shortest = 0;  ///< no completion is below
    std::optional<FreemanHaltonStatistic> statistic;  ///< under Cochran's conditions
  };
  struct Node {
    Completions completions;
    PathTable paths;
  };
  using Stage = std::unordered_map<std::int32_t, Node>;  ///< by KeyOf() the rows that are left

  /// With a pointer to the next node and the allocator's part.
  static constexpr std::size_t kNodeBytes = NetworkWorkspace::BlockBytes(sizeof(Stage::value_type) + sizeof(void*));
  /// What the table that finds the nodes takes for each: up to three pointers while it grows. It stays as long as its
  /// stage, however many of the nodes are freed.
  static constexpr std::size_t kFinderBytes = 3 * sizeof(void*);

  // One step: the paths of a node go on through every way to fill the next column.
  void GoToNextStage();
  void Expand(std::int32_t key, const std::vector<Path>& paths);
  void PlaceRow(std::size_t row, int left, double product, double ways, int groupSize, int runLength);
  void Arrive(double product, double ways);
  void Count(std::size_t paths, double product, double total, double ways);
  void GoOnFrom(Node* next, const Path& path, double product, double ways);
  Node* FindOrAdd();
  std::size_t CountPathsUpTo(double past) const;

  std::size_t ColumnsLeft() const { return columnsEnd_ - columnsBegin_; }
  std::int32_t KeyOf(const std::vector<int>& rows) const;
  int TakeColumn();
  PartialTable RestOf(const std::vector<int>& rows) const;
  Completions Complete(const PartialTable& table);

  std::vector<int> columns_;
  std::size_t columnsBegin_ = 0, columnsEnd_;  ///< of those that are left in next_
  LogFactorials logFactorial_;
  CompletionBounds bounds_;
  CochranConditions conditions_;
  NetworkWorkspace workspace_;
  std::vector<std::int32_t> radix_;  ///< of the number that a node's margins make
  double observed_;
  double wholeTotal_;
  double wholeLongest_;

  Stage next_;
  double probability_ = 0;

  // The node that is being expanded.
  int column_ = 0;
  std::vector<int> rows_;                     ///< what is left of the margins, descending
  const std::vector<Path>* paths_ = nullptr;  ///< by ascending past
  std::vector<double> weightUpTo_;            ///< count e^(past - reference) of the first i paths
  double reference_ = 0;
  std::vector<int> capacityFrom_;  ///< sum of the margins of row i and those behind it
  std::vector<int> placed_, rest_;
};

}  // namespace kalmia

#pragma once

#include <cstddef>
#include <vector>

#include "kalmia/statistics/internal/PartialTable.h"

namespace kalmia {

/// Fills columns count after count, each on the row i where A(i) / (x(i) + 1) is largest. So a column's counts have the
/// largest sum x(i) ln A(i) - ln x(i)! of all whole counts with its sum. The weights A(i) are near the rows' margins,
/// and so are the rows' sums over all columns.
class Apportionment {
 public:
  explicit Apportionment(std::size_t mostRows) : weight_(mostRows) {}

  void SetWeights(const PartialTable& table);
  double GetWeight(std::size_t row) const { return weight_[row]; }
  /// `counts` gets a cell for each row of the table that set the weights.
  void FillColumn(int total, int* counts) const;

 private:
  std::vector<double> weight_;
  std::size_t rowCount_ = 0;
  double halfColumn_ = 0, whole_ = 0;
};

}  // namespace kalmia

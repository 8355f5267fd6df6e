#include "kalmia/statistics/internal/Apportionment.h"

#include <numeric>

namespace kalmia {

void Apportionment::SetWeights(const PartialTable& table) {
  rowCount_ = table.rowCount;
  const double halfRow = static_cast<double>(table.columnCount) / 2;
  halfColumn_ = static_cast<double>(table.rowCount) / 2;
  whole_ = table.sum + 2 * halfRow * halfColumn_;
  for (std::size_t i = 0; i < rowCount_; ++i) weight_[i] = table.rows[i] + halfRow;
}

void Apportionment::FillColumn(int total, int* counts) const {
  const double share = (total + halfColumn_) / whole_;  // times A(i): near the count
  for (std::size_t i = 0; i < rowCount_; ++i) counts[i] = static_cast<int>(weight_[i] * share);
  int missing = total - std::accumulate(counts, counts + rowCount_, 0);
  for (; missing > 0; --missing) {
    std::size_t best = 0;
    for (std::size_t i = 1; i < rowCount_; ++i)
      if (weight_[i] * (counts[best] + 1) > weight_[best] * (counts[i] + 1)) best = i;
    ++counts[best];
  }
  for (; missing < 0; ++missing) {
    std::size_t worst = 0;
    for (std::size_t i = 1; i < rowCount_; ++i)
      if (weight_[i] * counts[worst] < weight_[worst] * counts[i]) worst = i;
    --counts[worst];
  }
}

}  // namespace kalmia

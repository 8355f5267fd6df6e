#pragma once

#include <cstdint>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/WorkMeter.h"

namespace kalmia {

/// Which cells of a table are present, a bit for each.
class PresentCells {
 public:
  /// The work between two questions: cells that are read, pairs, and words of 64 cells. Some milliseconds.
  static constexpr std::int64_t kWorkPerQuestion = std::int64_t{1} << 20;

  explicit PresentCells(const NCDataMatrix<float>& data, const Ask& ask = {});

  /// The columns that two rows, from 1, have in common; where these are `enough` or more, at least so many.
  int Common(int a, int b, int enough) const;
  int Words() const { return words_; }  ///< of a row

 private:
  const std::uint64_t* Row(int row) const;

  int words_;
  std::vector<std::uint64_t> bits_;
};

/// Throws NCError where a row misses more than half of its cells, and CommonColumnsError where two rows have less than
/// the root of the number of columns, rounded, in common. Cost: a look at each pair of rows; of those whose numbers of
/// holes leave it open, one of their bits.
void CheckMissingData(const NCDataMatrix<float>& data, const Ask& ask);

}  // namespace kalmia

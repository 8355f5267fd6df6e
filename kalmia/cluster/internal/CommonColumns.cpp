#include "kalmia/cluster/internal/CommonColumns.h"

#include <bitset>
#include <cmath>
#include <cstddef>

#include "kalmia/cluster/CommonColumnsError.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/support/NCError.h"

namespace kalmia {

namespace {

constexpr int kBits = 64;

/// How many cells each row misses, in the order of the rows.
std::vector<int> CheckRows(const NCDataMatrix<float>& data) {
  std::vector<int> missing;
  for (int r = 1; r <= data.SizeRows(); ++r) {
    missing.push_back(data[r].GetNumMisVal());
    if (static_cast<double>(missing.back()) / data.SizeColumns() > 0.5)
      throw NCError("Cluster analysis can not be performed on data that has rows with more than 50% missing values");
  }
  return missing;
}

}  // namespace

PresentCells::PresentCells(const NCDataMatrix<float>& data, const Ask& ask)
    : words_((data.SizeColumns() + kBits - 1) / kBits),
      bits_(static_cast<std::size_t>(data.SizeRows()) * static_cast<std::size_t>(words_)) {
  WorkMeter meter(ask, kWorkPerQuestion);
  std::uint64_t* words = bits_.data();
  for (int r = 1; r <= data.SizeRows(); ++r, words += words_) {
    const float* const cells = data[r].begin();
    for (int c = 0; c < data.SizeColumns(); ++c)
      words[c / kBits] |= std::uint64_t{cells[c] != kMissingCell<float>} << c % kBits;
    meter.Add(data.SizeColumns());
  }
}

const std::uint64_t* PresentCells::Row(int row) const {
  return bits_.data() + (static_cast<std::size_t>(row) - 1) * static_cast<std::size_t>(words_);
}

int PresentCells::Common(int a, int b, int enough) const {
  const std::uint64_t *const ofA = Row(a), *const ofB = Row(b);
  int common = 0;
  for (int w = 0; w < words_ && common < enough; ++w)
    common += static_cast<int>(std::bitset<kBits>(ofA[w] & ofB[w]).count());
  return common;
}

void CheckMissingData(const NCDataMatrix<float>& data, const Ask& ask) {
  const std::vector<int> missing = CheckRows(data);
  const int rows = data.SizeRows(), columns = data.SizeColumns();
  const int needed = static_cast<int>(static_cast<float>(std::sqrt(static_cast<double>(columns))) + 0.5);
  const PresentCells present(data, ask);
  WorkMeter meter(ask, PresentCells::kWorkPerQuestion);
  for (int a = 1; a <= rows; ++a) {
    // With fewer holes than that there are enough columns left by counting alone.
    const int holes = columns - missing[static_cast<std::size_t>(a) - 1] - needed;
    for (int b = a + 1; b <= rows; ++b) {
      meter.Add(1);
      if (missing[static_cast<std::size_t>(b) - 1] < holes) continue;
      meter.Add(present.Words());
      const int common = present.Common(a, b, needed);
      if (common < needed) throw DendroGram::CommonColumnsError(a, b, common);
    }
  }
}

}  // namespace kalmia

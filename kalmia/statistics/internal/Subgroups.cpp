#include "kalmia/statistics/internal/Subgroups.h"

#include <algorithm>
#include <cmath>

namespace kalmia {
namespace {

struct Block {
  int present = 0;
  double sum = 0, sumOfSquares = 0;
  float smallest = 0, largest = 0;

  void Add(float cell) {
    smallest = present == 0 ? cell : std::min(smallest, cell);
    largest = present == 0 ? cell : std::max(largest, cell);
    ++present;
    sum += cell;
    sumOfSquares += static_cast<double>(cell) * cell;
  }
};

template <class Statistic>
NCDataVector<float> OfEachBlock(const NCDataVector<float>& data, int n, Statistic statistic) {
  const int blocks = n > 0 ? data.Size() / n : 0;
  NCDataVector<float> result(blocks);
  const float* cell = data.begin();
  for (int b = 1; b <= blocks; ++b) {
    Block block;
    for (const float* end = cell + n; cell != end; ++cell)
      if (*cell != kMissingCell<float>) block.Add(*cell);
    result(b, static_cast<float>(statistic(block)));
  }
  return result;
}

}  // namespace

NCDataVector<float> SubgroupMeans(const NCDataVector<float>& data, int n) {
  return OfEachBlock(data, n, [](const Block& b) { return b.present == 0 ? kMissing : b.sum / b.present; });
}

NCDataVector<float> SubgroupRanges(const NCDataVector<float>& data, int n) {
  return OfEachBlock(data, n, [](const Block& b) -> double {
    return b.present == 0 ? kMissing : static_cast<double>(b.largest) - b.smallest;
  });
}

NCDataVector<float> SubgroupStdDevs(const NCDataVector<float>& data, int n) {
  return OfEachBlock(data, n, [](const Block& b) -> double {
    if (b.present < 2) return kMissing;
    const double m = b.present;
    // Rounding may leave less than nothing where the cells are equal. A NaN stays one.
    const double squares = m * b.sumOfSquares - b.sum * b.sum;
    return squares < 0 ? 0.0 : std::sqrt(squares / (m * (m - 1)));
  });
}

}  // namespace kalmia

#include "kalmia/signal/SignalLength.h"

#include <cstddef>
#include <limits>
#include <vector>

namespace kalmia {

int Levels(std::int64_t n) {
  int levels = 0;
  while (levels < 62 && (std::int64_t{1} << levels) < n) ++levels;
  return levels;
}

int PowerLength(std::int64_t n) {
  const std::int64_t power = std::int64_t{1} << Levels(n);
  return power <= std::numeric_limits<int>::max() ? static_cast<int>(power) : 0;
}

bool IsPowerOfTwo(int n) { return n > 0 && (n & (n - 1)) == 0; }

void PadBackToStart(NCDataVector<float>* signal, int length) {
  const int n = signal->Size(), added = length - n;
  if (added < 1) return;
  const double end = static_cast<double>((*signal)[n]), fall = end - static_cast<double>((*signal)[1]);
  std::vector<float> cells(static_cast<std::size_t>(added), static_cast<float>(fall * 0.5));
  if (added > 1) {
    const double step = fall / (added - 1);
    for (int t = 0; t < added; ++t) cells[static_cast<std::size_t>(t)] = static_cast<float>(end - t * step);
  }
  signal->Resize(length, 0.0F);
  signal->SetRange(n + 1, cells.data(), added);
}

}  // namespace kalmia

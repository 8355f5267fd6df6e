#include "kalmia/analysis/chart/internal/BinEdge.h"

#include <cmath>

#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

constexpr int kEdgeDigits = 4;  ///< of the width of a bin, to which its edges are rounded

}  // namespace

double BinEdge(double low, double width, int edge) {
  const int place = static_cast<int>(std::floor(std::log10(width))) + 1 - kEdgeDigits;
  return TimesPowerOfTen(std::round((low + edge * width) / TimesPowerOfTen(1, place)), place);
}

}  // namespace kalmia::analysis

#include "kalmia/statistics/internal/LogFactorials.h"

#include <algorithm>
#include <cmath>

namespace kalmia {
namespace {

constexpr int kLargestTable = 1 << 16;
constexpr double kHalfLogOfTwoPi = 0.91893853320467274178;

}  // namespace

LogFactorials::LogFactorials(int largest) : table_(Index(std::min(largest, kLargestTable)) + 1, 0.0) {
  // A running sum in long double: its rounding stays below that of one double.
  long double sum = 0;
  for (std::size_t n = 2; n < table_.size(); ++n) {
    sum += std::log(static_cast<long double>(n));
    table_[n] = static_cast<double>(sum);
  }
}

double LogFactorials::Stirling(int n) {
  const double x = n;
  return (x + 0.5) * std::log(x) - x + kHalfLogOfTwoPi + 1 / (12 * x) - 1 / (360 * x * x * x);
}

}  // namespace kalmia

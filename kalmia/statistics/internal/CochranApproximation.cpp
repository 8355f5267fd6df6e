#include "kalmia/statistics/internal/CochranApproximation.h"

#include <cmath>
#include <cstddef>

namespace kalmia {
namespace {

constexpr double kLogOfTwoPi = 1.8378770664093454836;

int DegreesOfFreedom(const PartialTable& table) {
  return static_cast<int>((table.rowCount - 1) * (table.columnCount - 1));
}

}  // namespace

bool CochranConditions::AreMetBy(const PartialTable& table) const {
  if (!AllowApproximation() || table.rowCount < 2 || table.columnCount < 2) return false;
  std::size_t large = 0;
  for (std::size_t i = 0; i < table.rowCount; ++i)
    for (std::size_t j = 0; j < table.columnCount; ++j) {
      const double expectedTimesSum = 1.0 * table.rows[i] * table.columns[j];  // no rounding on the border
      if (expectedTimesSum <= smallest * table.sum) return false;
      if (expectedTimesSum >= expected * table.sum) ++large;
    }
  return 100.0 * static_cast<double>(large) >= percent * static_cast<double>(table.rowCount * table.columnCount);
}

FreemanHaltonStatistic::FreemanHaltonStatistic(const PartialTable& table)
    : logGamma_(0), tail_(DegreesOfFreedom(table)) {
  double ofRows = 0, ofColumns = 0;
  for (std::size_t i = 0; i < table.rowCount; ++i) ofRows += std::log(table.rows[i]);
  for (std::size_t j = 0; j < table.columnCount; ++j) ofColumns += std::log(table.columns[j]);
  const auto rows = static_cast<double>(table.rowCount), columns = static_cast<double>(table.columnCount);
  logGamma_ = (DegreesOfFreedom(table) * kLogOfTwoPi - (rows * columns - 1) * std::log(table.sum) +
               (columns - 1) * ofRows + (rows - 1) * ofColumns) /
              2;
}

}  // namespace kalmia

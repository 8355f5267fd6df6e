#include "kalmia/analysis/validation/CvAnova.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "kalmia/analysis/model/internal/Probabilities.h"

namespace kalmia::analysis {

namespace {

/// Of the rows that have a value and an error.
struct Sums {
  int rows = 0;
  double squares = 0.0;  ///< about the mean
  double press = 0.0;
};

Sums SumsOf(const std::vector<double>& y, const std::vector<double>& squaredErrors) {
  Sums sums;
  std::vector<double> values;
  double total = 0.0;
  for (std::size_t i = 0; i < y.size(); ++i) {
    if (std::isnan(y[i]) || std::isnan(squaredErrors[i])) continue;
    values.push_back(y[i]);
    total += y[i];
    sums.press += squaredErrors[i];
  }
  sums.rows = static_cast<int>(values.size());
  if (values.empty()) return sums;
  const auto [least, most] = std::minmax_element(values.begin(), values.end());
  if (*least == *most) return sums;  // whatever the mean rounds to
  for (const double value : values) sums.squares += (value - total / sums.rows) * (value - total / sums.rows);
  return sums;
}

}  // namespace

std::optional<CvAnova> ComputeCvAnova(const std::vector<double>& y, const std::vector<double>& squaredErrors,
                                      int components) {
  const Sums sums = SumsOf(y, squaredErrors);
  CvAnova anova;
  anova.df1 = 2 * components;
  anova.df2 = sums.rows - 1 - anova.df1;
  if (components < 1 || anova.df2 < 1 || sums.squares == 0.0) return std::nullopt;
  anova.f = sums.press > 0.0 ? ((sums.squares - sums.press) / anova.df1) / (sums.press / anova.df2)
                             : std::numeric_limits<double>::infinity();
  anova.p = ShareAboveFisher(anova.f, anova.df1, anova.df2);
  return anova;
}

}  // namespace kalmia::analysis

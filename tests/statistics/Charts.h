#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "kalmia/containers/Missing.h"
#include "kalmia/statistics/ControlChart.h"
#include "testing/RandomTables.h"

// Charts of short and of random series.

constexpr float kNone = kHole<float>;
constexpr double kUnknown = kalmia::kMissing;

inline NCDataVector<float> VectorOf(const std::vector<float>& cells) {
  NCDataVector<float> v;
  v.CopyZeroBasedVector(cells.data(), static_cast<int>(cells.size()));
  return v;
}

inline ControlChart ChartOf(ControlChart::ControlType type, const std::vector<float>& cells, int n) {
  return ControlChart(type, VectorOf(cells), n);
}

inline std::vector<float> RandomSeries(int size, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<float> noise(10.0F, 1.0F);
  std::vector<float> cells;
  for (int i = 0; i < size; ++i) cells.push_back(noise(random) + static_cast<float>(i) * 0.02F);
  return cells;
}

inline const std::vector<float> kTwelve{2, 4, 6, 8, 3, 5, 7, 5, 1, 9, 4, 6};  // by four: means 5, 5, 5; ranges 6, 4, 8

/// The one-sided cumulative sum of the means by its formula; a missing mean repeats the cell before.
inline std::vector<float> DirectCuSum(const ControlChart& chart, double start, int sign) {
  std::vector<float> sums;
  double sum = start;
  for (const float x : CellsOf(*chart.GetMeanVector())) {
    const double k = chart.GetDeadBand();
    if (x != kNone) sum = static_cast<float>(std::fmax(0.0, sum + sign * (x - chart.GetTarget()) - k));
    sums.push_back(static_cast<float>(sum));
  }
  return sums;
}

inline void ExpectClose(const std::vector<float>& found, const std::vector<float>& expected) {
  ASSERT_EQ(found.size(), expected.size());
  // The same sums in another order of terms: a rounding of double each, which may tip a float by one unit.
  for (std::size_t i = 0; i < found.size(); ++i)
    EXPECT_NEAR(found[i], expected[i], 0x1p-22F * std::fabs(expected[i])) << i;
}

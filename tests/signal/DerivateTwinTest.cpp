// Derivate held against a twin that takes window by window with the operations of the containers: no batches, no
// vector registers. What only the order of the steps decides shows here: edges, windows that fail, even windows.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <tuple>

#include "kalmia/signal/Derivate.h"
#include "testing/RandomTables.h"

namespace {

using Signal = NCDataVector<float>;
using Matrix = NCDataMatrix<float>;

constexpr int kSmooth = 0;  ///< instead of the order of a derivative

/// The polynomial of one window.
struct Fit {
  float Value(int what, double x) const {
    const double d = static_cast<float>(x) - xMean;
    const double cubic = order == 3 ? c[2] : 0.0F;
    const double square = static_cast<float>(d * d), cube = static_cast<float>(d * d * d);
    switch (what) {
      case kSmooth: return static_cast<float>(yMean + c[0] * d + c[1] * (square - x2Mean) + cubic * (cube - x3Mean));
      case 1: return static_cast<float>(c[0] + 2 * c[1] * d + 3 * cubic * d * d);
      case 2: return static_cast<float>(2 * c[1] + 6 * cubic * d);
      default: return static_cast<float>(6 * cubic);
    }
  }

  int order;
  float c[3] = {kMissing, kMissing, kMissing};
  float yMean = 0, xMean = 0, x2Mean = 0, x3Mean = 0;
};

class PlainDerivate {
 public:
  PlainDerivate(int order, int window) : order_(order), window_(window) {
    powers_ = Matrix(window, order);
    for (int i = 1; i <= window; ++i) SetPowers(powers_, i, static_cast<float>(i - half_ - 1));
    meanSquare_ = Centre(powers_, 2);
    filter_ = FilterOf(powers_);
  }

  void Apply(const Signal& input, Signal& output, int what, float spacing) const {
    const int n = input.Size(), rounds = n - window_ + 1;
    output.SetSize(n);
    for (int i = 1; i <= rounds; ++i) {
      const Fit fit = Estimate(input.begin() + i - 1);
      const bool failed = fit.c[0] == kMissing;
      for (int k = 0; i == 1 && k < half_; ++k) output(k + 1, failed ? kMissing : fit.Value(what, k - half_));
      for (int k = 0; i == rounds && k < half_; ++k)
        output(failed ? n - 1 - k : n - k, failed ? kMissing : fit.Value(what, half_ - k));
      output(half_ + i, failed ? kMissing : fit.Value(what, 0));
    }
    if (what != kSmooth && spacing != 1) output *= 1 / std::pow(static_cast<double>(spacing), what);
  }

  float Optimum(const Signal& input, float spacing, bool minimum, bool limitBelow, float& height) const {
    if (input.Size() < window_) return kMissing;
    const Fit fit = Estimate(input.begin());
    if (fit.c[0] == kMissing || fit.c[1] == kMissing) return kMissing;
    if (minimum ? !(fit.c[1] > 0) : !(fit.c[1] < 0)) return kMissing;
    const float x = -fit.c[0] / (2 * fit.c[1]);
    height = fit.Value(kSmooth, x);
    const float place = x - fit.xMean + (half_ + 1);
    if ((limitBelow && place < 1) || place > window_) return kMissing;
    return place * spacing;
  }

 private:
  void SetPowers(Matrix& powers, int row, float x) const {
    for (int k = 1; k <= order_; ++k) powers(row, k, static_cast<float>(std::pow(static_cast<double>(x), k)));
  }
  static float Centre(Matrix& powers, int column) {
    const float mean = static_cast<float>(powers.GetColumnMean(column));
    powers.SubtractFromColumn(column, mean);
    return mean;
  }
  /// (A' A)^-1 A'.
  static Matrix FilterOf(const Matrix& powers) {
    Matrix inverse(powers);
    inverse.TransformToMprim_mul_M();
    inverse.TransformToInverse();
    return inverse.MatrixMultiply(powers, /*transposeThis=*/false, /*transposeOther=*/true);
  }

  Fit Estimate(const float* y) const {
    const Signal cells = SignalOf(y);
    if (cells.GetNumMisVal() > 0) return EstimateWithHoles(y);
    Fit fit{order_};
    fit.yMean = static_cast<float>(cells.GetMean());
    fit.x2Mean = meanSquare_;
    for (int k = 1; k <= order_; ++k) {
      double sum = 0;
      for (int i = 1; i <= window_; ++i) sum += (static_cast<double>(cells[i]) - fit.yMean) * filter_[k][i];
      fit.c[k - 1] = static_cast<float>(sum);
    }
    return fit;
  }
  Fit EstimateWithHoles(const float* y) const {
    Fit fit{order_};
    Signal cells, positions;
    for (int i = 1; i <= window_; ++i) {
      if (y[i - 1] == kMissing) continue;
      cells.push_back(y[i - 1]);
      positions.push_back(static_cast<float>(i - half_ - 1));
    }
    if (cells.Size() <= order_) return fit;
    fit.yMean = static_cast<float>(cells.GetMean());
    fit.xMean = static_cast<float>(positions.GetMean());
    Matrix powers(cells.Size(), order_);
    for (int r = 1; r <= cells.Size(); ++r) SetPowers(powers, r, positions[r] - fit.xMean);
    fit.x2Mean = Centre(powers, 2);
    if (order_ == 3) fit.x3Mean = Centre(powers, 3);
    const Matrix filter = FilterOf(powers);
    for (int k = 1; k <= order_; ++k) {
      double sum = 0;
      for (int r = 1; r <= cells.Size(); ++r) sum += (static_cast<double>(cells[r]) - fit.yMean) * filter[k][r];
      fit.c[k - 1] = static_cast<float>(sum);
    }
    return fit;
  }
  Signal SignalOf(const float* y) const {
    Signal cells;
    cells.CopyZeroBasedVector(y, window_);
    return cells;
  }

  int order_, window_, half_ = window_ / 2;
  Matrix powers_, filter_;
  float meanSquare_ = 0;
};

using Case = std::tuple<int, int, double>;  ///< order, window, share of holes

class DerivateTwin : public ::testing::TestWithParam<Case> {};

TEST_P(DerivateTwin, GivesWhatTheStepsGiveWindowByWindow) {
  const auto [order, window, holes] = GetParam();
  const Derivate<float> filter(static_cast<Derivate<float>::PolynomialOrder>(order), window);
  const PlainDerivate plain(order, window);
  for (unsigned seed = 1; seed <= 6; ++seed)
    for (const int n : {window - 1, window, window + 1, 3 * window}) {
      const Signal input = RandomVector<float>(n, holes, seed);
      for (int what = kSmooth; what <= order; ++what)
        for (const float spacing : {1.0F, -0.5F}) {
          SCOPED_TRACE("n " + std::to_string(n) + ", seed " + std::to_string(seed) + ", derivative " +
                       std::to_string(what));
          Signal ours(n, 7.0F), expected(n, 7.0F);  // what no window reaches shows
          if (what == kSmooth)
            filter.Smooth(input, ours);
          else
            filter.DoDerivate(input, ours, what, spacing);
          plain.Apply(input, expected, what, spacing);
          for (int i = 1; i <= n; ++i) EXPECT_EQ(ours[i], expected[i]) << i;
          EXPECT_TRUE(HasExactCounts(ours));
        }
    }
}

TEST_P(DerivateTwin, FindsTheOptimaThatTheStepsFind) {
  const auto [order, window, holes] = GetParam();
  const Derivate<float> filter(static_cast<Derivate<float>::PolynomialOrder>(order), window);
  const PlainDerivate plain(order, window);
  int found = 0;
  for (unsigned seed = 1; seed <= 40; ++seed) {
    const Signal input = RandomVector<float>(window + 1, holes, seed);
    for (const bool minimum : {true, false})
      for (const bool limitBelow : {true, false}) {
        SCOPED_TRACE("seed " + std::to_string(seed) + (minimum ? ", minimum" : ", maximum"));
        float ours = 1234, expected = 1234;
        const float place = filter.GetOptima(input, 0.5F, minimum, limitBelow, ours);
        EXPECT_EQ(place, plain.Optimum(input, 0.5F, minimum, limitBelow, expected));
        EXPECT_EQ(ours, expected);
        found += place != kMissing;
      }
  }
  EXPECT_GT(found, 0);
}

INSTANTIATE_TEST_SUITE_P(Windows, DerivateTwin,
                         ::testing::Combine(::testing::Values(2, 3), ::testing::Values(4, 5, 6, 7, 9),
                                            ::testing::Values(0.0, 0.2, 0.6)));

TEST(DerivateTwin, GivesTheStepsOfLongSignalsWhereverTheyAreCutIntoBatches) {
  constexpr int kBatch = 512;  // windows that are filtered together at most, but for the first and the last
  for (const int order : {2, 3})
    for (const int window : {5, 8, 9}) {
      const Derivate<float> filter(static_cast<Derivate<float>::PolynomialOrder>(order), window);
      const PlainDerivate plain(order, window);
      for (const int between : {kBatch - 1, kBatch, kBatch + 1, 2 * kBatch, 2 * kBatch + 1})
        for (const float size : {1.0F, 1000.0F}) {  // with the larger cells a slope of -99 has to be looked for
          const int n = between + 2 + window - 1;
          Signal input = RandomVector<float>(n, 0, between), ours, expected;
          input *= size;
          for (int what = kSmooth; what <= order; ++what) {
            SCOPED_TRACE(std::to_string(n) + " cells, window " + std::to_string(window) + ", derivative " +
                         std::to_string(what));
            if (what == kSmooth)
              filter.Smooth(input, ours);
            else
              filter.DoDerivate(input, ours, what, 1);
            plain.Apply(input, expected, what, 1);
            EXPECT_TRUE(ours == expected);
          }
        }
    }
}

}  // namespace

// Smoothing and derivatives held against SciPy, and against a local fit that is worked out anew for each cell.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "kalmia/signal/Derivate.h"
#include "testing/RandomTables.h"

namespace {

using Filter = Derivate<float>;
using Signal = NCDataVector<float>;

constexpr int kCells = 24;

/// The signal or its derivative of this order.
Signal Filtered(int polynomial, int window, const Signal& y, int derivative, float spacing) {
  const Filter filter(static_cast<Filter::PolynomialOrder>(polynomial), window);
  Signal result;
  if (derivative == 0)
    filter.Smooth(y, result);
  else
    filter.DoDerivate(y, result, derivative, spacing);
  return result;
}

struct Reference {
  int polynomial, window, derivative;
  double cells[kCells];
};

/// SciPy 1.10.1, savgol_filter(y, window, polynomial, deriv=derivative, delta=0.5, mode='interp') of
/// y = (37 i^2 mod 101) / 8, i = 1 to 24: cells that are exact in float.
const Reference kSciPy[] = {
    {2, 5, 0,
     {3.90357143, 6.23571429, 6.99642857, 6.54642857, 4.16428571, 4.53928571, 7.67142857, 8.87142857, 7.41785714,
      6.91785714, 6.28928571, 8.41785714, 11.5, 9.04285714, 7.53928571, 8.79285714, 11, 7.66785714, 5.28928571,
      5.66785714, 5.91785714, 7.12142857, 5.31071429, 1.92857143}},
    {2, 9, 0,
     {5.23712121, 5.18636364, 5.25844156, 5.45335498, 5.7711039, 6.1461039, 7.13582251, 6.49945887, 7.57088745,
      7.83603896, 7.8961039, 8.57088745, 8.43939394, 9.19588745, 10.2938312, 8.94588745, 7.93939394, 7.82088745,
      6.8961039, 6.58603896, 5.80854978, 5.07191558, 4.37613636, 3.72121212}},
    {3, 7, 0,
     {3.72321429, 7.07738095, 6.75595238, 4.86309524, 5.60714286, 5.98214286, 5.98809524, 8.63095238, 7.89880952,
      6.19642857, 7.73214286, 8.89880952, 9.0952381, 9.52380952, 8.98214286, 9.27380952, 8.5952381, 8.14880952,
      6.73214286, 4.94642857, 6.39880952, 7.7827381, 6.69345238, 1.02678571}},
    {2, 5, 1,
     {6.23571429, 3.09285714, -0.05, -1.75, 1.6, -0.1, 3.25, 1.55, -2.675, 0.675, 1.5, 2.325, 0.625, -1.075, -0.25,
      0.575, -1.125, -2.825, -2, -1.175, 2.175, -2.05, -5.19285714, -8.33571429}},
    {3, 11, 1,
     {-1.92365967, -0.551282051, 0.467948718, 1.13403263, 1.4469697, 1.40675991, 0.670066045, 0.0756118881,
      1.37932207, 0.642628205, 0.057983683, 1.21945416, 0.625, 1.50199106, -0.25, -2.00199106, -1.125, -1.71945416,
      -0.557983683, -0.863053613, -1.34469697, -2.00291375, -2.83770396, -3.8490676}},
    {2, 7, 2,
     {2.13095238, 2.13095238, 2.13095238, 2.13095238, 0.928571429, 0.928571429, 2.13095238, -5.08333333, -1.47619048,
      4.53571429, 0.928571429, -1.47619048, -1.47619048, -1.47619048, 0.928571429, -1.47619048, -1.47619048,
      -1.47619048, 0.928571429, 4.53571429, -1.47619048, -1.47619048, -1.47619048, -1.47619048}},
    {3, 9, 2,
     {-1.54906205, -1.03896104, -0.528860029, -0.0187590188, 0.491341991, 0.491341991, -0.92965368, 0.600649351,
      -0.601731602, 0.163419913, 0.491341991, -0.601731602, 0.272727273, -0.601731602, -2.56926407, -0.601731602,
      0.272727273, -0.601731602, 0.491341991, 0.163419913, -1.87698413, -3.91738817, -5.95779221, -7.99819625}},
    {3, 11, 3,
     {-1.41258741, -1.41258741, -1.41258741, -1.41258741, -1.41258741, -1.41258741, -0.235431235, 1.05944056,
      -0.824009324, 0.353146853, 0.706293706, -1.29487179, 0, -2.23659674, 0, 2.23659674, 0, 1.29487179, -0.706293706,
      -0.706293706, -0.706293706, -0.706293706, -0.706293706, -0.706293706}}};

TEST(DerivateReference, AgreesWithSciPyAtTheEdgesToo) {
  Signal y(kCells);
  for (int i = 1; i <= kCells; ++i) y(i, static_cast<float>(37 * i * i % 101) / 8);
  for (const Reference& reference : kSciPy) {
    const Signal ours = Filtered(reference.polynomial, reference.window, y, reference.derivative, 0.5F);
    // SciPy computes in double; ours has powers, inverse, filter and coefficients of float, each of which loses 2^-24.
    // At the edge of a window the terms c_k d^(k + 1) add up to less than 40; a derivative takes each of them up to
    // three times over d and divides by the spacing of 1/2.
    const double scale = std::pow(2.0 * 3, reference.derivative);
    for (int i = 1; i <= kCells; ++i)
      EXPECT_NEAR(ours[i], reference.cells[i - 1], scale * 40 * 4 * 0x1p-24)
          << "polynomial " << reference.polynomial << ", window " << reference.window << ", derivative "
          << reference.derivative << ", cell " << i;
  }
}

using Matrix = std::vector<std::vector<long double>>;

/// By the elimination of Gauss and Jordan, with pivots.
Matrix Inverse(Matrix a) {
  const std::size_t n = a.size();
  for (std::size_t r = 0; r < n; ++r)
    for (std::size_t c = 0; c < n; ++c) a[r].push_back(r == c);
  for (std::size_t p = 0; p < n; ++p) {
    std::size_t pivot = p;
    for (std::size_t r = p; r < n; ++r)
      if (std::abs(a[r][p]) > std::abs(a[pivot][p])) pivot = r;
    std::swap(a[p], a[pivot]);
    for (std::size_t c = 2 * n; c-- > p;) a[p][c] /= a[p][p];
    for (std::size_t r = 0; r < n; ++r)
      for (std::size_t c = 2 * n; r != p && c-- > p;) a[r][c] -= a[r][p] * a[p][c];
  }
  for (auto& row : a) row.erase(row.begin(), row.begin() + static_cast<std::ptrdiff_t>(n));
  return a;
}

/// The least squares polynomial through some points.
struct LocalFit {
  std::vector<long double> coefficients;  ///< of 1, t, t^2, ...; empty if there are too few points
  long double condition = 0;              ///< sum norm of the inverse of the correlations of t, t^2, ...
};

/// Correlations of t, t^2, ... over the points.
Matrix CorrelationsOfPowers(const std::vector<std::pair<int, float>>& points, std::size_t degree) {
  Matrix powers;
  for (std::size_t k = 1; k <= degree; ++k) {
    std::vector<long double> power;
    long double mean = 0, squares = 0;
    for (const auto& [t, y] : points) power.push_back(std::pow(static_cast<long double>(t), k));
    for (const long double cell : power) mean += cell / power.size();
    for (long double& cell : power) squares += (cell - mean) * (cell - mean);
    for (long double& cell : power) cell = (cell - mean) / std::sqrt(squares);
    powers.push_back(power);
  }
  Matrix correlations(degree, std::vector<long double>(degree, 0));
  for (std::size_t r = 0; r < degree; ++r)
    for (std::size_t c = 0; c < degree; ++c)
      for (std::size_t i = 0; i < points.size(); ++i) correlations[r][c] += powers[r][i] * powers[c][i];
  return correlations;
}

/// By the normal equations in long double.
LocalFit FitPolynomial(std::vector<std::pair<int, float>> points, int degree) {
  const std::size_t n = static_cast<std::size_t>(degree) + 1;
  LocalFit fit;
  if (points.size() < n) return fit;
  Matrix normal(n, std::vector<long double>(n, 0));
  std::vector<long double> products(n, 0);
  for (const auto& [t, y] : points)
    for (std::size_t r = 0; r < n; ++r) {
      products[r] += std::pow(static_cast<long double>(t), r) * y;
      for (std::size_t c = 0; c < n; ++c) normal[r][c] += std::pow(static_cast<long double>(t), r + c);
    }
  for (const auto& row : Inverse(normal)) {
    fit.coefficients.push_back(0);
    for (std::size_t c = 0; c < n; ++c) fit.coefficients.back() += row[c] * products[c];
  }
  // Around the mean of the positions, as the filter has them; a shift changes how far the powers are correlated.
  int sum = 0;
  for (const auto& point : points) sum += point.first;
  for (auto& [t, y] : points) t = static_cast<int>(points.size()) * t - sum;
  for (const auto& row : Inverse(CorrelationsOfPowers(points, n - 1))) {
    long double ofRow = 0;
    for (const long double cell : row) ofRow += std::abs(cell);
    fit.condition = std::max(fit.condition, ofRow);
  }
  return fit;
}

long double DerivativeAt(const std::vector<long double>& coefficients, long double t, int derivative) {
  long double sum = 0;
  for (int power = derivative; power < static_cast<int>(coefficients.size()); ++power) {
    long double factor = 1;
    for (int k = 0; k < derivative; ++k) factor *= power - k;
    sum += factor * coefficients[static_cast<std::size_t>(power)] * std::pow(t, power - derivative);
  }
  return sum;
}

/// The fit that cell i comes from: to the window around it, or at the edges to the nearest full window, whose middle
/// it returns.
std::pair<int, LocalFit> FitFor(int i, int polynomial, int window, const Signal& y) {
  const int half = window / 2, middle = std::clamp(i, half + 1, y.Size() - half);
  std::vector<std::pair<int, float>> points;
  for (int j = middle - half; j <= middle + half; ++j)
    if (y[j] != -99) points.emplace_back(j - middle, y[j]);
  return {middle, FitPolynomial(points, polynomial)};
}

struct Holes {
  double share;
  int polynomial, window;
};

class DerivateWithHoles : public ::testing::TestWithParam<Holes> {};

TEST_P(DerivateWithHoles, IsTheLocalFitToWhatIsThere) {
  const Holes& p = GetParam();
  for (unsigned seed = 1; seed <= 2; ++seed) {
    const Signal y = RandomVector<float>(80, p.share, seed);
    for (int derivative = 0; derivative <= p.polynomial; ++derivative) {
      const Signal ours = Filtered(p.polynomial, p.window, y, derivative, 1.0F);
      for (int i = 1; i <= y.Size(); ++i) {
        SCOPED_TRACE("cell " + std::to_string(i) + ", derivative " + std::to_string(derivative) + ", seed " +
                     std::to_string(seed));
        const auto [middle, fit] = FitFor(i, p.polynomial, p.window, y);
        if (fit.coefficients.empty()) {
          EXPECT_EQ(ours[i], -99);
          continue;
        }
        const double exact = static_cast<double>(DerivativeAt(fit.coefficients, i - middle, derivative));
        // Powers, normal matrix, inverse and filter are rounded to float, which the inversion makes `condition` times
        // worse; a few such errors add up, of cells that reach 3.
        const double lost = 4 * 0x1p-24 * static_cast<double>(fit.condition);
        EXPECT_NEAR(ours[i], exact, lost * std::max(3.0, std::abs(exact)));
      }
      EXPECT_TRUE(HasExactCounts(ours));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Shares, DerivateWithHoles,
                         ::testing::Values(Holes{0, 2, 5}, Holes{0, 3, 7}, Holes{0.1, 2, 5}, Holes{0.1, 3, 9},
                                           Holes{0.3, 2, 7}, Holes{0.3, 3, 7}, Holes{0.3, 3, 15}, Holes{0.6, 2, 5},
                                           Holes{0.6, 3, 15}));

}  // namespace

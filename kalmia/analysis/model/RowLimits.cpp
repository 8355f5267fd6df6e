#include "kalmia/analysis/model/RowLimits.h"

#include <algorithm>
#include <cmath>

#include "kalmia/analysis/model/internal/Probabilities.h"

namespace kalmia::analysis {

std::optional<double> T2LimitOfTrainingRows(std::size_t rows, int components, double share) {
  const auto n = static_cast<double>(rows), a = static_cast<double>(components);
  if (components < 1 || n <= a + 1.0) return std::nullopt;
  return (n - 1.0) * (n - 1.0) / n * BetaQuantile(share, a / 2.0, (n - a - 1.0) / 2.0);
}

std::optional<double> T2LimitOfNewRows(std::size_t rows, int components, double share) {
  const auto n = static_cast<double>(rows), a = static_cast<double>(components);
  if (components < 1 || n <= a) return std::nullopt;
  return a * (n * n - 1.0) / (n * (n - a)) * FisherQuantile(share, a, n - a);
}

std::optional<DistanceMoments> MomentsOfDistances(const std::vector<double>& distances) {
  std::vector<double> squares;
  for (const double distance : distances) {
    if (!std::isnan(distance)) squares.push_back(distance * distance);
  }
  if (squares.size() < 2) return std::nullopt;
  const auto [least, most] = std::minmax_element(squares.begin(), squares.end());
  if (*least == *most) return std::nullopt;
  const auto n = static_cast<double>(squares.size());
  double sum = 0.0, variance = 0.0;
  for (const double square : squares) sum += square;
  const double mean = sum / n;
  for (const double square : squares) variance += (square - mean) * (square - mean) / (n - 1.0);
  return DistanceMoments{squares.size(), mean, std::max(1.0, 2.0 * mean * mean / variance)};
}

double DistanceLimit(const DistanceMoments& moments, double share) {
  return std::sqrt(moments.mean * ChiSquareQuantile(share, moments.degrees) / moments.degrees);
}

std::optional<double> DistanceLimitWithoutRefits(double trainingLimit, std::size_t rows, int components) {
  const auto n = static_cast<double>(rows), left = n - static_cast<double>(components) - 1.0;
  if (left <= 0.0) return std::nullopt;
  return trainingLimit * std::sqrt(n / left);
}

}  // namespace kalmia::analysis

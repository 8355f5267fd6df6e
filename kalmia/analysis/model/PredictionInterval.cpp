#include "kalmia/analysis/model/PredictionInterval.h"

#include <cmath>

#include "kalmia/analysis/model/internal/Probabilities.h"

namespace kalmia::analysis {

namespace {

bool HasAllScores(const RealMatrix& scores, std::size_t row) {
  for (std::size_t a = 0; a < scores.columns; ++a) {
    if (std::isnan(scores(row, a))) return false;
  }
  return true;
}

/// 1 + 1/N + h: the variance of a predicted error, by that of a measured value.
double SpreadOfErrors(double rows, double t2) { return 1.0 + 1.0 / rows + t2 / (rows - 1.0); }

}  // namespace

ScoreMoments MomentsOfScores(const RealMatrix& scores, const std::vector<bool>* takesPart) {
  std::vector<std::size_t> rows;
  for (std::size_t i = 0; i < scores.rows; ++i) {
    if ((takesPart == nullptr || (*takesPart)[i]) && HasAllScores(scores, i)) rows.push_back(i);
  }
  const auto n = static_cast<double>(rows.size());
  ScoreMoments moments;
  moments.rows = rows.size();
  for (std::size_t a = 0; a < scores.columns; ++a) {
    double sum = 0.0, squares = 0.0;
    for (const std::size_t i : rows) sum += scores(i, a);
    for (const std::size_t i : rows) squares += (scores(i, a) - sum / n) * (scores(i, a) - sum / n);
    moments.means.push_back(sum / n);
    moments.variances.push_back(rows.size() < 2 ? kNotANumber : squares / (n - 1.0));
  }
  return moments;
}

double T2OfScores(const ScoreMoments& moments, const double* scores) {
  double t2 = 0.0;
  for (std::size_t a = 0; a < moments.means.size(); ++a) {
    const double difference = scores[a] - moments.means[a];
    t2 += difference * difference / moments.variances[a];
  }
  return t2;
}

std::optional<IntervalTerms> IntervalTermsOf(const std::vector<double>& squaredErrors, const std::vector<double>& t2,
                                             std::size_t rows, int components) {
  double sum = 0.0;
  int count = 0;
  for (std::size_t i = 0; i < squaredErrors.size(); ++i) {
    if (std::isnan(squaredErrors[i]) || std::isnan(t2[i])) continue;
    sum += squaredErrors[i] / SpreadOfErrors(static_cast<double>(rows), t2[i]);
    ++count;
  }
  const int degrees = static_cast<int>(rows) - 1 - components;
  if (degrees < 1 || count == 0) return std::nullopt;
  return IntervalTerms{rows, degrees, std::sqrt(sum / count)};
}

IntervalHalfWidth::IntervalHalfWidth(const IntervalTerms& terms, double share)
    : rows_(static_cast<double>(terms.rows)),
      factor_(QuantileOfAbsoluteStudent(share, static_cast<double>(terms.degrees)) * terms.s) {}

double IntervalHalfWidth::At(double t2) const { return factor_ * std::sqrt(SpreadOfErrors(rows_, t2)); }

}  // namespace kalmia::analysis

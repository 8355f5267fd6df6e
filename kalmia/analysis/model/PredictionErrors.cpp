#include "kalmia/analysis/model/PredictionErrors.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

namespace {

constexpr int kFewestValues = 5;   ///< whose share says something
constexpr double kLeastShare = 0.5;

/// The rows that have both.
struct Pairs {
  std::vector<std::size_t> rows;
  std::vector<double> measured, predicted;
};

Pairs PairsOf(const PLSPredictions& predictions, std::size_t j) {
  Pairs pairs;
  for (std::size_t i = 0; i < predictions.measured[j].size(); ++i) {
    if (std::isnan(predictions.measured[j][i]) || predictions.predictions[i].y.empty()) continue;
    pairs.rows.push_back(i);
    pairs.measured.push_back(predictions.measured[j][i]);
    pairs.predicted.push_back(predictions.predictions[i].y[j]);
  }
  return pairs;
}

double MeanOf(const std::vector<double>& numbers) {
  double sum = 0.0;
  for (const double number : numbers) sum += number;
  return sum / static_cast<double>(numbers.size());
}

double SlopeOf(const Pairs& pairs) {
  // Of equal predictions the mean may differ from them by a rounding.
  const auto [least, most] = std::minmax_element(pairs.predicted.begin(), pairs.predicted.end());
  if (*least == *most) return kNotANumber;
  const double meanMeasured = MeanOf(pairs.measured), meanPredicted = MeanOf(pairs.predicted);
  double products = 0.0, squares = 0.0;
  for (std::size_t i = 0; i < pairs.rows.size(); ++i) {
    const double predicted = pairs.predicted[i] - meanPredicted;
    products += predicted * (pairs.measured[i] - meanMeasured);
    squares += predicted * predicted;
  }
  return products / squares;
}

/// Among rows within the limits of the model: others are foretold badly whatever the units of Y.
bool AreFewCovered(const PLSPredictions& predictions, std::size_t j) {
  const Pairs pairs = PairsOf(predictions, j);
  int values = 0, inside = 0;
  for (std::size_t i = 0; i < pairs.rows.size(); ++i) {
    const double halfWidth = predictions.diagnosis.halfWidths(pairs.rows[i], j);
    if (std::isnan(halfWidth) || predictions.diagnosis.IsBeyond99(pairs.rows[i])) continue;
    ++values;
    if (std::fabs(pairs.predicted[i] - pairs.measured[i]) <= halfWidth) ++inside;
  }
  return values >= kFewestValues && inside < kLeastShare * values;
}

}  // namespace

PredictionError ErrorOf(const PLSPredictions& predictions, std::size_t j) {
  const Pairs pairs = PairsOf(predictions, j);
  PredictionError error;
  error.rows = static_cast<int>(pairs.rows.size());
  if (error.rows == 0) return error;
  double squares = 0.0, sum = 0.0;
  int inside = 0;
  for (std::size_t i = 0; i < pairs.rows.size(); ++i) {
    const double difference = pairs.predicted[i] - pairs.measured[i];
    squares += difference * difference;
    sum += difference;
    const double halfWidth = predictions.diagnosis.halfWidths(pairs.rows[i], j);
    if (std::isnan(halfWidth)) continue;
    ++error.rowsWithInterval;
    if (std::fabs(difference) <= halfWidth) ++inside;
  }
  error.rmsep = std::sqrt(squares / error.rows);
  error.bias = sum / error.rows;
  error.slope = SlopeOf(pairs);
  if (error.rowsWithInterval > 0) error.covered = static_cast<double>(inside) / error.rowsWithInterval;
  return error;
}

void NoteUncovered(const YModelInfo& model, const PLSPredictions& predictions, Notes* notes) {
  if (model.classes) return;
  std::vector<std::string> uncovered;
  for (std::size_t j = 0; j < model.yNames.size(); ++j) {
    if (AreFewCovered(predictions, j)) uncovered.push_back(model.yNames[j]);
  }
  if (uncovered.empty()) return;
  notes->Add("fewer than half of the measured values of rows within the limits lie inside their intervals of 95 %, of " +
             Listed(uncovered, kColumnsNamed) + ": are they in the units of the model?");
}

}  // namespace kalmia::analysis

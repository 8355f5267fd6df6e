#include "kalmia/analysis/model/RowDiagnosis.h"

#include <algorithm>
#include <cmath>

#include "kalmia/analysis/model/TrainingRows.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

constexpr double kShare = 0.95;  ///< of new values that an interval covers

/// How many rows like the training rows may be beyond limits of 99 %: the mean of a Poisson number and two of its
/// standard deviations, rounded up.
double MostByChance(const RowDiagnosis& diagnosis) {
  const double limits = (diagnosis.limits.t2.at99 ? 1.0 : 0.0) + (diagnosis.limits.distance.at99 ? 1.0 : 0.0);
  const double expected = 0.01 * limits * static_cast<double>(diagnosis.flags.size());
  return expected + 2.0 * std::sqrt(expected) + 1.0;
}

void NoteRowsBeyond(const RowDiagnosis& diagnosis, Notes* notes) {
  std::size_t beyond = 0;
  for (std::size_t i = 0; i < diagnosis.flags.size(); ++i) beyond += diagnosis.IsBeyond99(i) ? 1 : 0;
  if (beyond == 0) return;
  const bool isChance = static_cast<double>(beyond) <= MostByChance(diagnosis);
  notes->Add("beyond the 99 % limit of T2 or of the distance: " + std::to_string(beyond) + " of " +
             Counted(diagnosis.flags.size(), "row") +
             (isChance ? ", as may be chance among rows like those that the model was fitted to"
                       : ", unlike those that the model was fitted to"));
}

std::string OldFileText(const ModelInfo& model) {
  return "its file has version " + std::to_string(model.fileVersion) + ", which does not hold what they take";
}

void NoteNoIntervals(const YModelInfo& model, Notes* notes) {
  std::vector<std::string> without;
  for (std::size_t j = 0; j < model.yNames.size(); ++j) {
    if (!model.rowTerms->intervals[j]) without.push_back(model.yNames[j]);
  }
  if (without.empty()) return;
  notes->Add("no prediction intervals of " + Listed(without, kColumnsNamed) +
             ": the model was not judged by full refits, or has too few rows");
}

constexpr double kRounding = 1e-3;  ///< of T2 and distances by scores of single precision, generously

/// Whether both are the same but for roundings, or both no numbers.
bool AreAlike(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return std::fabs(a - b) <= kRounding * std::max({std::fabs(a), std::fabs(b), 1.0});
}

bool HasHole(const NCDataMatrix<float>& x, std::size_t row) {
  const NCDataVector<float>& cells = x[static_cast<int>(row) + 1];
  return std::any_of(cells.begin(), cells.end(), [](float cell) { return cell == kMissingCell<float>; });
}

/// What needs no Y.
template <class Row>
RowDiagnosis DiagnoseRows(const ModelInfo& model, int components, const std::vector<Row>& rows) {
  RowDiagnosis diagnosis;
  if (model.rowTerms) diagnosis.limits = LimitsOfNewRows(*model.rowTerms, components);
  for (const Row& row : rows) {
    diagnosis.t2.push_back(model.rowTerms && row.reason.empty() ? T2OfRow(model.rowTerms->scores, row.t)
                                                                : kNotANumber);
    diagnosis.distances.push_back(DistanceToModel(model, components, row));
    diagnosis.absoluteDistances.push_back(AbsoluteDistance(components, row));
    diagnosis.flags.push_back(LimitsPassed(diagnosis.limits, diagnosis.t2.back(), diagnosis.distances.back()));
  }
  return diagnosis;
}

void AddIntervals(const RowTerms& terms, const std::vector<RowPrediction>& rows, RowDiagnosis* diagnosis) {
  for (std::size_t j = 0; j < terms.intervals.size(); ++j) {
    const std::optional<YIntervalTerms>& ofColumn = terms.intervals[j];
    if (!ofColumn) continue;
    const IntervalHalfWidth halfWidth(*ofColumn, kShare);
    for (std::size_t i = 0; i < rows.size(); ++i) {
      if (rows[i].y.empty()) continue;
      diagnosis->halfWidths(i, j) = halfWidth.At(T2OfScores(ofColumn->scores, rows[i].t.data()));
    }
  }
}

RowDiagnosis DiagnoseRows(const YModelInfo& model, int components, const std::vector<RowPrediction>& rows,
                          bool hasIntervals, Notes* notes) {
  RowDiagnosis diagnosis = DiagnoseRows(model, components, rows);
  diagnosis.halfWidths = RealMatrix(rows.size(), model.yNames.size(), kNotANumber);
  if (!model.rowTerms) {
    notes->Add(std::string("the model has no limits for rows") + (hasIntervals ? " and no prediction intervals" : "") +
               ": " + OldFileText(model));
    return diagnosis;
  }
  NoteLimits(model, components, notes);
  NoteRowsBeyond(diagnosis, notes);
  if (!hasIntervals) return diagnosis;
  AddIntervals(*model.rowTerms, rows, &diagnosis);
  NoteNoIntervals(model, notes);
  return diagnosis;
}

}  // namespace

bool RowDiagnosis::IsBeyond99(std::size_t row) const {
  const auto beyond = [](const LimitPair& pair, double number) { return pair.at99 && number > *pair.at99; };
  return beyond(limits.t2, t2[row]) || beyond(limits.distance, distances[row]);
}

bool RowDiagnosis::HasInterval(std::size_t row) const {
  for (std::size_t j = 0; j < halfWidths.columns; ++j) {
    if (!std::isnan(halfWidths(row, j))) return true;
  }
  return false;
}

RowDiagnosis Diagnose(const StoredPLS& model, const std::vector<RowPrediction>& rows, Notes* notes) {
  return DiagnoseRows(model, model.Components(), rows, /*hasIntervals=*/!model.classes, notes);
}

RowDiagnosis Diagnose(const StoredOPLS& model, const std::vector<RowPrediction>& rows, Notes* notes) {
  return DiagnoseRows(model, model.Components(), rows, /*hasIntervals=*/!model.classes, notes);
}

RowDiagnosis Diagnose(const StoredO2PLS& model, const std::vector<RowPrediction>& rows, Notes* notes) {
  return DiagnoseRows(model, model.Components(), rows, /*hasIntervals=*/false, notes);
}

RowDiagnosis Diagnose(const StoredPCA& model, const std::vector<RowScores>& rows, Notes* notes) {
  RowDiagnosis diagnosis = DiagnoseRows(model, model.Components(), rows);
  if (!model.rowTerms) {
    notes->Add("the model has no limits for rows: " + OldFileText(model));
    return diagnosis;
  }
  NoteLimits(model, model.Components(), notes);
  NoteRowsBeyond(diagnosis, notes);
  return diagnosis;
}

void NoteOwnRows(const ModelInfo& model, const NewRows& rows, const RowDiagnosis& diagnosis, Notes* notes) {
  if (!model.rowStatistics || model.rowNames != rows.names) return;
  const std::vector<double> ofTraining = TrainingDistances(model);
  bool isAnyComplete = false;
  for (std::size_t i = 0; i < rows.names.size(); ++i) {
    if (HasHole(rows.x, i)) continue;
    isAnyComplete = true;
    if (!AreAlike(model.rowStatistics->t2[i], diagnosis.t2[i]) ||
        !AreAlike(ofTraining[i], diagnosis.distances[i])) {
      return;
    }
  }
  if (!isAnyComplete) return;
  notes->Add("these are the rows that the model was fitted to: it suits new rows less well");
}

RowDiagnosis DiagnoseTrainingRows(const ModelInfo& model) {
  RowDiagnosis diagnosis;
  if (!model.rowTerms || !model.rowStatistics) return diagnosis;
  diagnosis.limits = LimitsOfTrainingRows(*model.rowTerms);
  diagnosis.t2 = model.rowStatistics->t2;
  diagnosis.distances = TrainingDistances(model);
  diagnosis.absoluteDistances = model.rowStatistics->absoluteDistances;
  for (std::size_t i = 0; i < diagnosis.t2.size(); ++i) {
    diagnosis.flags.push_back(LimitsPassed(diagnosis.limits, diagnosis.t2[i], diagnosis.distances[i]));
  }
  return diagnosis;
}

}  // namespace kalmia::analysis

#include "kalmia/analysis/model/Contributions.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "kalmia/analysis/model/PCAScores.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/TrainingRows.h"
#include "kalmia/analysis/model/internal/ScoreFunctions.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/LibraryErrors.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

// Cells and scores are floats; their rounding shows in the sixth digit of T2, and earlier where T2 is small.
constexpr double kRoundingShare = 1e-3;  ///< of T2
constexpr double kRounding = 1e-4;
constexpr double kMeanOfRounding = 1e-4;  ///< a mean of scores, in their standard deviations

constexpr int kNumberDigits = 5;

/// A row whose contributions are wanted.
struct Row {
  std::string name;
  std::vector<double> t;  ///< empty without scores
  std::string reason;     ///< why nothing can be said of it
};

std::vector<RowPrediction> FitsOf(const StoredPLS& model, const NCDataMatrix<float>& x) {
  return PredictRows(model, x);
}
std::vector<RowPrediction> FitsOf(const StoredOPLS& model, const NCDataMatrix<float>& x) {
  return PredictRows(model, x);
}
std::vector<RowScores> FitsOf(const StoredPCA& model, const NCDataMatrix<float>& x) { return ScoreRows(model, x); }

/// Rows from 0.
NCDataMatrix<float> RowsOf(const NCDataMatrix<float>& x, const std::vector<int>& rows) {
  NCDataMatrix<float> chosen(static_cast<int>(rows.size()), x.SizeColumns());
  int place = 0;
  for (const int row : rows) chosen.SetRow(++place, x[row + 1]);
  return chosen;
}

/// Scores and residuals of the rows of `x`, with their names.
template <class Model>
std::vector<Row> ReadRows(const Model& model, const NCDataMatrix<float>& x, const std::vector<std::string>& names) {
  std::vector<Row> rows;
  for (const auto& fit : FitsOf(model, x)) rows.push_back({names[rows.size()], fit.t, fit.reason});
  return rows;
}

std::vector<std::string> NamesOf(const std::vector<std::string>& names, const std::vector<int>& rows) {
  std::vector<std::string> chosen;
  for (const int row : rows) chosen.push_back(names[static_cast<std::size_t>(row)]);
  return chosen;
}

/// T2 as a function of the row: the sum over a of (t_a - mean_a) / var_a times the function of score a.
LinearFunction SlopeOfT2(const ScoreMoments& moments, const std::vector<double>& t,
                         const std::vector<LinearFunction>& functions) {
  LinearFunction slope(functions.front().size(), 0.0);
  for (std::size_t a = 0; a < functions.size(); ++a) {
    const double share = (t[a] - moments.means[a]) / moments.variances[a];
    for (std::size_t k = 0; k < slope.size(); ++k) slope[k] += share * functions[a][k];
  }
  return slope;
}

double SumOf(const std::vector<double>& parts) {
  double sum = 0.0;
  for (const double part : parts) sum += std::isnan(part) ? 0.0 : part;
  return sum;
}

bool AnyMeanIsOff(const ScoreMoments& moments) {
  for (std::size_t a = 0; a < moments.means.size(); ++a) {
    if (std::fabs(moments.means[a]) > kMeanOfRounding * std::sqrt(moments.variances[a])) return true;
  }
  return false;
}

void NoteDifference(const RowContributions& of, bool hasHoles, const ScoreMoments& moments, Notes* notes) {
  const double sum = SumOf(of.t2Parts);
  if (std::fabs(sum - of.t2) <= kRoundingShare * of.t2 + kRounding) return;
  const char* const holes = "the row has missing cells";
  const char* const means = "the scores of the training rows do not have the mean 0";
  const bool isOff = AnyMeanIsOff(moments);
  std::string why = hasHoles ? holes : isOff ? means : "scores are rounded to single precision";
  if (hasHoles && isOff) why += std::string(", and ") + means;
  notes->Add("the parts of T2 of row " + Quoted(of.row) + " sum to " + Significant(sum, kNumberDigits) + ", not to " +
             Significant(of.t2, kNumberDigits) + ": " + why);
}

void FillT2Parts(const ScoreMoments& moments, const std::vector<LinearFunction>& functions,
                 const std::vector<double>& t, const NCDataVector<float>& scaled, RowContributions* of, Notes* notes) {
  of->t2 = T2OfRow(moments, t);
  if (!std::isfinite(of->t2)) return;
  const LinearFunction slope = SlopeOfT2(moments, t, functions);
  bool hasHoles = false;
  for (std::size_t k = 0; k < slope.size(); ++k) {
    const float cell = scaled[static_cast<int>(k) + 1];
    if (cell != kMissingCell<float>) of->t2Parts[k] = cell * slope[k];
    hasHoles = hasHoles || cell == kMissingCell<float>;
  }
  NoteDifference(*of, hasHoles, moments, notes);
}

/// Of the rows of `x`, which are scaled here.
template <class Model>
std::vector<RowContributions> Contribute(const Model& model, NCDataMatrix<float> x, const std::vector<Row>& rows,
                                         Notes* notes) {
  const NCDataMatrix<float> residuals = XResiduals(model, x);
  ApplyScale(model.xScaling, &x);
  const std::vector<LinearFunction> functions = ScoreFunctions(model);
  const std::size_t columns = model.xNames.size();
  std::vector<RowContributions> list;
  for (const Row& row : rows) {
    RowContributions of{row.name, kNotANumber, std::vector<double>(columns, kNotANumber), {}};
    of.residuals = of.t2Parts;
    const int place = static_cast<int>(list.size()) + 1;
    for (std::size_t k = 0; k < columns; ++k) {
      const float cell = residuals[place][static_cast<int>(k) + 1];
      if (cell != kMissingCell<float>) of.residuals[k] = cell;
    }
    if (!row.reason.empty()) {
      notes->Add("row " + Quoted(row.name) + " has no contributions: " + row.reason);
    } else if (model.rowTerms) {
      FillT2Parts(model.rowTerms->scores, functions, row.t, x[place], &of, notes);
    }
    list.push_back(std::move(of));
  }
  if (!rows.empty() && !model.rowTerms) {
    notes->Add("no parts of T2: the file of the model has version " + std::to_string(model.fileVersion) +
               ", which does not hold means and variances of the scores");
  }
  return list;
}

template <class Model>
void RequireComponents(const Model& model) {
  if (model.Components() > 0) return;
  throw BadData("the model has no component: there is no T2 that columns could have a part in");
}

template <class Model>
std::vector<RowContributions> OfTrainingRows(const Model& model, const NCDataMatrix<float>& x,
                                             const std::vector<int>& rows, Notes* notes) {
  if (rows.empty()) return {};
  RequireComponents(model);
  return WithoutLibraryErrors([&] {
    NCDataMatrix<float> chosen = RowsOf(x, rows);
    std::vector<Row> asked = ReadRows(model, chosen, NamesOf(model.rowNames, rows));
    const RealMatrix scores = TrainingScores(model);
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const double* const t = scores.cells.data() + static_cast<std::size_t>(rows[i]) * scores.columns;
      asked[i].t.assign(t, t + scores.columns);
    }
    return Contribute(model, std::move(chosen), asked, notes);
  });
}

template <class Model>
std::vector<RowContributions> OfNewRows(const Model& model, const NewRows& newRows, const std::vector<int>& rows,
                                        Notes* notes) {
  if (rows.empty()) return {};
  RequireComponents(model);
  return WithoutLibraryErrors([&] {
    NCDataMatrix<float> chosen = RowsOf(newRows.x, rows);
    const std::vector<Row> asked = ReadRows(model, chosen, NamesOf(newRows.names, rows));
    return Contribute(model, std::move(chosen), asked, notes);
  });
}

}  // namespace

std::vector<RowContributions> ContributionsOfTrainingRows(const StoredPLS& model, const NCDataMatrix<float>& x,
                                                          const std::vector<int>& rows, Notes* notes) {
  return OfTrainingRows(model, x, rows, notes);
}

std::vector<RowContributions> ContributionsOfTrainingRows(const StoredPCA& model, const NCDataMatrix<float>& x,
                                                          const std::vector<int>& rows, Notes* notes) {
  return OfTrainingRows(model, x, rows, notes);
}

std::vector<RowContributions> ContributionsOfTrainingRows(const StoredOPLS& model, const NCDataMatrix<float>& x,
                                                          const std::vector<int>& rows, Notes* notes) {
  return OfTrainingRows(model, x, rows, notes);
}

std::vector<RowContributions> ContributionsOfNewRows(const StoredPLS& model, const NewRows& newRows,
                                                     const std::vector<int>& rows, Notes* notes) {
  return OfNewRows(model, newRows, rows, notes);
}

std::vector<RowContributions> ContributionsOfNewRows(const StoredPCA& model, const NewRows& newRows,
                                                     const std::vector<int>& rows, Notes* notes) {
  return OfNewRows(model, newRows, rows, notes);
}

std::vector<RowContributions> ContributionsOfNewRows(const StoredOPLS& model, const NewRows& newRows,
                                                     const std::vector<int>& rows, Notes* notes) {
  return OfNewRows(model, newRows, rows, notes);
}

}  // namespace kalmia::analysis

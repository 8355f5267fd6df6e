#include "kalmia/analysis/model/Prediction.h"

#include <cmath>
#include <limits>
#include <utility>

#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/o2pls/NCO2PLSPred.h"
#include "kalmia/opls/NCOPLSPred.h"
#include "kalmia/pcapls/NCPLSPred.h"

namespace kalmia::analysis {

namespace {

constexpr auto kPredicting = "predicting";  ///< beside the bar

/// Why a row of `present` among `variables` cells has no score in a component (from 1).
std::string ReasonFor(const std::string& block, int present, int variables, int component) {
  const std::string have = PresentCellsText(block, present, variables);
  if (present == 0) return have;
  if (present < component) return have + ", too few for " + Counted(static_cast<std::size_t>(component), "component");
  return have + ", and they say nothing about component " + std::to_string(component);
}

/// The reason of each row without a score in one of these components, of which there are `before` others in front.
void NoteMissingScores(const std::string& block, const NCDataMatrix<float>& x, const NCDataMatrix<float>& scores,
                       int before, std::vector<RowPrediction>* rows) {
  for (int a = 1; a <= scores.SizeRows(); ++a)
    for (int r = 1; r <= x.SizeRows(); ++r) {
      std::string& reason = (*rows)[static_cast<std::size_t>(r - 1)].reason;
      if (reason.empty() && scores[a][r] == static_cast<float>(kMissing)) {
        reason = ReasonFor(block, x.SizeColumns() - x[r].GetNumMisVal(), x.SizeColumns(), before + a);
      }
    }
}

/// The reason of each row with fewer present cells than the model has components: they cannot tell so many scores.
void NoteTooFewCells(const std::string& block, const NCDataMatrix<float>& x, int components,
                     std::vector<RowPrediction>* rows) {
  for (int r = 1; r <= x.SizeRows(); ++r) {
    const int present = x.SizeColumns() - x[r].GetNumMisVal();
    std::string& reason = (*rows)[static_cast<std::size_t>(r - 1)].reason;
    if (reason.empty() && present < components) reason = ReasonFor(block, present, x.SizeColumns(), components);
  }
}

/// Appends the scores of these components to those of each row; missing ones are not numbers.
void AddScores(const NCDataVector<float>& scores, std::vector<RowPrediction>* rows) {
  for (std::size_t i = 0; i < rows->size(); ++i) {
    const float score = scores[static_cast<int>(i) + 1];
    (*rows)[i].t.push_back(score == kMissingCell<float> ? std::numeric_limits<double>::quiet_NaN() : score);
  }
}

void AddScores(const NCDataMatrix<float>& tPrim, std::vector<RowPrediction>* rows) {
  for (int a = 1; a <= tPrim.SizeRows(); ++a) AddScores(tPrim[a], rows);
}

/// Predictions in the units of the file, and what is left of X. A row without a prediction loses its scores.
void FillRows(const YModelInfo& model, const NCDataMatrix<float>& yPred, const NCDataMatrix<float>& xLeft,
              std::vector<RowPrediction>* rows) {
  const std::vector<RowResidual> residuals = RowResiduals(xLeft);
  for (std::size_t i = 0; i < rows->size(); ++i) {
    RowPrediction& row = (*rows)[i];
    row.residual = residuals[i];
    if (!row.reason.empty()) {
      row.t.clear();
      continue;
    }
    const NCDataVector<float>& y = yPred[static_cast<int>(i) + 1];
    for (int j = 1; j <= y.Size(); ++j) {
      row.y.push_back(y[j] / FactorOf(model.yScaling, j) + CentreOf(model.yScaling, j));
      if (!std::isfinite(row.y.back())) row.reason = kTooLarge;
    }
    if (row.reason.empty()) continue;
    row.y.clear();
    row.t.clear();
  }
}

/// What a model says of rows, and what it leaves of them.
struct PredictedRows {
  std::vector<RowPrediction> rows;
  NCDataMatrix<float> left;  ///< of scaled X
};

/// What a model without components says of rows that are scaled: the mean of Y.
PredictedRows PredictMeans(const YModelInfo& model, NCDataMatrix<float> x) {
  PredictedRows predicted{std::vector<RowPrediction>(static_cast<std::size_t>(x.SizeRows())), std::move(x)};
  const NCDataMatrix<float> scaledMean(predicted.left.SizeRows(), static_cast<int>(model.yNames.size()), 0.0F);
  FillRows(model, scaledMean, predicted.left, &predicted.rows);
  return predicted;
}

PredictedRows Predict(const StoredPLS& model, NCDataMatrix<float> x, NCProgress* progress) {
  ApplyScale(model.xScaling, &x);
  if (model.Components() == 0) return PredictMeans(model, std::move(x));
  std::vector<RowPrediction> rows(static_cast<std::size_t>(x.SizeRows()));
  const NCPLS& pls = *model.pls;
  // In place: of a model without components the matrices of the library do not tell how many Y columns there are.
  NCDataMatrix<float> left = x, y(x.SizeRows(), static_cast<int>(model.yNames.size()), 0.0F);
  NCPLSPred prediction(/*inPlace=*/true, &left, &y, *pls.GetWprim(), *pls.GetPprim(), *pls.GetCprim(),
                       kMissingTolerance);
  WorkProgress work(progress);
  work.Begin(kPredicting);
  for (int a = 1; a <= prediction.GetMaxComp(); ++a) {
    work.MoveToPart(a, prediction.GetMaxComp());
    prediction.CalcNextComponent();
    AddScores(*prediction.GetTPred(), &rows);
    for (int r = 1; r <= x.SizeRows(); ++r) {
      std::string& reason = rows[static_cast<std::size_t>(r - 1)].reason;
      if (reason.empty() && (*prediction.GetTPred())[r] == static_cast<float>(kMissing)) {
        reason = ReasonFor(model.inputBlock, x.SizeColumns() - x[r].GetNumMisVal(), x.SizeColumns(), a);
      }
    }
  }
  FillRows(model, y, left, &rows);
  return {std::move(rows), std::move(left)};
}

PredictedRows Predict(const StoredOPLS& model, NCDataMatrix<float> x, NCProgress* progress) {
  ApplyScale(model.xScaling, &x);
  if (model.Components() == 0) return PredictMeans(model, std::move(x));
  const OPLSMatrices& opls = model.opls;
  NCOPLSPred prediction(&x, &opls.w, &opls.p, &opls.c, &opls.wo, &opls.po, &opls.co);
  WorkProgress work(progress);
  work.Begin(kPredicting);
  while (prediction.SizeOComps() < prediction.GetMaxComp()) {
    work.MoveToPart(prediction.SizeOComps() + 1, prediction.GetMaxComp());
    prediction.CalcNextComponent();
  }
  std::vector<RowPrediction> rows(static_cast<std::size_t>(x.SizeRows()));
  NoteMissingScores(model.inputBlock, x, *prediction.GetTOPred(), 0, &rows);
  NoteMissingScores(model.inputBlock, x, *prediction.GetTPred(), model.Orthogonal(), &rows);
  NoteTooFewCells(model.inputBlock, x, model.Components(), &rows);
  AddScores(*prediction.GetTPred(), &rows);
  AddScores(*prediction.GetTOPred(), &rows);
  NCDataMatrix<float> left = prediction.GetXOrthoResiduals();
  for (int a = 1; a <= model.Predictive(); ++a) left.AddVprimV((*prediction.GetTPred())[a], opls.p.back()[a], -1.0F);
  FillRows(model, *prediction.GetYPred(), left, &rows);
  return {std::move(rows), std::move(left)};
}

PredictedRows Predict(const StoredO2PLS& model, NCDataMatrix<float> x, NCProgress* progress) {
  WorkProgress(progress).Ask();
  ApplyScale(model.xScaling, &x);
  const O2PLSMatrices& o2pls = model.o2pls;
  const NCO2PLSYPred prediction(x, o2pls.p, o2pls.w, o2pls.q, o2pls.wo, o2pls.po, o2pls.s, o2pls.lambda,
                                static_cast<int>(model.yNames.size()));
  const NCDataMatrix<float> to = prediction.GetTo(), t = prediction.GetT();
  std::vector<RowPrediction> rows(static_cast<std::size_t>(x.SizeRows()));
  NoteMissingScores(model.inputBlock, x, to, 0, &rows);
  NoteMissingScores(model.inputBlock, x, t, model.XUnique(), &rows);
  AddScores(t, &rows);
  AddScores(to, &rows);
  for (int o = 1; o <= to.SizeRows(); ++o) x.AddVprimV(to[o], o2pls.po[o], -1.0F);
  for (int a = 1; a <= t.SizeRows(); ++a) x.AddVprimV(t[a], o2pls.p[a], -1.0F);
  FillRows(model, prediction.GetYPred(), x, &rows);
  return {std::move(rows), std::move(x)};
}

NCDataMatrix<float> WithoutUnpredicted(PredictedRows predicted) {
  for (std::size_t i = 0; i < predicted.rows.size(); ++i) {
    if (!predicted.rows[i].reason.empty()) predicted.left.SetRow(static_cast<int>(i) + 1, kMissingCell<float>);
  }
  return std::move(predicted.left);
}

}  // namespace

std::vector<RowPrediction> PredictRows(const StoredPLS& model, NCDataMatrix<float> x, NCProgress* progress) {
  return Predict(model, std::move(x), progress).rows;
}

std::vector<RowPrediction> PredictRows(const StoredOPLS& model, NCDataMatrix<float> x, NCProgress* progress) {
  return Predict(model, std::move(x), progress).rows;
}

std::vector<RowPrediction> PredictRows(const StoredO2PLS& model, NCDataMatrix<float> x, NCProgress* progress) {
  return Predict(model, std::move(x), progress).rows;
}

NCDataMatrix<float> XResiduals(const StoredPLS& model, NCDataMatrix<float> x, NCProgress* progress) {
  return WithoutUnpredicted(Predict(model, std::move(x), progress));
}

NCDataMatrix<float> XResiduals(const StoredOPLS& model, NCDataMatrix<float> x, NCProgress* progress) {
  return WithoutUnpredicted(Predict(model, std::move(x), progress));
}

NCDataMatrix<float> XResiduals(const StoredO2PLS& model, NCDataMatrix<float> x, NCProgress* progress) {
  return WithoutUnpredicted(Predict(model, std::move(x), progress));
}

double AbsoluteDistance(int components, const RowFit& row) {
  if (!row.reason.empty()) return std::numeric_limits<double>::quiet_NaN();
  return ResidualDeviation(row.residual, components);
}

double DistanceToModel(const ModelInfo& model, int components, const RowFit& row) {
  return AbsoluteDistance(components, row) / model.pooledDeviation;
}

void NoteNoDistances(const ModelInfo& model, int components, Notes* notes) {
  const std::string none = "no row has a distance to the model: ";
  if (static_cast<std::size_t>(components) >= model.xNames.size()) {
    notes->Add(none + "with as many components as " + model.inputBlock + " columns, " + std::to_string(components) +
               ", nothing of " + model.inputBlock + " is left to measure it by");
  } else if (!(model.pooledDeviation > 0.0)) {
    notes->Add(none + "the model leaves nothing of its training rows that it could be measured by");
  }
}

std::string PresentCellsText(const std::string& block, int present, int variables) {
  const std::string of = " of its " + std::to_string(variables) + " " + block + " cells ";
  if (present == 0) return "none" + of + "is present";
  return "only " + std::to_string(present) + of + (present == 1 ? "is" : "are") + " present";
}

}  // namespace kalmia::analysis

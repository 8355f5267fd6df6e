#include "app/Prediction.h"

#include <cmath>
#include <limits>

#include "app/Scaling.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/pcapls/NCPLSPred.h"

namespace kalmia::app {

namespace {

/// Why a row of `present` among `variables` cells has no score in a component (from 1).
std::string ReasonFor(int present, int variables, int component) {
  const std::string have = PresentCellsText(present, variables);
  if (present == 0) return have;
  if (present < component) return have + ", too few for component " + std::to_string(component);
  return have + ", and they say nothing about component " + std::to_string(component);
}

}  // namespace

std::vector<RowPrediction> PredictRows(const StoredPls& model, NCDataMatrix<float> x) {
  ApplyScale(model.xScale.get(), &x);
  std::vector<RowPrediction> rows(static_cast<std::size_t>(x.SizeRows()));
  const NCPLS& pls = *model.pls;
  NCPLSPred prediction(&x, pls.GetWprim(), pls.GetPprim(), pls.GetCprim(), kMissingTolerance);
  for (int a = 1; a <= prediction.GetMaxComp(); ++a) {
    prediction.CalcNextComponent();
    for (int r = 1; r <= x.SizeRows(); ++r) {
      std::string& reason = rows[static_cast<std::size_t>(r - 1)].reason;
      if (reason.empty() && (*prediction.GetTPred())[r] == static_cast<float>(kMissing)) {
        reason = ReasonFor(x.SizeColumns() - x[r].GetNumMisVal(), x.SizeColumns(), a);
      }
    }
  }
  const std::vector<RowResidual> residuals = RowResiduals(*prediction.GetXResiduals());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    rows[i].residual = residuals[i];
    if (!rows[i].reason.empty()) continue;
    const NCDataVector<float>& y = (*prediction.GetYPred())[static_cast<int>(i) + 1];
    for (int j = 1; j <= y.Size(); ++j) {
      rows[i].y.push_back(y[j] / FactorOf(*model.yScale, j) + CentreOf(*model.yScale, j));
      if (!std::isfinite(rows[i].y.back())) rows[i].reason = kTooLarge;
    }
    if (!rows[i].reason.empty()) rows[i].y.clear();
  }
  return rows;
}

double DistanceToModel(const ModelFrame& model, int components, const RowFit& row) {
  if (!row.reason.empty()) return std::numeric_limits<double>::quiet_NaN();
  return ResidualDeviation(row.residual, components) / model.pooledDeviation;
}

void NoteNoDistances(const ModelFrame& model, int components, Notes* notes) {
  const std::string none = "no row has a distance to the model: ";
  if (static_cast<std::size_t>(components) >= model.xNames.size()) {
    notes->Add(none + "with as many components as X columns, " + std::to_string(components) +
               ", nothing of X is left to measure it by");
  } else if (std::isnan(model.pooledDeviation)) {
    notes->Add(none + "no training row has more cells than the model has components");
  } else if (model.pooledDeviation == 0.0) {
    notes->Add(none + "the model describes its training rows without a rest");
  }
}

std::string PresentCellsText(int present, int variables) {
  const std::string of = " of its " + std::to_string(variables) + " X cells ";
  if (present == 0) return "none" + of + "is present";
  return "only " + std::to_string(present) + of + (present == 1 ? "is" : "are") + " present";
}

}  // namespace kalmia::app

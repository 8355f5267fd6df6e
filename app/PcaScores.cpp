#include "app/PcaScores.h"

#include <algorithm>
#include <cmath>

#include "app/FitRules.h"
#include "app/Scaling.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/pcapls/NCPCAPred.h"

namespace kalmia::app {

namespace {

RowScores ScoresOf(const NCDataMatrix<float>& tPrim, int row, int present, int variables) {
  RowScores scores;
  for (int a = 1; a <= tPrim.SizeRows(); ++a) scores.t.push_back(tPrim[a][row]);
  if (scores.t.front() == kMissing) {
    scores.reason = PresentCellsText(present, variables) + (present == 0 ? "" : ", too few for scores");
  } else if (!std::all_of(scores.t.begin(), scores.t.end(), [](double t) { return std::isfinite(t); })) {
    scores.reason = kTooLarge;
  }
  if (!scores.reason.empty()) scores.t.clear();
  return scores;
}

}  // namespace

std::vector<RowScores> ScoreRows(const StoredPca& model, NCDataMatrix<float> x) {
  ApplyScale(model.xScale.get(), &x);
  NCPCAPred prediction(&x, model.pca->GetPprim(), kMaxIterations, kMissingTolerance);
  for (int a = 1; a <= prediction.GetMaxComp(); ++a) prediction.CalcNextResidual();
  const std::vector<RowResidual> residuals = RowResiduals(*prediction.GetXResiduals());
  std::vector<RowScores> rows;
  for (int r = 1; r <= x.SizeRows(); ++r) {
    const int present = x.SizeColumns() - x[r].GetNumMisVal();
    rows.push_back(ScoresOf(*prediction.GetTPredPrim(), r, present, x.SizeColumns()));
    rows.back().residual = residuals[static_cast<std::size_t>(r - 1)];
  }
  return rows;
}

}  // namespace kalmia::app

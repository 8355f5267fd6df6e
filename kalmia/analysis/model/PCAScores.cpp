#include "kalmia/analysis/model/PCAScores.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/pcapls/NCPCAPred.h"

namespace kalmia::analysis {

namespace {

constexpr int kRowsAtATime = 64;  ///< a row with holes may take a while: the wish to stop is looked at in between

RowScores ScoresOf(const NCDataMatrix<float>& tPrim, int row, int present, int variables) {
  RowScores scores;
  for (int a = 1; a <= tPrim.SizeRows(); ++a) scores.t.push_back(tPrim[a][row]);
  if (scores.t.front() == kMissing) {
    scores.reason = PresentCellsText("X", present, variables) + (present == 0 ? "" : ", too few for scores");
  } else if (!std::all_of(scores.t.begin(), scores.t.end(), [](double t) { return std::isfinite(t); })) {
    scores.reason = kTooLarge;
  }
  if (!scores.reason.empty()) scores.t.clear();
  return scores;
}

/// What a model without components leaves of rows that are scaled: all.
std::vector<RowScores> WithoutScores(const NCDataMatrix<float>& x) {
  std::vector<RowScores> rows;
  for (const RowResidual& residual : RowResiduals(x)) {
    rows.emplace_back();
    rows.back().residual = residual;
  }
  return rows;
}

/// Of the rows of a scaled table.
void AppendScores(const NCPCA& model, const NCDataMatrix<float>& x, std::vector<RowScores>* rows) {
  NCPCAPred prediction(&x, model.GetPprim(), kMaxIterations, kMissingTolerance);
  for (int a = 1; a <= prediction.GetMaxComp(); ++a) prediction.CalcNextResidual();
  const std::vector<RowResidual> residuals = RowResiduals(*prediction.GetXResiduals());
  for (int r = 1; r <= x.SizeRows(); ++r) {
    const int present = x.SizeColumns() - x[r].GetNumMisVal();
    rows->push_back(ScoresOf(*prediction.GetTPredPrim(), r, present, x.SizeColumns()));
    rows->back().residual = residuals[static_cast<std::size_t>(r - 1)];
  }
}

}  // namespace

std::vector<RowScores> ScoreRows(const StoredPCA& model, NCDataMatrix<float> x, NCProgress* progress) {
  ApplyScale(model.xScaling, &x);
  if (model.Components() == 0) return WithoutScores(x);
  std::vector<RowScores> rows;
  WorkProgress work(progress);
  for (int first = 1; first <= x.SizeRows(); first += kRowsAtATime) {
    work.Begin("row " + std::to_string(first) + " of " + std::to_string(x.SizeRows()),
               static_cast<double>(first - 1) / x.SizeRows());
    const int last = std::min(x.SizeRows() - first, kRowsAtATime - 1) + first;
    AppendScores(*model.pca, x.GetRowSubMatrix(first, last), &rows);
  }
  return rows;
}

}  // namespace kalmia::analysis

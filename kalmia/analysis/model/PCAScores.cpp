#include "kalmia/analysis/model/PCAScores.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

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

/// Of the rows of a scaled table, whose residuals take the place of its cells.
void AppendScores(const NCPCA& model, NCDataMatrix<float>* x, std::vector<RowScores>* rows) {
  NCPCAPred prediction(x, model.GetPprim(), kMaxIterations, kMissingTolerance);
  for (int a = 1; a <= prediction.GetMaxComp(); ++a) prediction.CalcNextResidual();
  const std::vector<RowResidual> residuals = RowResiduals(*prediction.GetXResiduals());
  for (int r = 1; r <= x->SizeRows(); ++r) {
    const int present = x->SizeColumns() - (*x)[r].GetNumMisVal();
    rows->push_back(ScoresOf(*prediction.GetTPredPrim(), r, present, x->SizeColumns()));
    rows->back().residual = residuals[static_cast<std::size_t>(r - 1)];
  }
  *x = *prediction.GetXResiduals();
}

/// Of rows in the units of the file. `left`, which may be null, takes what the model leaves of them.
std::vector<RowScores> ScoreInParts(const StoredPCA& model, NCDataMatrix<float> x, NCProgress* progress,
                                    NCDataMatrix<float>* left) {
  ApplyScale(model.xScaling, &x);
  if (model.Components() == 0) {
    std::vector<RowScores> rows = WithoutScores(x);
    if (left != nullptr) *left = std::move(x);
    return rows;
  }
  std::vector<RowScores> rows;
  WorkProgress work(progress);
  for (int first = 1; first <= x.SizeRows(); first += kRowsAtATime) {
    work.Begin("row " + std::to_string(first) + " of " + std::to_string(x.SizeRows()),
               static_cast<double>(first - 1) / x.SizeRows());
    const int last = std::min(x.SizeRows() - first, kRowsAtATime - 1) + first;
    NCDataMatrix<float> part = x.GetRowSubMatrix(first, last);
    AppendScores(*model.pca, &part, &rows);
    for (int r = first; left != nullptr && r <= last; ++r) x.SetRow(r, part[r - first + 1]);
  }
  if (left != nullptr) *left = std::move(x);
  return rows;
}

}  // namespace

std::vector<RowScores> ScoreRows(const StoredPCA& model, NCDataMatrix<float> x, NCProgress* progress) {
  return ScoreInParts(model, std::move(x), progress, /*left=*/nullptr);
}

NCDataMatrix<float> XResiduals(const StoredPCA& model, NCDataMatrix<float> x, NCProgress* progress) {
  NCDataMatrix<float> left;
  const std::vector<RowScores> rows = ScoreInParts(model, std::move(x), progress, &left);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (!rows[i].reason.empty()) left.SetRow(static_cast<int>(i) + 1, kMissingCell<float>);
  }
  return left;
}

}  // namespace kalmia::analysis

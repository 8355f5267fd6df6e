#include "kalmia/analysis/model/internal/ScoreFunctions.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

#include "kalmia/analysis/model/internal/PresentCells.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

/// The score that a row has along w.
LinearFunction ScoreAlong(const NCDataVector<float>& w) {
  LinearFunction score;
  const double ss = SumOfPresentSquares(w);
  for (int k = 1; k <= w.Size(); ++k) score.push_back(ss > 0.0 ? Present(w[k]) / ss : 0.0);
  return score;
}

/// `function` of the row less t p' becomes a function of the row itself, t being the function `score` of it.
void TakeBack(const NCDataVector<float>& p, const LinearFunction& score, LinearFunction* function) {
  double share = 0.0;
  for (std::size_t k = 0; k < score.size(); ++k) share += Present(p[static_cast<int>(k) + 1]) * (*function)[k];
  for (std::size_t k = 0; k < score.size(); ++k) (*function)[k] -= share * score[k];
}

/// Score `along`, after the rows up to `last` of `scores` times those of `away` have been taken off one by one.
LinearFunction ScoreBehind(LinearFunction along, const NCDataMatrix<float>& scores, const NCDataMatrix<float>& away,
                           int last) {
  for (int a = last; a >= 1; --a) TakeBack(away[a], ScoreAlong(scores[a]), &along);
  return along;
}

/// Of scores along the rows of w, after each of which t p' was taken off.
std::vector<LinearFunction> DeflatedScores(const NCDataMatrix<float>& w, const NCDataMatrix<float>& p) {
  std::vector<LinearFunction> scores;
  for (int a = 1; a <= w.SizeRows(); ++a) scores.push_back(ScoreBehind(ScoreAlong(w[a]), w, p, a - 1));
  return scores;
}

}  // namespace

std::vector<LinearFunction> ScoreFunctions(const StoredPLS& model) {
  if (model.Components() == 0) return {};
  return DeflatedScores(*model.pls->GetWprim(), *model.pls->GetPprim());
}

std::vector<LinearFunction> ScoreFunctions(const StoredPCA& model) {
  if (model.Components() == 0) return {};
  return DeflatedScores(*model.pca->GetPprim(), *model.pca->GetPprim());
}

std::vector<LinearFunction> ScoreFunctions(const StoredOPLS& model) {
  if (model.Components() == 0) return {};
  const OPLSMatrices& opls = model.opls;
  std::vector<LinearFunction> orthogonal;
  const auto throughFilter = [&](LinearFunction function) {
    for (auto o = static_cast<int>(orthogonal.size()); o >= 1; --o) {
      TakeBack(opls.po[o], orthogonal[static_cast<std::size_t>(o - 1)], &function);
    }
    return function;
  };
  for (int o = 1; o <= opls.wo.SizeRows(); ++o) {
    const NCDataMatrix<float>& w = opls.w[static_cast<std::size_t>(o - 1)];
    orthogonal.push_back(throughFilter(ScoreBehind(ScoreAlong(opls.wo[o]), w, w, w.SizeRows())));
  }
  std::vector<LinearFunction> scores = DeflatedScores(opls.w.back(), opls.p.back());
  for (LinearFunction& score : scores) score = throughFilter(std::move(score));
  std::move(orthogonal.begin(), orthogonal.end(), std::back_inserter(scores));
  return scores;
}

}  // namespace kalmia::analysis

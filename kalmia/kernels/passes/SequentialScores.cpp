#include "kalmia/kernels/passes/SequentialScores.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "kalmia/kernels/passes/CompleteTables.h"
#include "kalmia/kernels/regression/ExcludedPositions.h"
#include "kalmia/kernels/regression/RowRegression.h"
#include "kalmia/kernels/rows/RowPointers.h"
#include "kalmia/kernels/simd/ColumnSums.h"
#include "kalmia/kernels/simd/DeflatedRows.h"
#include "kalmia/kernels/simd/Dots.h"
#include "kalmia/kernels/threads/Slices.h"
#include "kalmia/kernels/threads/Team.h"

namespace kalmia {

namespace {

using simd::kRowsSideBySide;

/// All scores of a complete table in one pass.
class InOnePass {
 public:
  InOnePass(const NCDataMatrix<float>& X, const NCDataMatrix<float>& along, const NCDataMatrix<float>& away)
      : X_(X), along_(along), away_(away), scores_(along.SizeRows(), X.SizeRows(), 0.0F), cells_(scores_) {
    for (const NCDataVector<float>& w : along) {
      vectors_.emplace_back(w);
      regressions_.emplace_back(vectors_.back(), /*fix=*/true);
    }
  }

  /// False where a score is missing or empties its row: the scores are not to be used then.
  bool Run() {
    const int team = TeamSize(std::int64_t{X_.SizeRows()} * X_.SizeColumns());
    return ForSlices(X_.SizeRows(), team, kRowsSideBySide, [&](int first, int last) {
             std::vector<float> buffer(along_.SizeRows() > 2 ? RoomOfAStep() : 0);
             int unusable = 0;
             for (int r = first; r <= last; r += kRowsSideBySide)
               unusable += Step(r, std::min(kRowsSideBySide, last - r + 1), buffer.data());
             return unusable;
           }) == 0;
  }

  const NCDataMatrix<float>& Scores() const { return scores_; }

 private:
  std::size_t RoomOfAStep() const { return static_cast<std::size_t>(X_.SizeColumns()) * kRowsSideBySide; }

  /// Rows r to r + count - 1. They are stored in `buffer`, which may be null otherwise, with more than two scores.
  int Step(int r, int count, float* buffer) {
    const int n = X_.SizeColumns(), last = along_.SizeRows();
    const float* row[kRowsSideBySide];
    float *stored[kRowsSideBySide], factors[kRowsSideBySide];
    double dots[kRowsSideBySide];
    for (int k = 0; k < count; ++k) {
      row[k] = X_[r + k].begin();
      if (last > 2) stored[k] = buffer + std::ptrdiff_t{k} * n;
    }
    int unusable = 0;
    for (int a = 1; a <= last; ++a) {
      const float* w = along_[a].begin();
      if (a == 1) {
        simd::DotRows(w, row, count, n, dots);
      } else {
        for (int k = 0; k < count; ++k) factors[k] = -cells_.Get()[a - 1][r + k];
        const simd::DeflatedRows left{row, factors, count, away_[a - 1].begin(), n};
        if (a == last) {
          simd::DotDeflated(left, w, dots);
        } else {
          simd::StoreDeflated(left, stored);
          std::copy_n(stored, count, row);
          simd::DotRows(w, row, count, n, dots);
        }
      }
      float* t = cells_.Get()[a] + r;
      regressions_[static_cast<std::size_t>(a) - 1].CompleteRows(dots, count, t);
      unusable += static_cast<int>(std::count_if(t, t + count, EmptiesItsRow));
    }
    return unusable;
  }

  const NCDataMatrix<float>& X_;
  const NCDataMatrix<float>& along_;
  const NCDataMatrix<float>& away_;
  NCDataMatrix<float> scores_;
  const RowPointers<float> cells_;
  std::deque<VectorWithExclusions<float>> vectors_;  ///< which the regressions refer to
  std::vector<RowRegression<float>> regressions_;
};

}  // namespace

NCDataMatrix<float> SequentialScores(const NCDataMatrix<float>& X, const NCDataMatrix<float>& along,
                                 const NCDataMatrix<float>& away) {
  if (!HasNoCells(X) && !HasNoCells(along) && IsComplete(X) && IsComplete(along) && IsComplete(away)) {
    InOnePass pass(X, along, away);
    if (pass.Run()) return pass.Scores();
  }
  NCDataMatrix<float> left = X, scores;
  for (int a = 1; a <= along.SizeRows(); ++a) {
    scores.InsertRow(a, left.SpecialNipalsRegressRowsFix(along[a], nullptr, 0));
    if (a < along.SizeRows()) left.AddVprimV(scores[a], away[a], -1.0F);
  }
  return scores;
}

}  // namespace kalmia

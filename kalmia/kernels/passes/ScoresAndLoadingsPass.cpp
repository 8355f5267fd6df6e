#include "kalmia/kernels/passes/ScoresAndLoadingsPass.h"

#include <omp.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "kalmia/kernels/passes/BlockedColumnSums.h"
#include "kalmia/kernels/regression/ColumnRegression.h"
#include "kalmia/kernels/simd/ColumnSums.h"
#include "kalmia/kernels/threads/Slices.h"
#include "kalmia/kernels/threads/Team.h"

namespace kalmia {

namespace {

/// Cells that are scored before their columns are summed: they stay in the second cache of any machine.
constexpr std::int64_t kCellsPerBlock = 65536;

constexpr int kRowsPerGrain = 16;

/// Rows that are scored before their columns are summed.
int RowsPerBlock(const NCDataMatrix<float>& X, int team) {
  const std::int64_t grains = std::max<std::int64_t>(team, kCellsPerBlock / X.SizeColumns() / kRowsPerGrain);
  return static_cast<int>(std::min<std::int64_t>(X.SizeRows(), grains * kRowsPerGrain));
}

}  // namespace

int ScoresAndLoadingsPass::TeamFor(const NCDataMatrix<float>& X) {
  return TeamSize(std::int64_t{X.SizeRows()} * X.SizeColumns());
}

ScoresAndLoadingsPass::ScoresAndLoadingsPass(const NCDataMatrix<float>& X, ScoreRows scoreRows)
    : X_(X),
      scoreRows_(std::move(scoreRows)),
      team_(TeamFor(X)),
      rowsPerBlock_(RowsPerBlock(X, team_)),
      scores_(static_cast<std::size_t>(X.SizeRows()) + 1),
      products_(static_cast<std::size_t>(X.SizeColumns())) {
  if (X.GetNumMisVal() == 0) return;
  weights_.resize(products_.size());
  holes_.resize(products_.size());
  MarkColumnsWithHoles(X, 1, X.SizeColumns(), holes_.data());
}

/// Returns how many scores are missing. The sums are what they should be if there are none.
int ScoresAndLoadingsPass::Sum() {
  if (team_ < 2) return RunThread(0, 1);
  int missing = 0;
#pragma omp parallel num_threads(team_) reduction(+ : missing)
  missing += RunThread(omp_get_thread_num(), omp_get_num_threads());
  return missing;
}

/// What thread `me` of a team does: its rows of a block and then, when all rows of the block have their scores, its
/// columns.
int ScoresAndLoadingsPass::RunThread(int me, int team) {
  const int rows = X_.SizeRows();
  const int firstColumn = SliceBound(X_.SizeColumns(), kColumnsPerGrain, me, team);
  const int endOfColumns = SliceBound(X_.SizeColumns(), kColumnsPerGrain, me + 1, team);
  int missing = 0;
  for (int first = 1; first <= rows; first += rowsPerBlock_) {
    const int count = std::min(rowsPerBlock_, rows - first + 1);
    const int mine = first + SliceBound(count, kRowsPerGrain, me, team);
    const int next = first + SliceBound(count, kRowsPerGrain, me + 1, team);
    if (mine < next) missing += scoreRows_(me, mine, next - 1, scores_.data());
    if (team > 1) {  // alone, it would wait for the threads of a region that the caller is in
#pragma omp barrier
    }
    AddToSums(first, first + count - 1, firstColumn, endOfColumns);
  }
  return missing;
}

/// Adds rows first to last to the sums of columns begin to end - 1, from 0.
void ScoresAndLoadingsPass::AddToSums(int first, int last, int begin, int end) {
  ForColumnBlocks(begin + 1, end, [&](int firstColumn, int n) {
    const int c = firstColumn - 1;
    for (int r = first; r <= last; r += simd::kRowsSideBySide) {
      const float* row[simd::kRowsSideBySide];
      double t[simd::kRowsSideBySide], squares[simd::kRowsSideBySide];
      const int count = std::min(simd::kRowsSideBySide, last - r + 1);
      for (int k = 0; k < count; ++k) {
        row[k] = X_[r + k].begin() + c;
        t[k] = scores_[static_cast<std::size_t>(r + k)];
        squares[k] = t[k] * t[k];
      }
      holes_.empty() ? simd::AddRows(row, t, count, n, products_.data() + c)
                     : simd::AddRowsMasked(row, t, squares, count, n, holes_.data() + c, products_.data() + c,
                                           weights_.data() + c);
    }
  });
}

/// The regression of the columns on the scores t, of which none is missing, into the 1-based cells of `loadings`, which
/// are missing so far. Returns how many of them stay missing.
int ScoresAndLoadingsPass::Loadings(const NCDataVector<float>& t, float* loadings) const {
  const ColumnRegression<float> regression{X_, t, t.GetSS(), /*misValMode=*/holes_.empty() ? 0 : 1, /*fix=*/true};
  return X_.SizeColumns() + ForSlices(X_.SizeColumns(), team_, kColumnsPerGrain, [&](int first, int last) {
    const int n = last - first + 1;
    const std::size_t c = static_cast<std::size_t>(first) - 1;
    int change = 0;
    if (holes_.empty())
      WriteQuotients(loadings + first, products_.data() + c, n, regression.ss, change);
    else
      change = regression.Write(loadings, first, n, products_.data() + c, weights_.data() + c);
    return change;
  });
}

bool ScoresAndLoadingsPass::Run(NCDataVector<float>* t, NCDataVector<float>* p) {
  if (Sum() > 0) return false;
  NCDataVector<float> newT;
  newT.CopyZeroBasedVector(scores_.data() + 1, X_.SizeRows());
  std::vector<float> loadings(static_cast<std::size_t>(X_.SizeColumns()) + 1, kMissingCell<float>);
  const int missing = Loadings(newT, loadings.data());
  // A loading of exactly -99 counts as present where it comes from, which a new vector cannot be told.
  if (std::count(loadings.begin() + 1, loadings.end(), kMissingCell<float>) != missing) return false;
  p->CopyZeroBasedVector(loadings.data() + 1, X_.SizeColumns());
  *t = newT;
  return true;
}

}  // namespace kalmia

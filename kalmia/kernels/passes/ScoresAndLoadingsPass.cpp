#include "kalmia/kernels/passes/ScoresAndLoadingsPass.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "kalmia/kernels/passes/BlockedColumnSums.h"
#include "kalmia/kernels/regression/ColumnRegression.h"
#include "kalmia/kernels/simd/ColumnSums.h"
#include "kalmia/kernels/threads/Slices.h"
#include "kalmia/kernels/threads/Team.h"

namespace kalmia {

namespace {

/// Cells of a block of rows: they stay in the second cache of any machine from their scoring until they are summed.
constexpr std::int64_t kCellsPerBlock = 65536;

constexpr int kRowsPerGrain = 16;

/// At least a grain for each thread, even of rows so wide that fewer would fill the cache.
int RowsPerBlock(const NCDataMatrix<float>& X, int team) {
  const std::int64_t grains = std::max<std::int64_t>(team, kCellsPerBlock / X.SizeColumns() / kRowsPerGrain);
  return static_cast<int>(std::min<std::int64_t>(X.SizeRows(), grains * kRowsPerGrain));
}

/// The sums over the rows of X that its loadings are made of. Indices of columns count from 0.
class LoadingSums {
 public:
  explicit LoadingSums(const NCDataMatrix<float>& X) : X_(X), products_(static_cast<std::size_t>(X.SizeColumns())) {
    if (X.GetNumMisVal() == 0) return;
    weights_.resize(products_.size());
    holes_.resize(products_.size());
    MarkColumnsWithHoles(X, 1, X.SizeColumns(), holes_.data());
  }

  /// Adds the rows of one slice, times their 1-based scores, to the sums of the columns of another one.
  void Add(const Slice& rows, const float* scores, const Slice& columns) {
    ForColumnBlocks(columns.first, columns.last, [&](int firstColumn, int n) {
      for (int r = rows.first; r <= rows.last; r += simd::kRowsSideBySide)
        AddSideBySide(r, std::min(simd::kRowsSideBySide, rows.last - r + 1), scores, firstColumn - 1, n);
    });
  }

  /// The regression of the columns on the scores t, of which none is missing, into the 1-based cells of `loadings`,
  /// which are missing before. Returns how many of them stay missing.
  int WriteLoadings(const NCDataVector<float>& t, int team, float* loadings) const {
    const ColumnRegression<float> regression{X_, t, t.GetSS(), /*misValMode=*/HasHoles() ? 1 : 0, /*fix=*/true};
    return X_.SizeColumns() + ForSlices(X_.SizeColumns(), team, kColumnsPerGrain, [&](int first, int last) {
      const int n = last - first + 1, c = first - 1;
      if (HasHoles()) return regression.Write(loadings, first, n, products_.data() + c, weights_.data() + c);
      int change = 0;
      WriteQuotients(loadings + first, products_.data() + c, n, regression.ss, change);
      return change;
    });
  }

 private:
  bool HasHoles() const { return !holes_.empty(); }

  /// Rows r to r + count - 1 at n columns from c on.
  void AddSideBySide(int r, int count, const float* scores, int c, int n) {
    const float* row[simd::kRowsSideBySide];
    double t[simd::kRowsSideBySide], squares[simd::kRowsSideBySide];
    for (int k = 0; k < count; ++k) {
      row[k] = X_[r + k].begin() + c;
      t[k] = scores[r + k];
      squares[k] = t[k] * t[k];
    }
    if (HasHoles())
      simd::AddRowsMasked(row, t, squares, count, n, holes_.data() + c, products_.data() + c, weights_.data() + c);
    else
      simd::AddRows(row, t, count, n, products_.data() + c);
  }

  const NCDataMatrix<float>& X_;
  std::vector<double> products_;
  std::vector<double> weights_;  ///< sums of t^2 over the pairs of each column; empty where X has no holes
  std::vector<float> holes_;     ///< what a hole of each column looks like; empty where X has no holes
};

/// Writes the 1-based scores of all rows and returns how many of them are missing. If there are none, `sums` gets every
/// row. In each block the threads first share the rows and then, when all of these have their scores, the columns.
int ScoreAndSum(const NCDataMatrix<float>& X, const RowScorer& scorer, int team, float* scores, LoadingSums* sums) {
  const int perBlock = RowsPerBlock(X, team);
  const auto rowsOf = [&](int block) {
    const int first = 1 + block * perBlock;
    return Slice{first, std::min(first + perBlock - 1, X.SizeRows())};
  };
  return ForBlocksInTwoSteps(
      (X.SizeRows() + perBlock - 1) / perBlock, team,
      [&](int block, TeamMember me) {
        const Slice mine = me.SliceOf(rowsOf(block), kRowsPerGrain);
        return mine.Empty() ? 0 : scorer.Score(me.number, mine.first, mine.last, scores);
      },
      [&](int block, TeamMember me) {
        sums->Add(rowsOf(block), scores, me.SliceOf({1, X.SizeColumns()}, kColumnsPerGrain));
      });
}

}  // namespace

int TeamForScoresAndLoadings(const NCDataMatrix<float>& X) {
  return TeamSize(std::int64_t{X.SizeRows()} * X.SizeColumns());
}

bool CalcScoresAndLoadingsInOnePass(const NCDataMatrix<float>& X, const RowScorer& scorer, NCDataVector<float>* t,
                                    NCDataVector<float>* p) {
  const int team = TeamForScoresAndLoadings(X);
  std::vector<float> scores(static_cast<std::size_t>(X.SizeRows()) + 1);
  LoadingSums sums(X);
  if (ScoreAndSum(X, scorer, team, scores.data(), &sums) > 0) return false;
  NCDataVector<float> newT;
  newT.CopyZeroBasedVector(scores.data() + 1, X.SizeRows());
  std::vector<float> loadings(static_cast<std::size_t>(X.SizeColumns()) + 1, kMissingCell<float>);
  const int missing = sums.WriteLoadings(newT, team, loadings.data());
  // A loading of exactly -99 counts as present where it comes from, which a new vector cannot be told.
  if (std::count(loadings.begin() + 1, loadings.end(), kMissingCell<float>) != missing) return false;
  p->CopyZeroBasedVector(loadings.data() + 1, X.SizeColumns());
  *t = newT;
  return true;
}

}  // namespace kalmia

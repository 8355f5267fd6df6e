#include "kalmia/kernels/ComponentPasses.h"

#include <omp.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "kalmia/kernels/ColumnRegression.h"
#include "kalmia/kernels/ColumnWalk.h"
#include "kalmia/kernels/ExcludedPositions.h"
#include "kalmia/kernels/Regression.h"
#include "kalmia/kernels/RowRegression.h"
#include "kalmia/kernels/Slices.h"
#include "kalmia/kernels/Team.h"
#include "kalmia/kernels/simd/ColumnSums.h"

namespace kalmia {

namespace {

constexpr float kHole = kMissingCell<float>;

/// Cells that are scored before their columns are summed: they stay in the second cache of any machine.
constexpr std::int64_t kCellsPerBlock = 65536;

std::int64_t CellsOf(const NCDataMatrix<float>& X) { return std::int64_t{X.SizeRows()} * X.SizeColumns(); }

/// One pass over a table: the scores of its rows on w, from 1, and the sums over its columns that the loadings are made
/// of, from 0.
class ScoresAndSums {
 public:
  ScoresAndSums(const NCDataMatrix<float>& X, const WithExcluded<float>& w);

  /// Returns how many scores are missing. The sums are what they should be if there are none.
  int Run();
  /// The regression of the columns on the scores t, of which none is missing, into the 1-based cells of `loadings`,
  /// which are missing so far. Returns how many of them stay missing.
  int Loadings(const NCDataVector<float>& t, float* loadings) const;
  const float* Scores() const { return scores_.data() + 1; }

 private:
  int RunThread(int me, int team);
  void AddToSums(int first, int last, int begin, int end);

  const NCDataMatrix<float>& X_;
  const RowRegression<float> regression_;
  const int team_;
  const int rowsPerBlock_;
  std::vector<float> scores_;
  std::vector<double> products_;
  std::vector<double> weights_;  ///< sums of t^2 over the pairs of each column; only if X has holes
  std::vector<float> holes_;     ///< what a hole of each column looks like; only if X has holes
};

constexpr int kRowsPerGrain = 16;

/// Rows that are scored before their columns are summed.
int RowsPerBlock(const NCDataMatrix<float>& X, int team) {
  const std::int64_t grains = std::max<std::int64_t>(team, kCellsPerBlock / X.SizeColumns() / kRowsPerGrain);
  return static_cast<int>(std::min<std::int64_t>(X.SizeRows(), grains * kRowsPerGrain));
}

ScoresAndSums::ScoresAndSums(const NCDataMatrix<float>& X, const WithExcluded<float>& w)
    : X_(X),
      regression_(w, /*fix=*/true),
      team_(TeamSize(CellsOf(X))),
      rowsPerBlock_(RowsPerBlock(X, team_)),
      scores_(static_cast<std::size_t>(X.SizeRows()) + 1),
      products_(static_cast<std::size_t>(X.SizeColumns())) {
  if (X.GetNumMisVal() == 0) return;
  weights_.resize(products_.size());
  holes_.resize(products_.size());
  MarkColumnsWithHoles(X, 1, X.SizeColumns(), holes_.data());
}

int ScoresAndSums::Run() {
  if (team_ < 2) return RunThread(0, 1);
  int missing = 0;
#pragma omp parallel num_threads(team_) reduction(+ : missing)
  missing += RunThread(omp_get_thread_num(), omp_get_num_threads());
  return missing;
}

/// What thread `me` of a team does: its rows of a block and then, when all rows of the block have their scores, its
/// columns.
int ScoresAndSums::RunThread(int me, int team) {
  const int rows = X_.SizeRows();
  const int firstColumn = SliceBound(X_.SizeColumns(), kColumnsPerGrain, me, team);
  const int endOfColumns = SliceBound(X_.SizeColumns(), kColumnsPerGrain, me + 1, team);
  int missing = 0;
  for (int first = 1; first <= rows; first += rowsPerBlock_) {
    const int count = std::min(rowsPerBlock_, rows - first + 1);
    const int mine = first + SliceBound(count, kRowsPerGrain, me, team);
    const int next = first + SliceBound(count, kRowsPerGrain, me + 1, team);
    if (mine < next) missing += regression_.Rows(X_, scores_.data(), mine, next - 1);
    if (team > 1) {  // alone, it would wait for the threads of a region that the caller is in
#pragma omp barrier
    }
    AddToSums(first, first + count - 1, firstColumn, endOfColumns);
  }
  return missing;
}

/// Adds rows first to last to the sums of columns begin to end - 1, from 0.
void ScoresAndSums::AddToSums(int first, int last, int begin, int end) {
  ForColumnBlocks(begin + 1, end, [&](int firstColumn, int n) {
    const int c = firstColumn - 1;
    for (int r = first; r <= last; r += simd::kRowsPerStep) {
      const float* row[simd::kRowsPerStep];
      double t[simd::kRowsPerStep], squares[simd::kRowsPerStep];
      const int count = std::min(simd::kRowsPerStep, last - r + 1);
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

int ScoresAndSums::Loadings(const NCDataVector<float>& t, float* loadings) const {
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

/// Both steps of CalcScoresAndLoadings in one pass, or false, and t and p are what they were.
bool CalcInOnePass(const NCDataMatrix<float>& X, const WithExcluded<float>& w, NCDataVector<float>* t,
                   NCDataVector<float>* p) {
  if (X.SizeRows() == 0 || X.SizeColumns() == 0) return false;
  ScoresAndSums pass(X, w);
  if (pass.Run() > 0) return false;
  NCDataVector<float> newT;
  newT.CopyZeroBasedVector(pass.Scores(), X.SizeRows());
  std::vector<float> loadings(static_cast<std::size_t>(X.SizeColumns()) + 1, kHole);
  const int missing = pass.Loadings(newT, loadings.data());
  // A loading of exactly -99 counts as present where it comes from, which a new vector cannot be told.
  if (std::count(loadings.begin() + 1, loadings.end(), kHole) != missing) return false;
  p->CopyZeroBasedVector(loadings.data() + 1, X.SizeColumns());
  *t = newT;
  return true;
}

}  // namespace

void CalcScoresAndLoadings(const NCDataMatrix<float>& X, const NCDataVector<float>& w, NCDataVector<float>* t,
                           NCDataVector<float>* p) {
  if (CalcInOnePass(X, WithExcluded<float>(w), t, p)) return;
  *t = X.SpecialNipalsRegressRowsFix(w, nullptr, 0);
  *p = X.SpecialNipalsRegressColumnsFix(*t);
}

void CalcScoresAndLoadings(const NCDataMatrix<float>& X, const NCDataVector<float>& w,
                           const NCIntegralVector<int, -99>* groups, int group, NCDataVector<float>* t,
                           NCDataVector<float>* p) {
  if (!groups && CalcInOnePass(X, WithExcluded<float>(w), t, p)) return;
  if (groups && CalcInOnePass(X, WithExcluded<float>(w, *groups, group), t, p)) {
    for (int c = 1; c <= p->Size(); ++c)
      if ((*groups)[c] == group) (*p)(c, kHole);
    return;
  }
  *t = X.SpecialNipalsRegressRowsFix(w, groups, group);
  *p = X.SpecialNipalsRegressColumnsFix(*t, groups, group);
}

long double SumSquaresWithout(const NCDataMatrix<float>& Y, const NCDataVector<float>& t,
                              const NCDataVector<float>& c) {
  const int columns = Y.SizeColumns();
  NCDataMatrix<float> rest(1, columns);  // of a row at a time
  std::vector<int> emptied(static_cast<std::size_t>(columns) + 1);
  const int misValMode = MisValMode(Y.GetNumMisVal(), c.GetNumMisVal());
  double sum = 0.0;
  for (int r = 1; r <= Y.SizeRows(); ++r) {
    rest(1).CopyContent(Y[r]);
    const float factor = t[r] == kHole ? kHole : -t[r];
    NCDataMatrix<float>::AddFV(rest, factor, c.begin(), misValMode, 1, emptied[0], emptied.data());
    const double squares = static_cast<double>(rest[1].GetSS());
    if (squares != kMissing) sum += squares;
  }
  return sum;
}

}  // namespace kalmia

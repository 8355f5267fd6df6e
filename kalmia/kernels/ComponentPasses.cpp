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

/// sums[c] += t[r] X[r][c + 1] over the rows first to last and the columns c from begin to end - 1, from 0.
void AddToSums(const NCDataMatrix<float>& X, const std::vector<float>& t, int first, int last, int begin, int end,
               double* sums) {
  ForColumnBlocks(begin + 1, end, [&](int firstColumn, int n) {
    const int c = firstColumn - 1;
    for (int r = first; r <= last; r += simd::kRowsPerStep) {
      const float* row[simd::kRowsPerStep];
      double v[simd::kRowsPerStep];
      const int count = std::min(simd::kRowsPerStep, last - r + 1);
      for (int k = 0; k < count; ++k) {
        row[k] = X[r + k].begin() + c;
        v[k] = t[static_cast<std::size_t>(r + k)];
      }
      simd::AddRows(row, v, count, n, sums + c);
    }
  });
}

/// The pass of CalcScoresAndLoadings: scores, from 1, and column sums, from 0.
struct ScoresAndSums {
  const NCDataMatrix<float>& X;
  const RowRegression<float>& regression;
  int rowsPerBlock;
  std::vector<float> scores;
  std::vector<double> sums;

  /// What thread `me` of a team does: its rows of a block and then, when all rows of the block have their scores, its
  /// columns. Returns how many of its scores are missing.
  int Run(int me, int team);
};

constexpr int kRowsPerGrain = 16;

int ScoresAndSums::Run(int me, int team) {
  const int rows = X.SizeRows();
  const int firstColumn = SliceBound(X.SizeColumns(), kColumnsPerGrain, me, team);
  const int endOfColumns = SliceBound(X.SizeColumns(), kColumnsPerGrain, me + 1, team);
  int missing = 0;
  for (int first = 1; first <= rows; first += rowsPerBlock) {
    const int count = std::min(rowsPerBlock, rows - first + 1);
    const int mine = first + SliceBound(count, kRowsPerGrain, me, team);
    const int next = first + SliceBound(count, kRowsPerGrain, me + 1, team);
    if (mine < next) missing += regression.Rows(X, scores.data(), mine, next - 1);
    if (team > 1) {  // alone, it would wait for the threads of a region that the caller is in
#pragma omp barrier
    }
    AddToSums(X, scores, first, first + count - 1, firstColumn, endOfColumns, sums.data());
  }
  return missing;
}

/// Rows that are scored before their columns are summed.
int RowsPerBlock(const NCDataMatrix<float>& X, int team) {
  const std::int64_t grains = std::max<std::int64_t>(team, kCellsPerBlock / X.SizeColumns() / kRowsPerGrain);
  return static_cast<int>(std::min<std::int64_t>(X.SizeRows(), grains * kRowsPerGrain));
}

}  // namespace

bool CalcScoresAndLoadings(const NCDataMatrix<float>& X, const NCDataVector<float>& w, NCDataVector<float>* t,
                           NCDataVector<float>* p) {
  const int rows = X.SizeRows();
  const int columns = X.SizeColumns();
  if (rows == 0 || columns == 0 || X.GetNumMisVal() > 0 || w.GetNumMisVal() > 0) return false;
  const WithExcluded<float> weights(w);
  const RowRegression<float> regression(weights, /*fix=*/true);
  const int team = TeamSize(CellsOf(X));
  ScoresAndSums pass{X, regression, RowsPerBlock(X, team), std::vector<float>(static_cast<std::size_t>(rows) + 1),
                     std::vector<double>(static_cast<std::size_t>(columns))};
  int missing = 0;
  if (team < 2) {
    missing = pass.Run(0, 1);
  } else {
#pragma omp parallel num_threads(team) reduction(+ : missing)
    missing += pass.Run(omp_get_thread_num(), omp_get_num_threads());
  }
  if (missing > 0) return false;

  NCDataVector<float> newT;
  newT.CopyZeroBasedVector(pass.scores.data() + 1, rows);
  const long double ss = newT.GetSS();
  std::vector<float> loadings(static_cast<std::size_t>(columns), kHole);
  int estimated = 0;
  WriteQuotients(loadings.data(), pass.sums.data(), columns, ss, estimated);
  // A loading of exactly -99 counts as present where it comes from, which a new vector cannot be told.
  if (std::find(loadings.begin(), loadings.end(), kHole) != loadings.end()) return false;
  p->CopyZeroBasedVector(loadings.data(), columns);
  *t = newT;
  return true;
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

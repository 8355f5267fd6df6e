#include "testing/RandomTables.h"

#include <algorithm>
#include <random>
#include <type_traits>

namespace {

/// The standard distributions differ between libraries; the generator does not.
double Uniform(std::mt19937& random) { return (random() >> 12) * 0x1p-20; }

/// A cell of few bits with bits in all of its places, down to the last; as good as equal in float.
double WithFullMantissa(double cell) { return cell * (1 + 0x1p-27 / 3); }

template <class T>
T RandomCell(double holes, std::mt19937& random) {
  const bool hole = Uniform(random) < holes;
  const double magnitude = 0.0625 + 2.9375 * Uniform(random);
  const double cell = Uniform(random) < 0.5 ? -magnitude : magnitude;
  if (hole) return kHole<T>;
  return std::is_same_v<T, float> ? static_cast<T>(cell) : static_cast<T>(WithFullMantissa(cell));
}

template <class T>
int CountHoles(const std::vector<T>& cells) {
  return static_cast<int>(std::count(cells.begin(), cells.end(), kHole<T>));
}

}  // namespace

template <class T>
NCDataVector<T> RandomVector(int n, double holes, unsigned seed) {
  std::mt19937 random(seed);
  NCDataVector<T> vector(n);
  for (int i = 1; i <= n; ++i) vector(i, RandomCell<T>(holes, random));
  return vector;
}

template <class T>
NCDataMatrix<T> RandomMatrix(int rows, int columns, double holes, unsigned seed) {
  std::mt19937 random(seed);
  NCDataMatrix<T> matrix(rows, columns);
  for (int r = 1; r <= rows; ++r)
    for (int c = 1; c <= columns; ++c) matrix(r, c, RandomCell<T>(holes, random));
  return matrix;
}

template <class T>
NCDataVector<T> VectorOf(std::initializer_list<T> cells) {
  NCDataVector<T> vector;
  vector.CopyZeroBasedVector(cells.begin(), static_cast<int>(cells.size()));
  return vector;
}

template <class T>
NCDataMatrix<T> MatrixOf(std::initializer_list<std::initializer_list<T>> rows) {
  NCDataMatrix<T> matrix;
  for (const auto& row : rows) matrix.push_back(VectorOf<T>(row));
  return matrix;
}

template <class T>
std::vector<T> CellsOf(const NCDataVector<T>& vector) {
  return std::vector<T>(vector.begin(), vector.end());
}

template <class T>
std::vector<std::vector<T>> CellsOf(const NCDataMatrix<T>& matrix) {
  std::vector<std::vector<T>> cells;
  for (int r = 1; r <= matrix.SizeRows(); ++r) cells.push_back(CellsOf(matrix[r]));
  return cells;
}

template <class T>
::testing::AssertionResult HasExactCounts(const NCDataVector<T>& vector) {
  const int holes = CountHoles(CellsOf(vector));
  if (vector.GetNumMisVal() == holes) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "the vector counts " << vector.GetNumMisVal() << " holes and has " << holes;
}

template <class T>
::testing::AssertionResult HasExactCounts(const NCDataMatrix<T>& matrix) {
  int all = 0;
  std::vector<int> columns(static_cast<std::size_t>(matrix.SizeColumns()));
  for (int r = 1; r <= matrix.SizeRows(); ++r) {
    const NCDataVector<T>& row = matrix[r];
    if (row.Size() != matrix.SizeColumns())
      return ::testing::AssertionFailure() << "row " << r << " has " << row.Size() << " cells in a table of "
                                           << matrix.SizeColumns() << " columns";
    if (auto counted = HasExactCounts(row); !counted) return counted << " in row " << r;
    all += row.GetNumMisVal();
    for (int c = 1; c <= row.Size(); ++c) columns[static_cast<std::size_t>(c - 1)] += row[c] == kHole<T>;
  }
  for (int c = 1; c <= matrix.SizeColumns(); ++c)
    if (const int holes = columns[static_cast<std::size_t>(c - 1)]; matrix.GetColumnMisVal(c) != holes)
      return ::testing::AssertionFailure() << "column " << c << " counts " << matrix.GetColumnMisVal(c)
                                           << " holes and has " << holes;
  if (matrix.GetNumMisVal() == all) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "the table counts " << matrix.GetNumMisVal() << " holes and has " << all;
}

#define KALMIA_INSTANTIATE(T)                                                                         \
  template NCDataVector<T> RandomVector<T>(int, double, unsigned);                                    \
  template NCDataMatrix<T> RandomMatrix<T>(int, int, double, unsigned);                               \
  template NCDataVector<T> VectorOf<T>(std::initializer_list<T>);                                     \
  template NCDataMatrix<T> MatrixOf<T>(std::initializer_list<std::initializer_list<T>>);              \
  template std::vector<T> CellsOf<T>(const NCDataVector<T>&);                                         \
  template std::vector<std::vector<T>> CellsOf<T>(const NCDataMatrix<T>&);                            \
  template ::testing::AssertionResult HasExactCounts<T>(const NCDataVector<T>&);                      \
  template ::testing::AssertionResult HasExactCounts<T>(const NCDataMatrix<T>&);

KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "TableWithTwin.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "testing/RandomTables.h"

// Random sequences of structure and cell operations beside a table of plain vectors that does the same by hand.

namespace {

/// Cells are whole numbers of at most kLargest in magnitude, so that no result reaches -99 and all arithmetic is exact.
constexpr int kLargest = 9;
constexpr int kMost = 7;

template <class T>
struct Pair {
  explicit Pair(unsigned seed) : random(seed), cells(1, std::vector<T>(1, 1)) {}

  int Int(int first, int last) { return first + static_cast<int>(random() % static_cast<unsigned>(last - first + 1)); }
  T Cell() { return Int(0, 3) == 0 ? kHole<T> : static_cast<T>(Int(-3, 3)); }
  std::vector<T> Cells(int n) {
    std::vector<T> drawn;
    while (static_cast<int>(drawn.size()) < n) drawn.push_back(Cell());
    return drawn;
  }
  Table<T> Rows(int rows, int columns) {
    Table<T> drawn;
    while (static_cast<int>(drawn.size()) < rows) drawn.push_back(Cells(columns));
    return drawn;
  }
  int SizeRows() const { return static_cast<int>(cells.size()); }
  int SizeColumns() const { return static_cast<int>(cells[0].size()); }
  int Row() { return Int(1, SizeRows()); }
  int Column() { return Int(1, SizeColumns()); }
  T& At(int r, int c) { return cells[static_cast<std::size_t>(r - 1)][static_cast<std::size_t>(c - 1)]; }

  std::mt19937 random;
  NCDataMatrix<T> table{1, 1, 1};
  Table<T> cells;  ///< what the table has to hold; at least one row and one column
};

template <class T>
NCDataVector<T> VectorFrom(const std::vector<T>& cells) {
  NCDataVector<T> v;
  v.CopyZeroBasedVector(cells.data(), static_cast<int>(cells.size()));
  return v;
}

template <class T>
NCDataMatrix<T> MatrixFrom(const Table<T>& cells) {
  NCDataMatrix<T> m;
  for (const auto& row : cells) m.push_back(VectorFrom(row));
  return m;
}

template <class T>
bool IsHole(T cell) {
  return cell == kHole<T>;
}

/// The positions `at` to at + n - 1 of cells that go, at least one cell being left.
struct Range {
  int at, n;
};
template <class T>
Range ToRemove(Pair<T>& p, int size) {
  const int at = p.Int(1, size);
  return {at, p.Int(0, std::min(size - at + 1, size - 1))};
}

template <class T>
struct Step {
  const char* name;
  std::function<void(Pair<T>&)> run;
};

template <class T>
std::vector<Step<T>> StructureSteps() {
  using P = Pair<T>;
  using Row = std::vector<T>;
  return {
      {"InsertRows", [](P& p) {
         const int at = p.Int(1, 9), n = p.Int(0, 3);
         p.table.InsertRows(at, n);
         p.cells.insert(p.cells.begin() + std::min(at - 1, p.SizeRows()), static_cast<std::size_t>(n),
                        Row(p.cells[0].size(), kHole<T>));
       }},
      {"InsertRow", [](P& p) {
         const int at = p.Int(1, 9);
         const Row row = p.Cells(p.SizeColumns());
         p.table.InsertRow(at, VectorFrom(row));
         p.cells.insert(p.cells.begin() + std::min(at - 1, p.SizeRows()), row);
       }},
      {"RemoveRows", [](P& p) {
         const auto [at, n] = ToRemove(p, p.SizeRows());
         p.table.RemoveRows(at, n);
         p.cells.erase(p.cells.begin() + at - 1, p.cells.begin() + at - 1 + n);
       }},
      {"InsertColumns", [](P& p) {
         const int at = p.Int(1, 9), n = p.Int(0, 3);
         p.table.InsertColumns(at, n);
         const int before = std::min(at - 1, p.SizeColumns());
         for (Row& row : p.cells) row.insert(row.begin() + before, static_cast<std::size_t>(n), kHole<T>);
       }},
      {"InsertColumns of a table", [](P& p) {
         const int at = p.Int(1, 9);
         const Table<T> other = p.Rows(p.SizeRows(), p.Int(1, 3));
         p.table.InsertColumns(at, MatrixFrom(other));
         const int before = std::min(at - 1, p.SizeColumns());
         for (std::size_t r = 0; r < p.cells.size(); ++r)
           p.cells[r].insert(p.cells[r].begin() + before, other[r].begin(), other[r].end());
       }},
      {"InsertColumn", [](P& p) {
         const int at = p.Int(1, 9);
         const Row column = p.Cells(p.SizeRows());
         p.table.InsertColumn(at, VectorFrom(column));
         const int before = std::min(at - 1, p.SizeColumns());
         for (std::size_t r = 0; r < p.cells.size(); ++r)
           p.cells[r].insert(p.cells[r].begin() + before, column[r]);
       }},
      {"RemoveColumns", [](P& p) {
         const auto [at, n] = ToRemove(p, p.SizeColumns());
         p.table.RemoveColumns(at, n);
         for (Row& row : p.cells) row.erase(row.begin() + at - 1, row.begin() + at - 1 + n);
       }},
      {"ReduceColumns or RearrangeColumns", [](P& p) {
         std::vector<int> list(static_cast<std::size_t>(p.Int(1, 8)));
         for (int& c : list) c = p.Column();
         if (p.Int(0, 1) == 0)
           p.table.RearrangeColumns(list);
         else
           p.table.ReduceColumns(NCIntegralVector<int, -99>(list.data(), static_cast<int>(list.size())));
         for (Row& row : p.cells) {
           const Row old = row;
           row.clear();
           for (const int c : list) row.push_back(old[static_cast<std::size_t>(c - 1)]);
         }
       }},
      {"ConcatRows", [](P& p) {
         const Table<T> other = p.Int(0, 1) == 0 ? p.cells : p.Rows(p.Int(1, 3), p.SizeColumns());
         p.table.ConcatRows(other == p.cells ? p.table : MatrixFrom(other));
         p.cells.insert(p.cells.end(), other.begin(), other.end());
       }},
      {"Resize", [](P& p) {
         const int rows = p.Int(1, 9), columns = p.Int(1, 9);
         p.table.Resize(rows, columns);
         for (Row& row : p.cells) row.resize(static_cast<std::size_t>(columns), kHole<T>);
         p.cells.resize(static_cast<std::size_t>(rows), Row(static_cast<std::size_t>(columns), kHole<T>));
       }},
      {"SwapRows and SwapColumns", [](P& p) {
         const int a = p.Row(), b = p.Row(), c = p.Column(), d = p.Column();
         p.table.ForceUnlink();
         p.table.SwapRows(a, b);
         p.table.SwapColumns(c, d);
         for (int k = 1; k <= p.SizeColumns() && a != b; ++k) std::swap(p.At(a, k), p.At(b, k));
         for (int r = 1; r <= p.SizeRows() && c != d; ++r) std::swap(p.At(r, c), p.At(r, d));
       }},
  };
}

template <class T>
std::vector<Step<T>> CellSteps() {
  using P = Pair<T>;
  return {
      {"a cell", [](P& p) {
         const int r = p.Row(), c = p.Column();
         p.At(r, c) = p.table(r, c, p.Cell());
       }},
      {"SetRow", [](P& p) {
         const int r = p.Row();
         const auto row = p.Cells(p.SizeColumns());
         p.table.SetRow(r, VectorFrom(row));
         p.cells[static_cast<std::size_t>(r - 1)] = row;
       }},
      {"SetRow to a value", [](P& p) {
         const int r = p.Row();
         const T value = p.Cell();
         p.table.SetRow(r, value);
         for (int c = 1; c <= p.SizeColumns(); ++c) p.At(r, c) = value;
       }},
      {"SetColumn", [](P& p) {
         const int c = p.Column();
         const auto column = p.Cells(p.SizeRows());
         p.table.SetColumn(c, VectorFrom(column));
         for (int r = 1; r <= p.SizeRows(); ++r) p.At(r, c) = column[static_cast<std::size_t>(r - 1)];
       }},
      {"CopyColumn", [](P& p) {
         const int from = p.Column(), to = p.Column();
         p.table.CopyColumn(from, to);
         for (int r = 1; r <= p.SizeRows(); ++r) p.At(r, to) = p.At(r, from);
       }},
      {"MultiplyRow", [](P& p) {
         const int r = p.Row(), factor = p.Int(-3, 3);
         p.table.MultiplyRow(r, static_cast<T>(factor));
         for (int c = 1; c <= p.SizeColumns(); ++c)
           if (!IsHole(p.At(r, c))) p.At(r, c) *= static_cast<T>(factor);
       }},
      {"MultiplyColumn", [](P& p) {
         const int c = p.Column(), to = p.Column();
         const T factor = p.Cell();
         p.table.MultiplyColumn(c, factor, to);
         for (int r = 1; r <= p.SizeRows(); ++r) {
           const T product = IsHole(p.At(r, c)) ? kHole<T> : p.At(r, c) * factor;
           p.At(r, IsHole(factor) ? c : to) = IsHole(factor) ? kHole<T> : product;
         }
       }},
      {"MultiplyColumns", [](P& p) {
         const int a = p.Column(), b = p.Column(), to = p.Column();
         p.table.MultiplyColumns(a, b, to);
         for (int r = 1; r <= p.SizeRows(); ++r)
           p.At(r, to) = IsHole(p.At(r, a)) || IsHole(p.At(r, b)) ? kHole<T> : p.At(r, a) * p.At(r, b);
       }},
      {"SubtractFromColumn", [](P& p) {
         const int c = p.Column();
         const T d = p.Cell();
         p.table.SubtractFromColumn(c, d);
         for (int r = 1; r <= p.SizeRows(); ++r)
           p.At(r, c) = IsHole(p.At(r, c)) || IsHole(d) ? kHole<T> : p.At(r, c) - d;
       }},
      {"LagColumn", [](P& p) {
         const int c = p.Column(), k = p.Int(-8, 8);
         p.table.LagColumn(c, k);
         const Table<T> old = p.cells;
         for (int r = 1; r <= p.SizeRows(); ++r) {
           const int from = r - k;
           const bool inside = from >= 1 && from <= p.SizeRows();
           p.At(r, c) = inside ? old[static_cast<std::size_t>(from - 1)][static_cast<std::size_t>(c - 1)] : kHole<T>;
         }
       }},
      {"TransformToColumnScaled", [](P& p) {
         const auto scales = p.Cells(p.SizeColumns());
         p.table.ForceUnlink();
         p.table.TransformToColumnScaled(VectorFrom(scales));
         for (auto& row : p.cells)
           for (std::size_t c = 0; c < row.size(); ++c)
             if (!IsHole(row[c]) && !IsHole(scales[c])) row[c] *= scales[c];
       }},
      {"TransformToDotSubRowVector", [](P& p) {
         const auto v = p.Cells(p.SizeColumns());
         p.table.TransformToDotSubRowVector(VectorFrom(v));
         for (auto& row : p.cells)
           for (std::size_t c = 0; c < row.size(); ++c)
             if (!IsHole(row[c]) && !IsHole(v[c])) row[c] -= v[c];
       }},
      {"CopyContent", [](P& p) {
         const int rows = p.Int(1, kMost), columns = p.Int(1, kMost);
         p.cells = p.Rows(rows, columns);
         p.table.CopyContent(MatrixFrom(p.cells));
       }},
  };
}

/// Cuts back what has become too large, on both sides.
template <class T>
void Tame(Pair<T>& p) {
  const auto isLarge = [](T cell) { return !IsHole(cell) && std::fabs(cell) > kLargest; };
  for (int r = 1; r <= p.SizeRows(); ++r)
    for (int c = 1; c <= p.SizeColumns(); ++c)
      if (isLarge(p.At(r, c))) p.At(r, c) = p.table(r, c, 2);
  const int rows = std::min(p.SizeRows(), kMost), columns = std::min(p.SizeColumns(), kMost);
  p.table.Resize(rows, columns);
  p.cells.resize(static_cast<std::size_t>(rows));
  for (auto& row : p.cells) row.resize(static_cast<std::size_t>(columns));
}

template <class T>
class NCDataMatrixModel : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataMatrixModel, CellTypes, CellTypeNames);

TYPED_TEST(NCDataMatrixModel, HoldsTheSameCellsAfterEveryOperation) {
  auto steps = StructureSteps<TypeParam>();
  for (const auto& step : CellSteps<TypeParam>()) steps.push_back(step);
  for (unsigned seed = 1; seed <= 50 && !this->HasFailure(); ++seed) {
    Pair<TypeParam> pair(seed);
    NCDataMatrix<TypeParam> twin;
    Table<TypeParam> twinCells;
    for (int i = 0; i < 400 && !this->HasFailure(); ++i) {
      const auto& step = steps[static_cast<std::size_t>(pair.Int(0, static_cast<int>(steps.size()) - 1))];
      SCOPED_TRACE("sequence " + std::to_string(seed) + ", step " + std::to_string(i) + ": " + step.name);
      step.run(pair);
      EXPECT_EQ(CellsOf(pair.table), pair.cells);
      EXPECT_TRUE(HasExactCounts(pair.table));
      EXPECT_EQ(CellsOf(twin), twinCells) << "whoever shares the table keeps the cells";
      Tame(pair);
      if (pair.Int(0, 2) == 0) {
        twin = pair.table;
        twinCells = pair.cells;
      }
    }
  }
}

}  // namespace

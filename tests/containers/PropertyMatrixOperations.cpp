#include <cmath>
#include <vector>

#include "PropertyWorld.h"

namespace {

template <class T>
int AnyRow(World<T>& w, const NCDataMatrix<T>& m) {
  return w.Int(1, m.SizeRows());
}

template <class T>
int AnyColumn(World<T>& w, const NCDataMatrix<T>& m) {
  return w.Int(1, m.SizeColumns());
}

}  // namespace

template <class T>
std::vector<Operation<T>> MatrixOperations() {
  using W = World<T>;
  using M = NCDataMatrix<T>;
  return {
      {"m = m", [](W& w) { w.Matrix() = w.AnyMatrix(); }},
      {"m = m(copy)", [](W& w) { w.Matrix() = M(w.AnyMatrix()); }},
      {"m = NCDataMatrix(rows, columns, value)", [](W& w) { w.Matrix() = M{w.Int(0, 7), w.Int(0, 7), w.Cell()}; }},
      {"m.swap", [](W& w) { w.Matrix().swap(w.Matrix()); }},
      {"m.Clear", [](W& w) { w.Matrix().Clear(); }},
      {"m.ForceUnlink", [](W& w) { w.Matrix().ForceUnlink(); }},
      {"m.CopyContent", [](W& w) { w.Matrix().CopyContent(w.AnyMatrix()); }},
      {"m.GetColumn", [](W& w) {
         const M m = w.AnyFilledMatrix();
         NCDataVector<T>* target = w.VectorTarget(m.SizeRows());
         if (target) m.Result(target);
         w.Vector() = m.GetColumn(AnyColumn(w, m));
       }},
      {"m.GetRowSubMatrix", [](W& w) {
         const auto& m = w.AnyFilledMatrix();
         const int first = AnyRow(w, m);
         w.Matrix() = m.GetRowSubMatrix(first, w.Int(first, m.SizeRows()));
       }},
      {"GetMatrixAsPointerPointer", [](W& w) {
         auto& m = w.FilledMatrix();
         const int rows = m.SizeRows();
         T** cells = M::GetMatrixAsPointerPointer(m, /*keep=*/false);
         for (int r = 1; r <= rows; ++r) cells[r][1] = w.PresentCell();
         M::ReleasePointerPointer(cells, rows, /*cells=*/true);
         m = w.AnyMatrix().SizeRows() > 0 ? M(1, 1, w.Cell()) : M();
       }},
      {"m.SetSize", [](W& w) {
         const int rows = w.Int(0, 7), columns = w.Int(0, 7);
         w.Matrix().SetSize(rows, columns);
       }},
      {"m.Resize", [](W& w) {
         const int rows = w.Int(0, 7), columns = w.Int(0, 7);
         w.Matrix().Resize(rows, columns);
       }},
      {"m.ReserveRows", [](W& w) { w.Matrix().ReserveRows(w.Int(0, 20)); }},
      {"m.ReserveColumns", [](W& w) { w.Matrix().ReserveColumns(w.Int(0, 20)); }},
      {"m.InsertRows", [](W& w) {
         const int at = w.Int(1, 9), n = w.Int(0, 3);
         w.Matrix().InsertRows(at, n);
       }},
      {"m.InsertRow", [](W& w) {
         auto& m = w.Matrix();
         const int at = w.Int(1, 9);
         m.InsertRow(at, m.SizeRows() == 0 ? w.AnyVector() : w.VectorOfSize(m.SizeColumns()));
       }},
      {"m.push_back", [](W& w) {
         auto& m = w.Matrix();
         m.push_back(m.SizeRows() == 0 ? w.AnyVector() : w.VectorOfSize(m.SizeColumns()));
       }},
      {"m.RemoveRows(at, n)", [](W& w) {
         auto& m = w.FilledMatrix();
         const int at = AnyRow(w, m);
         m.RemoveRows(at, w.Int(0, m.SizeRows() - at + 1));
       }},
      {"m.RemoveRows(indices)", [](W& w) {
         auto& m = w.Matrix();
         m.RemoveRows(w.Indices(w.Int(0, 4), m.SizeRows()));
       }},
      {"m.InsertColumns(at, n)", [](W& w) {
         const int at = w.Int(1, 9), n = w.Int(0, 3);
         w.Matrix().InsertColumns(at, n);
       }},
      {"m.InsertColumns(at, m)", [](W& w) {
         auto& m = w.Matrix();
         const int at = w.Int(1, 9);
         m.InsertColumns(at, w.MatrixOfRows(m.SizeRows()));
       }},
      {"m.InsertColumn", [](W& w) {
         auto& m = w.Matrix();
         const int at = w.Int(1, 9);
         m.InsertColumn(at, m.SizeColumns() == 0 ? w.AnyVector() : w.VectorOfSize(m.SizeRows()));
       }},
      {"m.RemoveColumns", [](W& w) {
         auto& m = w.FilledMatrix();
         const int at = AnyColumn(w, m);
         m.RemoveColumns(at, w.Int(0, m.SizeColumns() - at + 1));
       }},
      {"m.ReduceColumns", [](W& w) {
         auto& m = w.Matrix();
         m.ReduceColumns(w.Indices(w.Int(0, 8), m.SizeColumns()));
       }},
      {"m.ConcatRows", [](W& w) {
         auto& m = w.Matrix();
         m.ConcatRows(m.SizeRows() == 0 ? w.AnyMatrix() : w.MatrixOfColumns(m.SizeColumns()));
       }},
      {"m.ConcatColumns", [](W& w) {
         auto& m = w.Matrix();
         m.ConcatColumns(w.MatrixOfRows(m.SizeRows()));
       }},
      {"m.RearrangeColumns", [](W& w) {
         auto& m = w.Matrix();
         const IndexVector order = w.Indices(w.Int(0, 8), m.SizeColumns());
         m.RearrangeColumns({order.begin(), order.end()});
       }},
      // These two work on whatever storage there is: the caller has to hold an unshared table.
      {"m.SwapRows", [](W& w) {
         auto& m = w.FilledMatrix();
         m.ForceUnlink();
         const int a = AnyRow(w, m), b = AnyRow(w, m);
         m.SwapRows(a, b);
       }},
      {"m.SwapColumns", [](W& w) {
         auto& m = w.FilledMatrix();
         m.ForceUnlink();
         const int a = AnyColumn(w, m), b = AnyColumn(w, m);
         m.SwapColumns(a, b);
       }},
  };
}

template <class T>
std::vector<Operation<T>> MatrixCellOperations() {
  using W = World<T>;
  return {
      {"m(r, c, value)", [](W& w) {
         auto& m = w.FilledMatrix();
         const int r = AnyRow(w, m), c = AnyColumn(w, m);
         m(r, c, w.Cell());
       }},
      // A write through a row's reference keeps the table's counts where no hole comes or goes.
      {"m(r).Abs", [](W& w) {
         auto& m = w.FilledMatrix();
         m(AnyRow(w, m)).Abs();
       }},
      {"m.SetRow(r, v)", [](W& w) {
         auto& m = w.FilledMatrix();
         const int r = AnyRow(w, m);
         m.SetRow(r, w.VectorOfSize(m.SizeColumns()));
       }},
      {"m.SetRow(r, value)", [](W& w) {
         auto& m = w.FilledMatrix();
         const int r = AnyRow(w, m);
         m.SetRow(r, w.Cell());
       }},
      {"m.SetColumn(c, p)", [](W& w) {
         auto& m = w.FilledMatrix();
         const int c = AnyColumn(w, m);
         m.SetColumn(c, w.Cells(8).data());
       }},
      {"m.SetColumn(c, v)", [](W& w) {
         auto& m = w.FilledMatrix();
         const int c = AnyColumn(w, m);
         m.SetColumn(c, w.VectorOfSize(m.SizeRows()));
       }},
      {"m.SetColumn(c, value)", [](W& w) {
         auto& m = w.FilledMatrix();
         const int c = AnyColumn(w, m);
         m.SetColumn(c, w.Cell());
       }},
      {"m.CopyColumn(from, to)", [](W& w) {
         auto& m = w.FilledMatrix();
         const int from = AnyColumn(w, m), to = AnyColumn(w, m);
         m.CopyColumn(from, to);
       }},
      {"m.CopyColumn(to, m, from)", [](W& w) {
         auto& m = w.FilledMatrix();
         const auto& source = w.MatrixOfSize(m.SizeRows(), m.SizeColumns());
         const int to = AnyColumn(w, m), from = AnyColumn(w, source);
         m.CopyColumn(to, source, from);
       }},
      {"m.SetAllValues", [](W& w) { w.Matrix().SetAllValues(w.Cell()); }},
      {"m.MultiplyRow", [](W& w) {
         auto& m = w.FilledMatrix();
         const int r = AnyRow(w, m);
         m.MultiplyRow(r, w.PresentCell());
       }},
      {"m.MultiplyColumn", [](W& w) {
         auto& m = w.FilledMatrix();
         const int c = AnyColumn(w, m), to = AnyColumn(w, m);
         m.MultiplyColumn(c, w.Cell(), to);
       }},
      {"m.MultiplyColumns", [](W& w) {
         auto& m = w.FilledMatrix();
         const int a = AnyColumn(w, m), b = AnyColumn(w, m), to = AnyColumn(w, m);
         m.MultiplyColumns(a, b, to);
       }},
      {"m.SubtractFromColumn", [](W& w) {
         auto& m = w.FilledMatrix();
         const int c = AnyColumn(w, m);
         m.SubtractFromColumn(c, w.Cell());
       }},
      {"m.LagColumn", [](W& w) {
         auto& m = w.FilledMatrix();
         const int c = AnyColumn(w, m);
         m.LagColumn(c, w.Int(-8, 8));
       }},
      // For a caller who holds an unshared table.
      {"m.TransformToColumnScaled", [](W& w) {
         auto& m = w.Matrix();
         m.ForceUnlink();
         m.TransformToColumnScaled(w.VectorOfSize(m.SizeColumns()));
       }},
      {"m.TransformToDotSubRowVector", [](W& w) {
         auto& m = w.Matrix();
         m.TransformToDotSubRowVector(w.VectorOfSize(m.SizeColumns()));
       }},
      {"m's numbers", [](W& w) {
         const auto& m = w.AnyFilledMatrix();
         const int c = AnyColumn(w, m);
         T low, high;
         m.GetColumnMinMax(c, low, high);
         EXPECT_LE(low, high);
         m.GetRowMinMax(AnyRow(w, m), low, high);
         EXPECT_LE(low, high);
         m.GetColumnSkewness(c);  // of few cells these two divide by zero
         m.GetColumnKurtosis(c);
         for (const long double number : {m.GetMean(), m.GetColumnMean(c), m.GetColumnSS(c, 0), m.GetColumnStdDev(c),
                                          m.GetColumnMedian(c), m.GetSSAroundColumnMeans(), m.GetSS()})
           EXPECT_TRUE(std::isfinite(number));
       }},
  };
}

#define KALMIA_INSTANTIATE(T)                             \
  template std::vector<Operation<T>> MatrixOperations();  \
  template std::vector<Operation<T>> MatrixCellOperations();

KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE

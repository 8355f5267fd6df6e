#include <algorithm>
#include <memory>

#include "PropertyWorld.h"
#include "kalmia/kernels/NCSVD.h"

// Products, deflation, regressions and decompositions. Operands are shares: a result's target may be the table or
// vector that they share with.

namespace {

/// Keeps operation(m), a vector of n cells, built in a target of that size or without.
template <class T, class F>
void KeepVector(World<T>& w, const NCDataMatrix<T>& m, int n, F operation) {
  NCDataVector<T>* target = w.VectorTarget(n);
  if (target) m.Result(target);
  w.Vector() = operation(m);
}

/// The same for a table of rows by columns.
template <class T, class F>
void KeepMatrix(World<T>& w, const NCDataMatrix<T>& m, int rows, int columns, F operation) {
  NCDataMatrix<T>* target = w.MatrixTarget(rows, columns);
  if (target) m.Result(target);
  w.Matrix() = operation(m);
}

template <class T>
IndexVector Groups(World<T>& w, int n) {
  IndexVector groups(n, 0);
  for (int i = 1; i <= n; ++i) groups(i) = w.Int(0, 2);
  return groups;
}

}  // namespace

template <class T>
std::vector<Operation<T>> KernelOperations() {
  using W = World<T>;
  using M = NCDataMatrix<T>;
  using V = NCDataVector<T>;
  return {
      {"A * B", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const M b = w.MatrixOfRows(a.SizeColumns());
         KeepMatrix(w, a, a.SizeRows(), b.SizeColumns(), [&](const M& m) { return m * b; });
       }},
      {"A'B", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const M b = w.MatrixOfRows(a.SizeRows());
         KeepMatrix(w, a, a.SizeColumns(), b.SizeColumns(),
                    [&](const M& m) { return m.MatrixMultiply(b, true, false); });
       }},
      {"AB'", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const M b = w.MatrixOfColumns(a.SizeColumns());
         KeepMatrix(w, a, a.SizeRows(), b.SizeRows(), [&](const M& m) { return m.MatrixMultiply(b, false, true); });
       }},
      {"A'B'", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const M b = w.MatrixOfColumns(a.SizeRows());
         KeepMatrix(w, a, a.SizeColumns(), b.SizeRows(), [&](const M& m) { return m.MatrixMultiply(b, true, true); });
       }},
      {"A * v", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const V v = w.VectorOfSize(a.SizeColumns());
         KeepVector(w, a, a.SizeRows(), [&](const M& m) { return m * v; });
       }},
      {"v * A", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const V v = w.VectorOfSize(a.SizeRows());
         V* target = w.VectorTarget(a.SizeColumns());
         if (target) v.Result(target);
         w.Vector() = v * a;
       }},
      {"v'A", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const V v = w.VectorOfSize(a.SizeRows());
         KeepVector(w, a, a.SizeColumns(), [&](const M& m) { return m.PreMultiply(v); });
       }},
      {"A + B", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const M b = w.MatrixOfSize(a.SizeRows(), a.SizeColumns());
         KeepMatrix(w, a, a.SizeRows(), a.SizeColumns(), [&](const M& m) { return m + b; });
       }},
      {"A - B", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const M b = w.MatrixOfSize(a.SizeRows(), a.SizeColumns());
         KeepMatrix(w, a, a.SizeRows(), a.SizeColumns(), [&](const M& m) { return m - b; });
       }},
      {"A += B", [](W& w) {
         M& a = w.Matrix();
         a += w.MatrixOfSize(a.SizeRows(), a.SizeColumns());
       }},
      {"A -= B", [](W& w) {
         M& a = w.Matrix();
         a -= w.MatrixOfSize(a.SizeRows(), a.SizeColumns());
       }},
      {"A * d", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const long double d = w.Cell();
         KeepMatrix(w, a, a.SizeRows(), a.SizeColumns(), [&](const M& m) { return m * d; });
       }},
      {"A.DotMultiplyVector", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const V v = w.VectorOfSize(a.SizeRows());
         KeepMatrix(w, a, a.SizeRows(), a.SizeColumns(), [&](const M& m) { return m.DotMultiplyVector(v); });
       }},
      {"A.DotDivideVector", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const V v = w.VectorOfSize(a.SizeRows());
         KeepMatrix(w, a, a.SizeRows(), a.SizeColumns(), [&](const M& m) { return m.DotDivideVector(v); });
       }},
      {"A.DotPreMultiplyVector", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const V v = w.VectorOfSize(a.SizeColumns());
         KeepMatrix(w, a, a.SizeRows(), a.SizeColumns(), [&](const M& m) { return m.DotPreMultiplyVector(v); });
       }},
      {"A.DotPreDivideVector", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const V v = w.VectorOfSize(a.SizeColumns());
         KeepMatrix(w, a, a.SizeRows(), a.SizeColumns(), [&](const M& m) { return m.DotPreDivideVector(v); });
       }},
      {"A.TransformToMprim_mul_M", [](W& w) { w.FilledMatrix().TransformToMprim_mul_M(); }},
      {"A.Transpose", [](W& w) { w.FilledMatrix().Transpose(); }},
      {"A.AddVprimV", [](W& w) {
         M& a = w.FilledMatrix();
         const V rows = w.VectorOfSize(a.SizeRows()), columns = w.VectorOfSize(a.SizeColumns());
         a.AddVprimV(rows, columns, w.Chance(0.1) ? T(0) : w.PresentCell());
       }},
      {"A.TransformToAdd_V_x_Vt", [](W& w) {
         M& a = w.FilledMatrix();
         const V rows = w.VectorOfSize(a.SizeRows()), columns = w.VectorOfSize(a.SizeColumns());
         a.TransformToAdd_V_x_Vt(rows, columns);
       }},
      {"A.TransformToSub_V_x_Vt", [](W& w) {
         M& a = w.FilledMatrix();
         const V rows = w.VectorOfSize(a.SizeRows()), columns = w.VectorOfSize(a.SizeColumns());
         a.TransformToSub_V_x_Vt(rows, columns);
       }},
      {"A.SNV", [](W& w) {
         const M a = w.AnyFilledMatrix();
         KeepMatrix(w, a, a.SizeRows(), a.SizeColumns(), [](const M& m) { return m.SNV(); });
       }},
      {"A.GetColumnCorrelation", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const V v = w.VectorOfSize(a.SizeRows());
         KeepVector(w, a, a.SizeColumns(), [&](const M& m) { return m.GetColumnCorrelation(v); });
       }},
      {"A.GetDensity", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const int bins = w.Int(2, 5), shifts = w.Int(1, 3);
         const bool all = w.Chance(0.5);
         KeepVector(w, a, a.SizeColumns(), [&](const M& m) { return m.GetDensity(bins, shifts, all); });
       }},
      {"A.RegressColumns", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const V v = w.VectorOfSize(a.SizeRows());
         KeepVector(w, a, a.SizeColumns(), [&](const M& m) { return m.RegressColumns(v); });
       }},
      {"A.SpecialNipalsRegressColumnsFix", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const V v = w.VectorOfSize(a.SizeRows());
         KeepVector(w, a, a.SizeColumns(), [&](const M& m) { return m.SpecialNipalsRegressColumnsFix(v); });
       }},
      {"A.SpecialNipalsRegressColumnsFix with groups", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const V v = w.VectorOfSize(a.SizeRows());
         const IndexVector groups = Groups(w, a.SizeColumns());
         const IndexVector* some = w.Chance(0.2) ? nullptr : &groups;
         const int group = w.Int(0, 3);
         KeepVector(w, a, a.SizeColumns(),
                    [&](const M& m) { return m.SpecialNipalsRegressColumnsFix(v, some, group); });
       }},
      {"A.RegressRows", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const V v = w.VectorOfSize(a.SizeColumns());
         KeepVector(w, a, a.SizeRows(), [&](const M& m) { return m.RegressRows(v); });
       }},
      {"A.SpecialNipalsRegressRowsFix", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const V v = w.VectorOfSize(a.SizeColumns());
         const IndexVector groups = Groups(w, a.SizeColumns());
         const IndexVector* some = w.Chance(0.5) ? nullptr : &groups;
         const int group = w.Int(0, 3);
         KeepVector(w, a, a.SizeRows(), [&](const M& m) { return m.SpecialNipalsRegressRowsFix(v, some, group); });
       }},
      {"A.SpecialNipalsRegressRowsFixWithExclude", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const V v = w.VectorOfSize(a.SizeColumns());
         const int stride = w.Int(1, 6), start = w.Int(0, stride);
         KeepVector(w, a, a.SizeRows(),
                    [&](const M& m) { return m.SpecialNipalsRegressRowsFixWithExclude(v, start, stride); });
       }},
      {"A.GetNIPALSStartColumn", [](W& w) {
         const M a = w.AnyFilledMatrix();
         KeepVector(w, a, a.SizeRows(), [](const M& m) { return m.GetNIPALSStartColumn(); });
       }},
      {"A.GetSVD", [](W& w) {
         const M a = w.AnyFilledMatrix();
         const std::unique_ptr<NCSVD<T>> svd(a.GetSVD());
         if (svd->GetStatus() == NCSVD<T>::StatusSuccess) w.Matrix() = *svd->GetU();
       }},
      {"A.TransformToSVD", [](W& w) {
         const std::unique_ptr<NCSVD<T>> svd((new M(w.CompleteMatrix()))->TransformToSVD());
         if (svd->GetStatus() == NCSVD<T>::StatusSuccess) w.Matrix() = *svd->GetV();
       }},
      // An inverse has cells of any magnitude; one of -99 would be a chance in millions.
      {"A.TransformToInverse", [](W& w) {
         M& a = w.CompleteMatrix();
         const int n = std::min(a.SizeRows(), a.SizeColumns());
         a.Resize(n, n);
         a.TransformToInverse();
       }},
      {"A.GetRegressionCoefficients", [](W& w) {
         const M x = w.AnyFilledMatrix();
         const M y = w.MatrixOfColumns(x.SizeColumns());
         w.Matrix() = x.GetRegressionCoefficients(y);
       }},
  };
}

template std::vector<Operation<float>> KernelOperations();
template std::vector<Operation<double>> KernelOperations();

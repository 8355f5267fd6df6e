#include <cmath>

#include "PropertyWorld.h"

namespace {

/// Runs `operation(source)` on a share of `v`, in a target of `n` cells or without, and hands the result on.
template <class T, class F>
void KeepResult(World<T>& w, const NCDataVector<T>& v, int n, F operation) {
  const NCDataVector<T> source(v);  // a target may be the vector itself
  NCDataVector<T>* target = w.VectorTarget(n);
  if (target) source.Result(target);
  w.Vector() = operation(source);
}

template <class T>
T* PointerInto(NCDataVector<T>& v, int i) {
  return const_cast<T*>(v.GetVector()) + i;
}

}  // namespace

template <class T>
std::vector<Operation<T>> VectorOperations() {
  using W = World<T>;
  return {
      {"v = v", [](W& w) { w.Vector() = w.AnyVector(); }},
      {"v = v(copy)", [](W& w) { w.Vector() = NCDataVector<T>(w.AnyVector()); }},
      {"v = row", [](W& w) {
         const auto& m = w.AnyFilledMatrix();
         w.Vector() = m[w.Int(1, m.SizeRows())];
       }},
      {"v = NCDataVector(n, value)", [](W& w) { w.Vector() = NCDataVector<T>{w.Int(0, 7), w.Cell()}; }},
      {"v.Clear", [](W& w) { w.Vector().Clear(); }},
      {"v.CopyContent", [](W& w) { w.Vector().CopyContent(w.AnyVector()); }},
      {"v.CopyVector", [](W& w) {
         const auto cells = w.Cells(7);
         w.Vector().CopyVector(cells.data(), 6);
       }},
      {"v.CopyZeroBasedVector", [](W& w) {
         const auto cells = w.Cells(7);
         w.Vector().CopyZeroBasedVector(cells.data(), w.Int(0, 7));
       }},
      {"v.ForceUnlink", [](W& w) { w.Vector().ForceUnlink(); }},
      {"v(i, value)", [](W& w) {
         auto& v = w.FilledVector();
         const int i = w.Int(1, v.Size());
         v(i, w.Cell());
       }},
      {"v.SetAndReturn_dMisVal", [](W& w) {
         auto& v = w.FilledVector();
         const int before = v.GetNumMisVal();
         const int i = w.Int(1, v.Size());
         const int change = v.SetAndReturn_dMisVal(i, w.Cell());
         EXPECT_EQ(v.GetNumMisVal(), before + change);
       }},
      {"v(first, p, n)", [](W& w) {
         auto& v = w.FilledVector();
         const int first = w.Int(1, v.Size());
         const auto cells = w.Cells(7);
         v(first, cells.data(), w.Int(0, v.Size() - first + 1));
       }},
      {"v.SetRange(first, p, n)", [](W& w) {
         auto& v = w.FilledVector();
         const int first = w.Int(1, v.Size());
         const auto cells = w.Cells(7);
         v.SetRange(first, cells.data(), w.Int(0, v.Size() - first + 1));
       }},
      {"v.SetRange(first, v, from, n)", [](W& w) {
         auto& v = w.FilledVector();
         const auto& source = w.Chance(0.3) ? v : w.VectorOfSize(v.Size());
         const int n = w.Int(1, v.Size());
         const int first = w.Int(1, v.Size() - n + 1), from = w.Int(1, v.Size() - n + 1);
         v.SetRange(first, source, from, n);
       }},
      {"v.SetAllValues", [](W& w) { w.Vector().SetAllValues(w.Cell()); }},
      {"v.Reserve", [](W& w) { w.Vector().Reserve(w.Int(0, 20)); }},
      {"v.SetSize", [](W& w) { w.Vector().SetSize(w.Int(0, 7)); }},
      {"v.Resize", [](W& w) {
         const int n = w.Int(0, 9);
         w.Vector().Resize(n, w.Cell());
       }},
      {"v.InsertValues(at, n, value)", [](W& w) {
         const int at = w.Int(1, 9), n = w.Int(0, 4);
         w.Vector().InsertValues(at, n, w.Cell());
       }},
      {"v.InsertValues(at, v)", [](W& w) {
         const int at = w.Int(1, 9);
         w.Vector().InsertValues(at, w.AnyVector());
       }},
      {"v.RemoveValues", [](W& w) {
         auto& v = w.FilledVector();
         const int at = w.Int(1, v.Size());
         v.RemoveValues(at, w.Int(0, v.Size() - at + 1));
       }},
      {"v.Reduce", [](W& w) {
         auto& v = w.FilledVector();
         v.Reduce(w.Indices(w.Int(0, 8), v.Size()));
       }},
      {"v.push_back", [](W& w) { w.Vector().push_back(w.Cell()); }},
      {"v.insert", [](W& w) {
         auto& v = w.FilledVector();
         const int at = w.Int(1, v.Size() + 1);
         *v.insert(PointerInto(v, at), w.PresentCell()) = w.PresentCell();
       }},
      {"v.erase", [](W& w) {
         auto& v = w.FilledVector();
         v.erase(PointerInto(v, w.Int(1, v.Size())));
       }},
      {"v.erase(range)", [](W& w) {
         auto& v = w.FilledVector();
         const int first = w.Int(1, v.Size());
         v.erase(PointerInto(v, first), PointerInto(v, w.Int(first, v.Size() + 1)));
       }},
      {"v.Sort", [](W& w) { w.Vector().Sort(nullptr, w.Chance(0.5)); }},
      {"v.Sort(out)", [](W& w) {
         auto source = w.AnyVector();
         auto& out = w.Vector();
         out.SetSize(source.Size() + 2);
         source.Sort(&out, w.Chance(0.5));
       }},
      {"v.Lag", [](W& w) { w.Vector().Lag(w.Int(-8, 8)); }},
      {"v.InterpolateMisVals", [](W& w) { w.Vector().InterpolateMisVals(nullptr); }},
  };
}

template <class T>
std::vector<Operation<T>> VectorArithmetic() {
  using W = World<T>;
  using V = NCDataVector<T>;
  return {
      {"v += v", [](W& w) {
         auto& v = w.Vector();
         v += w.Chance(0.2) ? v : w.VectorOfSize(v.Size());
       }},
      {"v -= v", [](W& w) {
         auto& v = w.Vector();
         v -= w.VectorOfSize(v.Size());
       }},
      {"v += d", [](W& w) { w.Vector() += w.Scalar(); }},
      {"v -= d", [](W& w) { w.Vector() -= w.Chance(0.2) ? static_cast<long double>(kHole<T>) : w.Scalar(); }},
      {"v *= d", [](W& w) { w.Vector() *= w.Scalar(); }},
      {"v + v", [](W& w) {
         const auto& a = w.AnyVector();
         const V b = w.VectorOfSize(a.Size());
         KeepResult(w, a, a.Size(), [&](const V& s) { return s + b; });
       }},
      {"v - v", [](W& w) {
         const auto& a = w.AnyVector();
         const V b = w.VectorOfSize(a.Size());
         KeepResult(w, a, a.Size(), [&](const V& s) { return s - b; });
       }},
      {"v - d", [](W& w) {
         const auto& a = w.AnyVector();
         const long double d = w.Chance(0.2) ? static_cast<long double>(kHole<T>) : w.Scalar();
         KeepResult(w, a, a.Size(), [&](const V& s) { return s - d; });
       }},
      // A target's cells opposite a hole keep what they hold, so these two build in a new vector.
      {"v * d", [](W& w) { w.Vector() = w.AnyVector() * w.Scalar(); }},
      {"Multiply", [](W& w) {
         auto& v = w.Vector();
         V::Multiply(v, v, w.Scalar());
       }},
      {"Subtract(out, v, v)", [](W& w) {
         const V a = w.AnyVector();
         const V b = w.VectorOfSize(a.Size());
         auto& out = w.Vector();
         out.SetSize(a.Size());
         V::Subtract(out, a, b);
       }},
      {"Subtract(out, v, d)", [](W& w) {
         const V a = w.AnyVector();
         auto& out = w.Vector();
         out.SetSize(a.Size());
         V::Subtract(out, a, w.Scalar());
       }},
      {"v.DotMultiplication", [](W& w) {
         const auto& a = w.AnyVector();
         const V b = w.VectorOfSize(a.Size());
         KeepResult(w, a, a.Size(), [&](const V& s) { return s.DotMultiplication(b); });
       }},
      {"v.DotDivide", [](W& w) {
         const auto& a = w.AnyVector();
         const V b = w.VectorOfSize(a.Size());
         KeepResult(w, a, a.Size(), [&](const V& s) { return s.DotDivide(b); });
       }},
      {"v.VectorDivide", [](W& w) {
         const auto& a = w.AnyVector();
         const long double d = w.Scalar();
         KeepResult(w, a, a.Size(), [&](const V& s) { return s.VectorDivide(d); });
       }},
      {"v.Abs", [](W& w) { w.Vector().Abs(); }},
      {"v.Sqrt", [](W& w) { w.Vector().Sqrt(); }},
      // A hole of the subtracted vector would make one that is not counted.
      {"v.TransformTo_Sub_d_x_Vt", [](W& w) {
         auto& v = w.Vector();
         const long double d = w.Scalar();
         v.TransformTo_Sub_d_x_Vt(d, w.CompleteVectorOfSize(v.Size()));
       }},
      {"v.TransformTo_Add_d_x_Vt", [](W& w) {
         auto& v = w.Vector();
         const long double d = w.Scalar();
         v.TransformTo_Add_d_x_Vt(d, w.CompleteVectorOfSize(v.Size()));
       }},
      {"v.Normalise", [](W& w) { w.Vector().Normalise(); }},
      {"v.DetrendMean", [](W& w) {
         long double mean;
         w.Vector().DetrendMean(mean);
       }},
      {"v.DetrendLinear", [](W& w) {
         long double intercept, slope;
         w.Vector().DetrendLinear(intercept, slope);
       }},
      {"v.SNV", [](W& w) {
         const auto& a = w.AnyVector();
         KeepResult(w, a, a.Size(), [](const V& s) { return s.SNV(); });
       }},
      {"v's numbers", [](W& w) {
         const auto& a = w.AnyVector();
         const auto& b = w.VectorOfSize(a.Size());
         T low, high;
         long double first, second, third;
         a.GetMinMax(low, high);
         a.GetInterquartiles(first, second, third);
         a.LeastSquare(nullptr, first, second);
         a.GetSkewness();  // of few cells these two divide by zero
         a.GetKurtosis();
         for (const long double number : {a.GetSS(), a.GetSum(), a.GetMean(), a.GetVariance(), a.GetMedian(),
                                          a.Difference(b), a.Correlation(b)})
           EXPECT_TRUE(std::isfinite(number));
       }},
  };
}

template <class T>
std::vector<Operation<T>> IntegerOperations() {
  using W = World<T>;
  return {
      {"i = i", [](W& w) { w.Integers() = w.AnyIntegers(); }},
      {"i(n)", [](W& w) {
         auto& v = w.FilledIntegers();
         v(w.Int(1, v.Size())) = w.Int(-9, 9);
       }},
      {"i.ForceUnlink", [](W& w) { w.Integers().ForceUnlink(); }},
      {"i.CopyContent", [](W& w) { w.Integers().CopyContent(w.AnyIntegers()); }},
      {"i.Clear", [](W& w) { w.Integers().Clear(); }},
      {"i.SetNumValues", [](W& w) {
         const int n = w.Int(0, 7);
         w.Integers().SetNumValues(n, w.Int(-9, 9));
       }},
      {"i.SetAllValues", [](W& w) { w.Integers().SetAllValues(w.Int(-9, 9)); }},
      {"i.SetRange", [](W& w) {
         auto& v = w.FilledIntegers();
         const int at = w.Int(1, v.Size());
         const int n = w.Int(0, v.Size() - at + 1);
         v.SetRange(at, n, w.Int(-1, 1));
       }},
      {"i.GenerateIndex", [](W& w) {
         const int first = w.Int(-3, 3);
         w.Integers().GenerateIndex(first, w.Int(-2, 2));
       }},
      {"i.Reserve", [](W& w) { w.Integers().Reserve(w.Int(0, 20)); }},
      {"i.InsertValues(at, n, value)", [](W& w) {
         const int at = w.Int(1, 9), n = w.Int(0, 3);
         w.Integers().InsertValues(at, n, w.Int(-9, 9));
       }},
      {"i.InsertValues(at, i)", [](W& w) {
         const int at = w.Int(1, 9);
         w.Integers().InsertValues(at, w.AnyIntegers());
       }},
      {"i.Concat", [](W& w) { w.Integers().Concat(w.AnyIntegers()); }},
      {"i.push_back", [](W& w) { w.Integers().push_back(w.Int(-9, 9)); }},
      {"i.Resize", [](W& w) {
         const int n = w.Int(0, 9);
         w.Integers().Resize(n, w.Int(-9, 9));
       }},
      {"i.RemoveValues", [](W& w) {
         auto& v = w.FilledIntegers();
         const int at = w.Int(1, v.Size());
         v.RemoveValues(at, w.Int(0, v.Size() - at + 1));
       }},
      {"i.Remove", [](W& w) { w.Integers().Remove(w.AnyIntegers()); }},
      {"i.insert", [](W& w) {
         auto& v = w.FilledIntegers();
         const int at = w.Int(0, v.Size());
         *v.insert(v.begin() + at, w.Int(-9, 9)) = w.Int(-9, 9);
       }},
      {"i.erase", [](W& w) {
         auto& v = w.FilledIntegers();
         v.erase(v.begin() + w.Int(0, v.Size() - 1));
       }},
      {"i.SetSize", [](W& w) {
         auto& v = w.Integers();
         v.SetSize(w.Int(0, 7));
         v.SetAllValues(w.Int(-9, 9));  // new cells are undefined
       }},
      {"i +=", [](W& w) { w.Integers() += 3; }},
      {"i.Reduce", [](W& w) {
         auto& v = w.FilledIntegers();
         v.Reduce(w.Indices(w.Int(0, 8), v.Size()));
       }},
      {"i.Sort", [](W& w) {
         const bool ascending = w.Chance(0.5), misValAware = w.Chance(0.5);
         w.Integers().Sort(ascending, misValAware);
       }},
      {"i.Scramble", [](W& w) { w.Integers().Scramble(); }},
  };
}

#define KALMIA_INSTANTIATE(T)                              \
  template std::vector<Operation<T>> VectorOperations();   \
  template std::vector<Operation<T>> VectorArithmetic();   \
  template std::vector<Operation<T>> IntegerOperations();

KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE

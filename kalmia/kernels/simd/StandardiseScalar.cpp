#include <algorithm>

#include "kalmia/containers/Missing.h"
#include "kalmia/containers/internal/LaneSum.h"
#include "kalmia/containers/internal/MapCells.h"
#include "kalmia/kernels/simd/Standardise.h"

namespace kalmia::simd {
namespace scalar {
namespace {

double PowerOf(double z, int power) {
  const double square = z * z;
  return power == 1 ? z : power == 2 ? square : power == 3 ? square * z : square * square;
}

template <class T>
double PowerSumTwin(int power, const T* x, double centre, double factor, int n, bool holes) {
  return SumPresent(x, n, !holes, [=](double cell) { return PowerOf((cell - centre) * factor, power); });
}

/// Sum of term(i) over the positions of the cells that take part.
template <class T, class Term>
double SumOver(const T* y, int n, bool holes, Term term) {
  return LaneSum(n, [=](int i) { return Kept(!holes | (y[i] != kMissingCell<T>), term(i)); });
}

template <class T>
TwoSums SumPositionsTwin(const T* y, double x0, int n, bool holes) {
  return {SumOver(y, n, holes, [=](int i) { return i - x0; }),
          SumOver(y, n, holes, [=](int i) { return (i - x0) * (i - x0); })};
}

template <class T>
TwoSums SumMomentsTwin(const T* y, double x0, double y0, int n, bool holes) {
  return {SumOver(y, n, holes, [=](int i) { return y[i] - y0; }),
          SumOver(y, n, holes, [=](int i) { return (i - x0) * (y[i] - y0); })};
}

template <class T>
bool HasHole(const T* cells, int n) {
  return std::find(cells, cells + n, kMissingCell<T>) != cells + n;
}

template <class T>
bool StandardiseTwin(const T* x, double centre, double factor, int n, bool holes, T* out) {
  Map(out, x, n, !holes, [=](double cell) { return (cell - centre) * factor; });
  return HasHole(out, n);
}

template <class T>
bool SubtractLineTwin(const T* y, double intercept, double slope, int n, bool holes, T* out) {
  MapByPosition(out, y, n, !holes, [=](double cell, int i) { return cell - ((i + 1.0) * slope + intercept); });
  return HasHole(out, n);
}

}  // namespace

double PowerSum(int power, const float* x, double centre, double factor, int n, bool holes) {
  return PowerSumTwin(power, x, centre, factor, n, holes);
}
double PowerSum(int power, const double* x, double centre, double factor, int n, bool holes) {
  return PowerSumTwin(power, x, centre, factor, n, holes);
}
TwoSums SumPositions(const float* y, double x0, int n, bool holes) { return SumPositionsTwin(y, x0, n, holes); }
TwoSums SumPositions(const double* y, double x0, int n, bool holes) { return SumPositionsTwin(y, x0, n, holes); }
TwoSums SumMoments(const float* y, double x0, double y0, int n, bool holes) {
  return SumMomentsTwin(y, x0, y0, n, holes);
}
TwoSums SumMoments(const double* y, double x0, double y0, int n, bool holes) {
  return SumMomentsTwin(y, x0, y0, n, holes);
}
bool Standardise(const float* x, double centre, double factor, int n, bool holes, float* out) {
  return StandardiseTwin(x, centre, factor, n, holes, out);
}
bool Standardise(const double* x, double centre, double factor, int n, bool holes, double* out) {
  return StandardiseTwin(x, centre, factor, n, holes, out);
}
bool SubtractLine(const float* y, double intercept, double slope, int n, bool holes, float* out) {
  return SubtractLineTwin(y, intercept, slope, n, holes, out);
}
bool SubtractLine(const double* y, double intercept, double slope, int n, bool holes, double* out) {
  return SubtractLineTwin(y, intercept, slope, n, holes, out);
}

}  // namespace scalar
}  // namespace kalmia::simd

#pragma once

#include "kalmia/kernels/simd/Lanes.h"

/// Dot products of vectors with holes. All arrays start at their first cell and may lie at any alignment; they may be
/// equal or overlap; n >= 0. Products and sums are formed in double, in the sixteen lanes of LaneSum: the same bits on
/// every machine. A hole (-99) takes no part, whatever stands opposite, an infinity or a NaN included. Pointers are not
/// read where n is 0. |error| <= (n / 16 + 5) u sum|a b|, u = 2^-53 (Higham 2002, Accuracy and Stability, 3.1).
namespace kalmia::simd {

/// The two sums of a regression of x on v over the positions where neither (or, where told, only x) has a hole.
struct PairSums {
  double product;  ///< sum v x
  double square;   ///< sum v^2
};

enum class Holes {
  InRows,  ///< v is known to have none, and is not looked at
  InBoth
};

double Dot(const float* a, const float* b, int n);                       ///< sum a b, no cell is looked at
double Dot(const double* a, const double* b, int n);
double DotMasked(const float* a, const float* b, int n);                 ///< over the present cells of a
double DotMasked(const double* a, const double* b, int n);
double DotMasked2(const float* a, const float* b, int n, int& pairs);    ///< over the pairs, and how many there are
double DotMasked2(const double* a, const double* b, int n, int& pairs);

/// dots[k] = Dot(v, rows[k]) for k < count, 1 <= count <= kRowsSideBySide.
void DotRows(const float* v, const float* const* rows, int count, int n, double* dots);
void DotRows(const double* v, const double* const* rows, int count, int n, double* dots);
/// dots[k] = DotMasked(v, rows[k]) for k < count.
void DotRowsMasked(const float* v, const float* const* rows, int count, int n, double* dots);
void DotRowsMasked(const double* v, const double* const* rows, int count, int n, double* dots);
/// sums[k] = the pair sums of v and rows[k] for k < count.
void PairRows(const float* v, const float* const* rows, int count, int n, Holes holes, PairSums* sums);
void PairRows(const double* v, const double* const* rows, int count, int n, Holes holes, PairSums* sums);

/// The twins: plain loops, also for vectors for which the lanes are not worth their while.
namespace scalar {
double Dot(const float* a, const float* b, int n);
double Dot(const double* a, const double* b, int n);
double DotMasked(const float* a, const float* b, int n);
double DotMasked(const double* a, const double* b, int n);
double DotMasked2(const float* a, const float* b, int n, int& pairs);
double DotMasked2(const double* a, const double* b, int n, int& pairs);
void DotRows(const float* v, const float* const* rows, int count, int n, double* dots);
void DotRows(const double* v, const double* const* rows, int count, int n, double* dots);
void DotRowsMasked(const float* v, const float* const* rows, int count, int n, double* dots);
void DotRowsMasked(const double* v, const double* const* rows, int count, int n, double* dots);
void PairRows(const float* v, const float* const* rows, int count, int n, Holes holes, PairSums* sums);
void PairRows(const double* v, const double* const* rows, int count, int n, Holes holes, PairSums* sums);
}  // namespace scalar

}  // namespace kalmia::simd

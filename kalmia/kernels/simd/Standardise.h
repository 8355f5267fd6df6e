#pragma once

/// What standardising and detrending of one vector take: passes over its cells, worked out in double, each sum in the
/// sixteen lanes of LaneSum: the same bits on every machine. Arrays start at their first cell and lie at any alignment;
/// n >= 0, and pointers are not read where n is 0. `holes` false says that every cell is a number, -99 too; otherwise
/// a hole (-99) takes no part in a sum, and where cells are written it stays a hole. `out` may be `x`.
namespace kalmia::simd {

/// sum(((x - centre) * factor)^power), 1 <= power <= 4; z^4 is (z^2)^2. With centre 0 and factor 1 the sum of the
/// cells, with a factor of 1 the sum of squares around the centre, to the bit.
double PowerSum(int power, const float* x, double centre, double factor, int n, bool holes);
double PowerSum(int power, const double* x, double centre, double factor, int n, bool holes);

struct TwoSums {
  double first, second;
};
/// Of the positions i, from 0, of the cells that take part: sum (i - x0) and sum (i - x0)^2.
TwoSums SumPositions(const float* y, double x0, int n, bool holes);
TwoSums SumPositions(const double* y, double x0, int n, bool holes);
/// sum (y - y0) and sum (i - x0) (y - y0).
TwoSums SumMoments(const float* y, double x0, double y0, int n, bool holes);
TwoSums SumMoments(const double* y, double x0, double y0, int n, bool holes);

/// out[i] = (x[i] - centre) * factor, rounded once more to a cell. Returns whether any cell of `out` is -99 now.
bool Standardise(const float* x, double centre, double factor, int n, bool holes, float* out);
bool Standardise(const double* x, double centre, double factor, int n, bool holes, double* out);

/// out[i] = y[i] - ((i + 1) * slope + intercept), rounded once more to a cell: the line counts positions from 1.
/// Returns the same.
bool SubtractLine(const float* y, double intercept, double slope, int n, bool holes, float* out);
bool SubtractLine(const double* y, double intercept, double slope, int n, bool holes, double* out);

/// The twins.
namespace scalar {
double PowerSum(int power, const float* x, double centre, double factor, int n, bool holes);
double PowerSum(int power, const double* x, double centre, double factor, int n, bool holes);
TwoSums SumPositions(const float* y, double x0, int n, bool holes);
TwoSums SumPositions(const double* y, double x0, int n, bool holes);
TwoSums SumMoments(const float* y, double x0, double y0, int n, bool holes);
TwoSums SumMoments(const double* y, double x0, double y0, int n, bool holes);
bool Standardise(const float* x, double centre, double factor, int n, bool holes, float* out);
bool Standardise(const double* x, double centre, double factor, int n, bool holes, double* out);
bool SubtractLine(const float* y, double intercept, double slope, int n, bool holes, float* out);
bool SubtractLine(const double* y, double intercept, double slope, int n, bool holes, double* out);
}  // namespace scalar

}  // namespace kalmia::simd

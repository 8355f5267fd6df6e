#pragma once

/// Rows to each of which a multiple of another row is added, as a deflation does, and what is made of them on the way,
/// so that nobody has to store them or to fetch them again. Cell j of row k is
///   e[k][j] = float(double(rows[k][j]) + double(w[j]) * double(factors[k])),
/// to the bit the cell that AddScaledToRows.h stores. Rows start at their first cell and lie at any alignment; no cell
/// is looked at. 0 <= count <= kRowsSideBySide, n >= 0.
namespace kalmia::simd {

struct DeflatedRows {
  const float* const* rows;
  const float* factors;
  int count;
  const float* w;
  int n;
};

/// to[k][j] = e[k][j]; `to` may be the rows themselves, and overlaps nothing else.
void StoreDeflated(const DeflatedRows& deflated, float* const* to);
/// sums[j] += v[k] e[k][j], for k ascending: AddRows (ColumnSums.h) of the deflated rows.
void AddDeflated(const DeflatedRows& deflated, const double* v, double* sums);
/// Both.
void StoreAndAddDeflated(const DeflatedRows& deflated, float* const* to, const double* v, double* sums);
/// dots[k] = Dot(u, e[k]) (Dots.h).
void DotDeflated(const DeflatedRows& deflated, const float* u, double* dots);

/// The twins.
namespace scalar {
void StoreDeflated(const DeflatedRows& deflated, float* const* to);
void AddDeflated(const DeflatedRows& deflated, const double* v, double* sums);
void StoreAndAddDeflated(const DeflatedRows& deflated, float* const* to, const double* v, double* sums);
void DotDeflated(const DeflatedRows& deflated, const float* u, double* dots);
}  // namespace scalar

}  // namespace kalmia::simd

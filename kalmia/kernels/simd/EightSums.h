#pragma once

/// Sums over rows and columns of a table of floats, eight of them side by side, which share each cell that is fetched.
/// A factor, centre or sum has eight doubles. Products and sums are rounded to double one by one, never fused, and each
/// sum takes its terms in ascending order of rows or columns: the same bits on every machine, however columns and rows
/// are shared out among calls. No cell is looked at. Any alignment; nothing overlaps what is written; counts >= 0.
namespace kalmia::simd {

/// Numbers that lie side by side.
constexpr int kEight = 8;

/// dots[i][l] = sum over k < n of rows[i][k] vectors[k][l], for i < count.
void EightDots(const float* const* rows, int count, const double* vectors, int n, double* dots);
/// sums[k][l] += sum over i < count of rows[i][k] factors[i][l], for k < n.
void AddEightProducts(const float* const* rows, int count, const double* factors, int n, double* sums);
/// sums[k][l] += sum over i < count of weights[i][l] ((rows[i][k] - centres[k][l]) (rows[i][k] - centres[k][l])).
void AddEightSquares(const float* const* rows, int count, const double* weights, const double* centres, int n,
                     double* sums);

/// The twins.
namespace scalar {
void EightDots(const float* const* rows, int count, const double* vectors, int n, double* dots);
void AddEightProducts(const float* const* rows, int count, const double* factors, int n, double* sums);
void AddEightSquares(const float* const* rows, int count, const double* weights, const double* centres, int n,
                     double* sums);
}  // namespace scalar

}  // namespace kalmia::simd

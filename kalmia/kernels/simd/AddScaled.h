#pragma once

/// A multiple of one row added to another: the step of every deflation. Each cell becomes
///   T(double(row[j]) + double(w[j]) * double(f)),
/// the product and the sum rounded to double where they are not exact, never fused where that would show. Arrays start
/// at their first cell, lie at any alignment and do not overlap; n >= 0. Pointers are not read where n is 0.
namespace kalmia::simd {

void AddScaled(float* row, const float* w, float f, int n);   ///< no cell is looked at
void AddScaled(double* row, const double* w, double f, int n);
/// Only where neither row[j] nor w[j] is a hole (-99); every other cell keeps its bits. Returns at how many positions
/// the row has a cell and w a hole.
int AddScaledMasked(float* row, const float* w, float f, int n);
int AddScaledMasked(double* row, const double* w, double f, int n);

/// The twins.
namespace scalar {
void AddScaled(float* row, const float* w, float f, int n);
void AddScaled(double* row, const double* w, double f, int n);
int AddScaledMasked(float* row, const float* w, float f, int n);
int AddScaledMasked(double* row, const double* w, double f, int n);
/// At how many of the first n positions the row has a cell and w a hole.
int CountHolesOpposite(const float* row, const float* w, int n);
int CountHolesOpposite(const double* row, const double* w, int n);
}  // namespace scalar

}  // namespace kalmia::simd

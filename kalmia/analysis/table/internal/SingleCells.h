#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/text/Notes.h"
#include "kalmia/containers/NCDataMatrix.h"

// Where the cells of a table, doubles of which a hole is NaN, become the single-precision cells that the library works
// on, where a hole is -99. What models calculate from them, as scaled or filled cells, stays in single precision and
// keeps clear of -99 where it is calculated (steps/Scaling.h).

namespace kalmia::analysis {

/// Whether the mean of the present cells lies more than 1000 of their standard deviations from 0. Of the 24 binary
/// digits of a single-precision cell less than 14 are then left for what makes the cells differ. A column without
/// variance is no such column, and neither is one that varies by less than 1e-13 of its mean: that is what calculating
/// its numbers in double leaves in the last digits.
bool LosesDigits(const std::vector<double>& cells);

/// A column of `cells` cells at most, of which the largest absolute one is below so many times the difference between
/// largest and least, does not lose digits: two of n cells that lie r apart make a deviation of r / sqrt(2 (n - 1)) or
/// more.
KALMIA_EXPORT double LargestRatioWithoutShift(int cells);

/// What to take off the cells, in double, before they are rounded: the mean where LosesDigits; else 0.
double ShiftOf(const std::vector<double>& cells);

/// Empties shifts of which none is one: so are they held, and stored, where no column is shifted.
void ClearZeros(std::vector<double>* shifts);

/// The cells less the shift, rounded to single precision. One that rounds to -99 itself becomes the next float below
/// it. Where nothing was taken off it, it was measured as -99, and is counted in `moved`. A cell that a stored shift
/// leaves beyond single precision becomes infinite.
std::vector<float> SingleCells(const std::vector<double>& cells, double shift, int* moved);

/// A present cell in the units of the table: the double of as few digits as bring the cell back, once the shift is
/// taken off.
double InUnitsOfTable(float cell, double shift);

/// Says in one line how many cells were moved, if any.
void NoteMovedCells(int moved, Notes* notes);

/// Names the columns that lose digits and are not shifted, as nothing centres them.
void NoteLostDigits(const std::vector<std::string>& columns, Notes* notes);

/// Columns of so many cells each as a matrix, one cell for each row.
NCDataMatrix<float> MatrixOf(const std::vector<std::vector<float>>& columns, int rows);

/// Whether no two of the cells differ, but for missing ones.
bool IsConstant(const std::vector<float>& cells);
bool IsMissing(float cell);

/// The number; the next float below where it is the missing value.
float AvoidMissingValue(float number);

}  // namespace kalmia::analysis

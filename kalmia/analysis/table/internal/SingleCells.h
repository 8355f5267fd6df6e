#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/text/Notes.h"
#include "kalmia/containers/NCDataMatrix.h"

// Turns the cells of a table, doubles with NaN for a hole, into the single-precision cells of the library, where a hole
// is -99. Cells that models compute from them, scaled or filled ones, stay in single precision; whoever computes them
// avoids -99 (steps/Scaling.h).

namespace kalmia::analysis {

/// Whether the mean of the present cells lies more than 1000 of their standard deviations from 0. A single-precision
/// cell then has less than 14 of its 24 binary digits for the differences between cells. False without variance, and
/// for a column that varies by less than 1e-13 of its mean, which is rounding of double.
bool LosesDigits(const std::vector<double>& cells);

/// A column of at most `cells` cells loses no digits while its largest |cell| is below this ratio times its range, since
/// two of n cells that lie r apart make a standard deviation of r / sqrt(2 (n - 1)) or more.
double LargestRatioWithoutShift(int cells);

/// What to take off the cells, in double, before they are rounded: the mean where LosesDigits; else 0.
double ShiftOf(const std::vector<double>& cells);

/// Empties the shifts if all of them are 0: the form in which they are held and stored where no column is shifted.
void ClearZeros(std::vector<double>* shifts);

/// The cells less the shift, rounded to single precision. A cell that rounds to -99 becomes the next float below; with
/// a shift of 0 it was measured as -99 and is counted in `moved`. A cell too large for single precision, as a stored
/// shift may leave it, becomes infinite.
std::vector<float> SingleCells(const std::vector<double>& cells, double shift, int* moved);

/// A present cell in the units of the table: the double with the fewest digits that gives the cell again when the shift
/// is taken off.
double InUnitsOfTable(float cell, double shift);

/// Notes how many cells were moved off -99, if any.
void NoteMovedCells(int moved, Notes* notes);

/// Notes columns that lose digits because nothing centres them, so that they are not shifted.
void NoteLostDigits(const std::vector<std::string>& columns, Notes* notes);

/// A matrix of these columns, each of `rows` cells.
NCDataMatrix<float> MatrixOf(const std::vector<std::vector<float>>& columns, int rows);

/// Whether all present cells are equal.
bool IsConstant(const std::vector<float>& cells);
bool IsMissing(float cell);

/// The number; the next float below where it is the missing value.
float AvoidMissingValue(float number);

}  // namespace kalmia::analysis

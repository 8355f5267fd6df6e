#pragma once

#include <cstddef>
#include <string>

#include "kalmia/analysis/text/Notes.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"

namespace kalmia::analysis {

// Rules of extracting components one by one, for every kind of model.

/// Where less than this share of the sum of squares of X is left, the rest is rounding of float cells: some 2^-24 of
/// each, squared.
constexpr double kExhausted = 1e-14;
/// The same share below which no distance to the model is measured: cells with a mean of some standard deviations, and
/// several components, round X that much.
constexpr double kRoundings = 1e-12;
constexpr auto kNothingLeft = "nothing is left of X";

/// When to stop.
struct FitRules {
  int mostComponents = 0;
  /// Stop with the first component whose Q2 does not exceed its limit; a model without components is then no failure.
  bool stopAtFirstFailure = false;
  bool unitVariance = true;  ///< whether columns have unit variance, so that their numbers cannot be too small
  bool judgeComponents = true;  ///< whether each component is cross-validated
  int describedComponents = 0;  ///< so many components are described, where none is judged
};

/// "component 2", beside the bar.
std::string ComponentText(int component);

/// Why component `component` cannot be computed. For the first one with a hint that numbers may be too small: `whose`
/// is "its" or "their". Throws BadData for the first one, where a number of components was asked for.
std::string ReasonToEnd(const FitRules& rules, int component, const std::string& reason, const std::string& whose);

/// 1 - SS(residual) / SS(table), over the cells that are present in both; a row that the model cannot describe has no
/// residuals. NaN where the sum of squares of the table is 0.
double DescribedShare(const NCDataMatrix<float>& table, const NCDataMatrix<float>& residual);
/// The same of column c, from 1.
double DescribedShareOfColumn(const NCDataMatrix<float>& table, const NCDataMatrix<float>& residual, int c);

/// Notes that the iterations of a component (from 1) ended at their limit, if they did.
void NoteIterations(std::size_t component, int iterations, Notes* notes);

/// The first `components` rows of a matrix, which has so many at least.
NCDataMatrix<float> FirstRows(const NCDataMatrix<float>* prim, int components);

/// The sum of squares of each column.
NCDataVector<float> ColumnSumsOfSquares(const NCDataMatrix<float>& table);

}  // namespace kalmia::analysis

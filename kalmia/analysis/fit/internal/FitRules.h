#pragma once

#include <cstddef>
#include <string>

#include "kalmia/analysis/text/Notes.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"

namespace kalmia::analysis {

// How components are extracted, one after the other, whatever the kind of model.

/// What is left of X, as a share of its sum of squares, below which there is nothing but the rounding of float cells:
/// some 2^-24 of each, squared.
constexpr double kExhausted = 1e-14;
constexpr auto kNothingLeft = "nothing is left of X";

/// When to stop.
struct FitRules {
  int mostComponents = 0;
  /// Stop with the first component whose Q2 does not exceed its limit; having none at all is no failure then.
  bool stopAtFirstFailure = false;
  bool unitVariance = true;  ///< of the columns: their numbers are not too small for the fit
  bool judgeComponents = true;  ///< whether each component is cross-validated
  int describedComponents = 0;  ///< at least, where none is judged
};

/// "component 2", beside the bar.
std::string ComponentText(int component);

/// The reason why there is no component of that number, with a hint for the first one; `whose` numbers may be too
/// small, "its" or "their". Throws BadData where it is the first one and a number of components was asked
/// for.
std::string ReasonToEnd(const FitRules& rules, int component, const std::string& reason, const std::string& whose);

/// 1 - SS(residual) / SS(table), over the cells that are present in both: a row that the model cannot describe has no
/// residual. Not a number where the table has no sum of squares.
double DescribedShare(const NCDataMatrix<float>& table, const NCDataMatrix<float>& residual);
/// The same of column c, from 1.
double DescribedShareOfColumn(const NCDataMatrix<float>& table, const NCDataMatrix<float>& residual, int c);

/// Notes a component (from 1) whose iterations ended at the limit.
void NoteIterations(std::size_t component, int iterations, Notes* notes);

/// A model's matrix of its first components, which has so many rows at least.
NCDataMatrix<float> FirstRows(const NCDataMatrix<float>* prim, int components);

/// The sum of squares of each column.
NCDataVector<float> ColumnSumsOfSquares(const NCDataMatrix<float>& table);

}  // namespace kalmia::analysis

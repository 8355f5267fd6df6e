#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "kalmia/analysis/steps/GivenSteps.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"

namespace kalmia::analysis {

/// A column of numbers with its name; a hole is NaN.
struct NumberColumn {
  std::string name;
  std::vector<double> cells;

  std::size_t Present() const;
};

/// The columns of X after the steps.
struct PreprocessedX {
  StepChain chain;
  std::vector<NumberColumn> columns;      ///< those with a cell, at least one
  std::vector<std::string> emptyColumns;  ///< names of the others
};

/// Applies a saved chain to its columns and notes the others, or lets new steps learn of all columns of X. The column
/// `idColumn` names the rows, -1 for none; `textColumns` are columns of X that hold no numbers. `progress` may be null.
/// Throws BadData: a column of the chain that is not there; what LearnChain throws; no cell left.
PreprocessedX PreprocessX(const Table& table, int idColumn, const GivenSteps& given,
                          const std::vector<NumberColumn>& x, const std::vector<std::string>& textColumns,
                          Notes* notes, NCProgress* progress);

}  // namespace kalmia::analysis

#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/steps/GivenSteps.h"
#include "kalmia/analysis/steps/StepChain.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Steps for the signals of a table. Columns are named as RequireColumns takes them.
struct PreprocessRecipe {
  std::string id;  ///< column that names the rows in messages, and is no signal; empty: rows are numbered
  std::vector<std::string> x;  ///< channels of the signals; empty: all other columns of numbers
  std::vector<std::string> exclude;
  GivenSteps steps;      ///< a saved chain has its columns too: neither x nor exclude go with it
  bool restore = false;  ///< signals again, from the coefficients that the saved chain has kept
};

/// A table whose signals have gone through steps.
struct PreprocessedTable {
  int idColumn;              ///< of the table, from 0; -1 for none
  std::vector<int> columns;  ///< of the table, from 0, that were signals
  Signals signals;           ///< what has become of them
  StepChain chain;           ///< with what it has learnt
  bool restored;
  Notes notes;               ///< what was done of its own accord

  /// Names of the columns that went in.
  std::vector<std::string> InputNames() const { return restored ? OutputNames(chain) : chain.inputNames; }
};

/// Applies the steps that the recipe gives: new ones learn of this table. Notes columns of text among those asked for.
/// `progress` may be null, as below.
/// Throws BadRequest for a recipe that makes no sense; BadData: a column that is not there or holds no numbers, what
/// LearnChain refuses; Stopped where the bar wants to stop.
KALMIA_EXPORT PreprocessedTable Preprocess(const PreprocessRecipe& recipe, const Table& table,
                                           NCProgress* progress = nullptr);

/// The text of the table: the columns that were no signals, then what has become of the signals. Throws BadData where
/// two columns would have one name.
KALMIA_EXPORT std::string PreprocessedText(const Table& table, const PreprocessedTable& result,
                                           const CsvMarks& marks, NCProgress* progress);

}  // namespace kalmia::analysis

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/FillTrial.h"
#include "kalmia/analysis/fit/FilledColumns.h"
#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Missing cells that stay missing, and why.
struct LeftEmpty {
  enum class Reason { TextColumn, EmptyColumn, ExcludedColumn, EmptyRow };

  Reason reason;
  std::string name;  ///< of the column, or of the row
  int cells = 0;
};

/// What filling has found out: the filled columns, where they stand in the table, and what is told of them.
struct FillResult {
  std::vector<int> columns;  ///< of the table, from 0, for each filled column
  FilledColumns filled;
  std::vector<double> shifts;  ///< of the filled columns
  FillChoice choice;         ///< empty where a number of components was asked for, or nothing is missing
  int missing = 0;           ///< missing cells of the table
  int filledCells = 0;
  std::vector<LeftEmpty> leftEmpty;
  std::optional<FillTrial> trial;
  Notes notes;  ///< what was done of its own accord
};

/// Fills the holes of the columns of numbers by PCA of these columns at unit variance; the model is fitted anew to the
/// filled cells until none moves by more than kSettled, for 50 rounds at most. Here as below `progress` may be null.
/// Throws BadRequest for fewer than 0 components; BadData: a column that does not exist, a cell that is no number, no
/// column of numbers, a column whose variance is out of range; Stopped where the progress wants to stop.
/// Source: Josse & Husson (2012), Journal de la Societe Francaise de Statistique 153, 79-99.
KALMIA_EXPORT FillResult Fit(const FillRecipe& recipe, const Table& table, NCProgress* progress = nullptr);

/// The text of the table with the filled cells in it, as WithNewCells writes it, with its note. `id` is that of the
/// recipe.
KALMIA_EXPORT std::string FilledText(const Table& table, const FillResult& result, const std::string& id,
                       const AskedMarks& marks, Notes* notes, NCProgress* progress);

}  // namespace kalmia::analysis

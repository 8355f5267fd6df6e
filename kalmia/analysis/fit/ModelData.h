#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/Classes.h"
#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/steps/StepChain.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// The tables that a model is fitted to, with the names of their rows and columns.
struct ModelData {
  StepChain chain;  ///< what made X of the columns of the table, if the recipe has steps
  std::vector<std::string> xNames;
  std::vector<std::string> yNames;
  std::vector<std::string> rowNames;
  std::vector<int> rows;              ///< of the table, from 0, that the model sees
  NCDataMatrix<float> x;              ///< rows by X columns, as the chain has made them, less their shifts
  NCDataMatrix<float> y;              ///< rows by Y columns, less their shifts; a model of X alone has none
  std::vector<double> xShifts;        ///< in the units of the table, see ShiftOf; empty where no column is shifted
  std::vector<double> yShifts;
  std::optional<Classes> classes;     ///< of these rows, where y has their dummies
  std::string classColumn;            ///< of the table, that has them; empty for another Y
  std::vector<std::vector<double>> measuredY;  ///< the cells of y, column by column, in the units of the table
  NCIntegralVector<int, -99> groups;  ///< cross-validation group of each row, from 0
  int rounds = 0;                     ///< number of groups

  // What the table has but the model does not see.
  std::vector<std::string> textColumns;
  std::vector<std::string> constantColumns;
  std::vector<std::string> emptyColumns;
  std::vector<std::string> leftOutRows;  ///< rows without any cell of X
};

/// Selects X, Y, names and groups from the table as the recipe says; `y` names the columns of Y, none for a model
/// of X alone. Columns without numbers, constant and empty X columns, rows without any X cell, and constant Y columns
/// among others that vary are left out, each kind with one note. With steps, constant and empty columns take part in
/// them, and those that come out as such are left out. `progress`, which may be null, shows the steps. Throws BadData:
/// a column that is not there; a Y of text, without values, or without any variance; no X column or no X cell left; X
/// that the steps cannot take; a row without a group, fewer than two groups; a cell that is no number.
KALMIA_EXPORT ModelData SelectData(const Table& table, const FitRecipe& recipe, const std::vector<std::string>& y,
                                   Notes* notes, NCProgress* progress);

/// The same of a model of Y or of classes, whose dummies are called by them. Throws BadRequest for a column of texts
/// beside other columns of Y, and for priors other than equal ones of a Y of numbers; BadData as ClassesOf does, and
/// for a class that the recipe does not allow.
KALMIA_EXPORT ModelData SelectData(const Table& table, const YRecipe& recipe, Notes* notes, NCProgress* progress);

/// How many columns Y has: those of SelectData, or a dummy for each class. Throws as SelectData does. Cost: of several
/// columns of numbers, that of SelectData.
KALMIA_EXPORT int CountYColumns(const Table& table, const YRecipe& recipe);

/// "constant columns: a, b; empty columns: c", what was left out of X for want of variance; empty if nothing was.
KALMIA_EXPORT std::string LeftOutText(const ModelData& data);

/// Says which names several rows have, where rows are left out one by one and not by a column of groups. A name without
/// a character is none.
KALMIA_EXPORT void NoteReplicates(const std::vector<std::string>& rowNames, Notes* notes);

/// Components that a model of these tables can have at most: as many as `asked` for, min(rows - 1, X columns), and,
/// where none are asked for, 15. Notes a cut.
KALMIA_EXPORT int MostComponents(const ModelData& data, const std::optional<int>& asked, Notes* notes);

}  // namespace kalmia::analysis

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/fit/ModelData.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Selects X, Y, names and groups from the table as the recipe says; `y` names the columns of Y, none for a model
/// of X alone. Columns without numbers, constant and empty X columns, rows without any X cell, and constant Y columns
/// among others that vary are left out, each kind with one note. With steps, constant and empty columns take part in
/// them, and those that come out as such are left out. `progress`, which may be null, shows the steps. Throws BadData:
/// a column that is not there; a Y of text, without values, or without any variance; no X column or no X cell left; X
/// that the steps cannot take; a row without a group, fewer than two groups; a cell that is no number.
/// Notes, with Remedy::LeaveOutColumn, a column of X that copies one of Y: |r| > 0.999999 over five common cells or
/// more.
ModelData SelectData(const Table& table, const FitRecipe& recipe, const std::vector<std::string>& y, Notes* notes,
                     NCProgress* progress);

/// The same for a filter, which has neither steps nor groups.
ModelData SelectXAndY(const Table& table, const XRecipe& recipe, const std::vector<std::string>& y, Notes* notes);

/// The same for a model of Y or of classes; dummies have the names of their classes. Throws BadRequest for a column of
/// texts beside other columns of Y, and for priors other than equal ones of a Y of numbers; BadData as ClassesOf does,
/// and for a class that the recipe does not allow.
ModelData SelectData(const Table& table, const YRecipe& recipe, Notes* notes, NCProgress* progress);

/// How many columns Y has: those of SelectData, or a dummy for each class. Throws as SelectData does. Cost: of several
/// columns of numbers, that of SelectData.
int CountYColumns(const Table& table, const YRecipe& recipe);

/// "constant columns: a, b; empty columns: c", what was left out of X for want of variance; empty if nothing was.
std::string LeftOutText(const ModelData& data);

/// Notes names that several rows have, in the order of the rows, where rows are left out one by one and not by a column
/// of groups. A name without a character is none.
void NoteReplicates(const std::vector<std::string>& rowNames, Notes* notes);

/// Components that a model of these tables can have at most: as many as `asked` for, min(rows - 1, X columns), and,
/// where none are asked for, 15. Notes a cut.
int MostComponents(const ModelData& data, const std::optional<int>& asked, Notes* notes);

}  // namespace kalmia::analysis

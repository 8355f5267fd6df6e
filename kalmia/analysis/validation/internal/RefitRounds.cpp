#include "kalmia/analysis/validation/internal/RefitRounds.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "kalmia/analysis/fit/internal/SelectData.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

namespace {

std::string GroupText(const Folds& folds, int repeat, int group) {
  const std::string text =
      folds.names.empty() ? std::to_string(group + 1) : Quoted(folds.names[static_cast<std::size_t>(group)]);
  return "group " + text + (folds.Repeats() > 1 ? " of repeat " + std::to_string(repeat + 1) : "");
}

}  // namespace

Folds DealRows(std::size_t rows, int groups, const FoldDealing& dealing, Notes* notes) {
  Folds made = MakeFolds(rows, {dealing, groups});
  if (dealing.scheme != FoldScheme::LeaveOneOut && made.groups < groups) {
    notes->Add(std::to_string(groups) + " groups are cut to " + std::to_string(made.groups) + ", the number of rows");
  }
  return made;
}

Folds FoldsOf(const FitRecipe& recipe, const Table& table, const ModelData& data, const FoldDealing& dealing,
              Notes* notes) {
  if (!recipe.groupColumn.empty()) {
    const int column = RequireColumn(table, recipe.groupColumn);
    std::vector<std::string> labels;
    for (const int row : data.rows) labels.push_back(table.Cell(row, column));
    return FoldsOfLabels(labels);
  }
  NoteReplicates(data.rowNames, notes);
  const bool isWithinClasses = data.classes && dealing.scheme == FoldScheme::Random;
  return isWithinClasses ? MakeFoldsWithinClasses(data.classes->classOfRow, {dealing, recipe.groups})
                         : DealRows(data.rows.size(), recipe.groups, dealing, notes);
}

void RequireRowsToNest(const Folds& folds, const std::string& groupColumn) {
  const std::string takes = "a nested validation, where the rows that stay in choose the number of components, takes ";
  if (!groupColumn.empty()) {
    if (folds.groups > 2) return;
    throw BadData(takes + "three groups or more, and column " + Quoted(groupColumn) + " makes two");
  }
  std::size_t largest = 0;  // group
  for (const std::vector<int>& ofRepeat : folds.groupOfRow) {
    std::vector<std::size_t> sizes(static_cast<std::size_t>(folds.groups), 0);
    for (const int group : ofRepeat) ++sizes[static_cast<std::size_t>(group)];
    largest = std::max(largest, *std::max_element(sizes.begin(), sizes.end()));
  }
  if (folds.Rows() - largest >= 2) return;
  throw BadData(takes + "two of them or more in each round: there are " + std::to_string(folds.Rows()) + " rows in " +
                std::to_string(folds.groups) + " groups");
}

void ForEachRound(const Folds& folds, WorkProgress* progress, const std::function<void(int, int)>& round) {
  progress->Begin("validation");
  int number = 0;
  for (int repeat = 0; repeat < folds.Repeats(); ++repeat) {
    for (int group = 0; group < folds.groups; ++group) {
      progress->MoveToPart(++number, folds.Rounds());
      try {
        round(repeat, group);
      } catch (const BadData& failure) {
        throw BadData("while " + GroupText(folds, repeat, group) + " is left out: " + failure.what(),
                      failure.WhatHelps(), failure.Place());
      }
    }
  }
}

void NoteColumnsWithoutSpread(const std::string& block, const std::vector<std::string>& columns,
                              const std::set<std::string>& withoutSpread, Notes* notes) {
  std::vector<std::string> names;
  for (const std::string& name : columns) {
    if (withoutSpread.count(name) > 0) names.push_back(name);
  }
  if (names.empty()) return;
  notes->Add("without two different cells in some round of the validation, where they have no say: " +
             Counted(names.size(), block + " column") + " (" + Listed(names, kColumnsNamed) + ")");
}

}  // namespace kalmia::analysis

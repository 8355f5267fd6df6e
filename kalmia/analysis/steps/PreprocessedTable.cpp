#include "kalmia/analysis/steps/PreprocessedTable.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/table/internal/CsvRecords.h"
#include "kalmia/analysis/table/internal/CsvText.h"
#include "kalmia/analysis/table/internal/ReadTableCell.h"
#include "kalmia/analysis/table/internal/Refuse.h"
#include "kalmia/analysis/table/internal/TableText.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/WorkProgress.h"

namespace kalmia::analysis {

namespace {

void CheckRecipe(const PreprocessRecipe& recipe) {
  const GivenSteps& steps = recipe.steps;
  if (recipe.restore && !(steps.chain && EndsCompressed(*steps.chain))) {
    throw BadRequest("signals are restored from saved steps that end with wavelet-compress, not " + steps.name,
                     InSetting("restore"));
  }
  if (steps.chain && (!recipe.x.empty() || !recipe.exclude.empty())) {
    throw BadRequest(steps.name + " holds saved steps and their columns, which cannot be chosen anew",
                     InSetting(recipe.x.empty() ? "exclude" : "x"));
  }
}

/// For each column of the table whether it is among these.
std::vector<bool> Marked(const Table& table, const std::vector<int>& columns) {
  std::vector<bool> marked(static_cast<std::size_t>(table.Columns()), false);
  for (const int column : columns) marked[static_cast<std::size_t>(column)] = true;
  return marked;
}

/// The columns of these names, from 0.
std::vector<int> ColumnsNamed(const Table& table, const std::vector<std::string>& names) {
  std::vector<int> columns;
  for (const std::string& name : names) columns.push_back(RequireColumn(table, name));
  return columns;
}

/// The columns of a saved chain. The names of the rows cannot be among them: they stay as they are.
std::vector<int> ChainColumns(const Table& table, const PreprocessRecipe& recipe) {
  const StepChain& chain = *recipe.steps.chain;
  const std::vector<std::string> names = recipe.restore ? OutputNames(chain) : chain.inputNames;
  if (std::find(names.begin(), names.end(), recipe.id) != names.end()) {
    Refuse(table, "the steps of " + recipe.steps.name + " take column " + Quoted(recipe.id) +
                      ", which is to name the rows: take it out of them, or name the rows otherwise",
           InColumn(recipe.id));
  }
  return ColumnsNamed(table, names);
}

/// Columns of the table, from 0, that become signals.
std::vector<int> SignalColumns(const Table& table, const PreprocessRecipe& recipe, Notes* notes) {
  if (recipe.steps.chain) return ChainColumns(table, recipe);
  std::vector<int> excluded = ColumnsToExclude(table, recipe.exclude);
  if (!recipe.id.empty()) excluded.push_back(RequireColumn(table, recipe.id));
  std::vector<int> columns;
  std::vector<std::string> texts;
  const std::vector<bool> isExcluded = Marked(table, excluded);
  for (const int column : RequireColumnsOrAll(table, recipe.x)) {
    if (isExcluded[static_cast<std::size_t>(column)]) continue;
    if (KindOfColumn(table, column) != ColumnKind::Texts) {
      columns.push_back(column);
    } else {
      texts.push_back(table.ColumnNames()[static_cast<std::size_t>(column)]);
    }
  }
  if (columns.empty()) Refuse(table, "there is no column of numbers to work on");
  // Those of a range were asked for.
  if (!recipe.x.empty() && !texts.empty()) notes->Add("no channel, as it holds text: " + Listed(texts, kColumnsNamed));
  return columns;
}

/// The column that names the rows, from 0; -1 for none.
int IdColumn(const Table& table, const PreprocessRecipe& recipe) {
  return recipe.id.empty() ? -1 : RequireColumn(table, recipe.id);
}

Signals ReadSignals(const Table& table, int idColumn, const std::vector<int>& columns) {
  Signals signals{table.Name(), RowPlaces(table, idColumn), {}, {}, {}, table.DecimalComma()};
  signals.cells = CellRows(table.Rows(), static_cast<int>(columns.size()));
  for (std::size_t k = 0; k < columns.size(); ++k) {
    signals.names.push_back(table.ColumnNames()[static_cast<std::size_t>(columns[k])]);
    signals.cells.SetColumn(static_cast<int>(k), ReadNumbers(table, columns[k]).data());
  }
  return signals;
}

/// The chain that the signals have gone through, forwards or, to restore signals, its last step backwards.
StepChain ApplySteps(const PreprocessRecipe& recipe, Signals* signals, Notes* notes, NCProgress* progress) {
  if (!recipe.steps.chain) return LearnChain(recipe.steps.steps, signals, notes, progress);
  if (recipe.restore) {
    RestoreSignals(*recipe.steps.chain, signals, progress);
  } else {
    ApplyChain(*recipe.steps.chain, signals, progress);
  }
  return *recipe.steps.chain;
}

/// The cell of a column that no step has touched: a missing one of numbers, and an empty text, as an empty field.
void AddKeptCell(const Table& table, std::string text, bool isOfNumbers, CsvText* csv) {
  const bool isMissing = isOfNumbers && ReadTableCell(table, text).kind == CellKind::Missing;
  if (isMissing || text.empty()) {
    csv->Digits("");
  } else {
    AddTableCell(table, std::move(text), isOfNumbers, csv);
  }
}

}  // namespace

PreprocessedTable Preprocess(const PreprocessRecipe& recipe, const Table& table, NCProgress* progress) {
  CheckRecipe(recipe);
  PreprocessedTable result;
  result.columns = SignalColumns(table, recipe, &result.notes);
  result.idColumn = IdColumn(table, recipe);
  result.signals = ReadSignals(table, result.idColumn, result.columns);
  result.chain = ApplySteps(recipe, &result.signals, &result.notes, progress);
  result.restored = recipe.restore;
  return result;
}

std::string PreprocessedText(const Table& table, const PreprocessedTable& result, const CsvMarks& marks,
                             NCProgress* progress) {
  const Signals& signals = result.signals;
  std::vector<int> kept;
  const std::vector<bool> isOfNumbers = ColumnsOfNumbers(table, result.idColumn);
  const std::vector<bool> isSignal = Marked(table, result.columns);
  const std::unordered_set<std::string_view> made(signals.names.begin(), signals.names.end());
  for (int column = 0; column < table.Columns(); ++column) {
    if (!isSignal[static_cast<std::size_t>(column)]) kept.push_back(column);
  }
  const bool isAlone = kept.size() + signals.names.size() == 1;
  CsvText csv(marks, table.Format().comment);
  if (isAlone && marks.decimal == ',') csv.NameSeparator();  // for which a reader would take the decimal commas
  for (const int column : kept) {
    const std::string& name = table.ColumnNames()[static_cast<std::size_t>(column)];
    if (made.count(name) > 0) {
      Refuse(table, "column " + Quoted(name) + " would stand in the output twice: rename it in the table",
             InColumn(name));
    }
    csv.Field(name);
  }
  for (const std::string& name : signals.names) csv.Field(name);
  csv.EndLine();
  WorkProgress work(progress);
  work.Begin("writing the table");
  for (int row = 0; row < table.Rows(); ++row) {
    work.MoveToPart(row + 1, table.Rows());
    std::vector<std::string> texts = kept.empty() ? std::vector<std::string>() : table.RowTexts(row);
    for (const int column : kept) {
      const auto c = static_cast<std::size_t>(column);
      AddKeptCell(table, std::move(texts[c]), isOfNumbers[c], &csv);
    }
    const double* const cells = signals.cells.Row(row);
    for (int c = 0; c < signals.cells.Columns(); ++c) {
      const bool leavesABlankLine = isAlone && std::isnan(cells[c]);
      leavesABlankLine ? csv.Field("NA") : csv.Number(cells[c]);
    }
    csv.EndLine();
  }
  return csv.Text();
}

}  // namespace kalmia::analysis

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "app/CellNumber.h"
#include "app/Commands.h"
#include "app/ConsoleProgress.h"
#include "app/CsvTable.h"
#include "app/CsvText.h"
#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/Json.h"
#include "app/OutputFiles.h"
#include "app/OutputPlaces.h"
#include "app/ReadTable.h"
#include "app/StepChainFile.h"
#include "app/StepChainReport.h"
#include "app/TableColumns.h"
#include "app/TableText.h"
#include "app/WorkProgress.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::app {

namespace {

void CheckFiles(const PreprocessOptions& options) {
  std::vector<FilePlace> inputs = {{"the table", options.table}};
  std::vector<FilePlace> outputs = {{"--out", options.out}};
  if (!options.stepsFile.empty()) inputs.push_back({"--steps-file", options.stepsFile});
  if (!options.save.empty()) outputs.push_back({"--save", options.save});
  CheckPlaces(inputs, outputs);
}

[[noreturn]] void Refuse(const CsvTable& table, const std::string& message) {
  throw BadData(table.Name() + ": " + message);
}

/// For each column of the table whether it is among these.
std::vector<bool> Marked(const CsvTable& table, const std::vector<int>& columns) {
  std::vector<bool> marked(static_cast<std::size_t>(table.Columns()), false);
  for (const int column : columns) marked[static_cast<std::size_t>(column)] = true;
  return marked;
}

/// The columns of these names, from 0.
std::vector<int> ColumnsNamed(const CsvTable& table, const std::vector<std::string>& names) {
  std::vector<int> columns;
  for (const std::string& name : names) columns.push_back(RequireColumn(table, name));
  return columns;
}

/// The columns of a saved chain. The names of the rows cannot be among them: they stay as they are.
std::vector<int> ChainColumns(const CsvTable& table, const PreprocessOptions& options, const GivenSteps& steps) {
  const std::vector<std::string> names = options.restore ? OutputNames(*steps.chain) : steps.chain->inputNames;
  if (std::find(names.begin(), names.end(), options.id) != names.end()) {
    Refuse(table, "the steps of " + steps.name + " take column " + Quoted(options.id) +
                      ", which is to name the rows: save them with --id, or leave --id out");
  }
  return ColumnsNamed(table, names);
}

/// Columns of the table, from 0, that become signals.
std::vector<int> SignalColumns(const CsvTable& table, const PreprocessOptions& options, const GivenSteps& steps,
                               Notes* notes) {
  if (steps.chain) return ChainColumns(table, options, steps);
  std::vector<int> excluded = ColumnsToExclude(table, options.exclude);
  if (!options.id.empty()) excluded.push_back(RequireColumn(table, options.id));
  std::vector<int> columns;
  std::vector<std::string> texts;
  const std::vector<bool> isExcluded = Marked(table, excluded);
  for (const int column : RequireColumnsOrAll(table, options.x)) {
    if (isExcluded[static_cast<std::size_t>(column)]) continue;
    if (KindOfColumn(table, column) != ColumnKind::Texts) {
      columns.push_back(column);
    } else {
      texts.push_back(table.ColumnNames()[static_cast<std::size_t>(column)]);
    }
  }
  if (columns.empty()) Refuse(table, "there is no column of numbers to work on");
  // Those of a range were asked for.
  if (!options.x.empty() && !texts.empty()) notes->Add("no channel, as it holds text: " + Listed(texts, kColumnsNamed));
  return columns;
}

/// The column that names the rows, from 0; -1 for none.
int IdColumn(const CsvTable& table, const PreprocessOptions& options) {
  return options.id.empty() ? -1 : RequireColumn(table, options.id);
}

Signals ReadSignals(const CsvTable& table, const PreprocessOptions& options, const std::vector<int>& columns,
                    Notes* notes) {
  Signals signals{table.Name(), RowPlaces(table, IdColumn(table, options)), {}, {}, {}, table.DecimalComma()};
  signals.cells = NCDataMatrix<float>(table.Rows(), static_cast<int>(columns.size()));
  int moved = 0;
  for (std::size_t k = 0; k < columns.size(); ++k) {
    signals.names.push_back(table.ColumnNames()[static_cast<std::size_t>(columns[k])]);
    const std::vector<float> cells = ReadNumbers(table, columns[k], &moved);
    for (std::size_t r = 0; r < cells.size(); ++r) {
      signals.cells(static_cast<int>(r) + 1, static_cast<int>(k) + 1, cells[r]);
    }
  }
  NoteMovedCells(moved, notes);
  return signals;
}

/// The cell of a column that no step has touched: a missing one of numbers, and an empty text, as an empty field.
void AddKeptCell(const CsvTable& table, std::string text, bool isOfNumbers, CsvText* csv) {
  const bool isMissing = isOfNumbers && table.ValueOf(text).kind == CellKind::Missing;
  if (isMissing || text.empty()) {
    csv->Cell(kMissingCell<float>);
  } else {
    AddTableCell(table, std::move(text), isOfNumbers, csv);
  }
}

/// The columns that are no signals, then what has become of the signals.
std::string OutText(const CsvTable& table, int idColumn, const std::vector<int>& columns, const Signals& signals,
                    const CsvMarks& marks, NCProgress* progress) {
  std::vector<int> kept;
  const std::vector<bool> isOfNumbers = ColumnsOfNumbers(table, idColumn);
  const std::vector<bool> isSignal = Marked(table, columns);
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
      Refuse(table, "column " + Quoted(name) + " would stand in the output twice: rename it in the table");
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
    for (const float cell : signals.cells[row + 1]) {
      const bool leavesABlankLine = isAlone && cell == kMissingCell<float>;
      leavesABlankLine ? csv.Field("NA") : csv.Cell(cell);
    }
    csv.EndLine();
  }
  return csv.Text();
}

/// What --save has written is applied as it is, or backwards.
void RequireThatTheChainAgrees(const PreprocessOptions& options, const GivenSteps& steps) {
  if (options.restore && !(steps.chain && EndsCompressed(*steps.chain))) {
    throw BadRequest("--restore takes saved steps that end with wavelet-compress, not " + steps.name);
  }
  if (steps.chain && (!options.x.empty() || !options.exclude.empty() || !options.save.empty())) {
    const std::string reason = " holds saved steps and their columns: --x, --exclude and --save do not go with it";
    throw BadRequest(steps.name + reason);
  }
}

GivenSteps StepsOf(const PreprocessOptions& options) {
  GivenSteps steps = ReadSteps(options.steps, options.stepsFile);
  RequireThatTheChainAgrees(options, steps);
  return steps;
}

std::string ResultText(const PreprocessOptions& options, const StepChain& chain, const Signals& signals) {
  const std::size_t before = options.restore ? OutputNames(chain).size() : chain.inputNames.size();
  std::string text = std::string(options.restore ? "Restored " : "Preprocessed ") +
                     Counted(signals.rowPlaces.size(), "row") + " of " + signals.table + ", " +
                     Counted(before, "column") + ", into " + OneLine(options.out) + ", " +
                     Counted(signals.names.size(), "column") + "\n";
  text += ChainText(chain, options.restore ? chain.steps.size() - 1 : 0);
  if (!options.save.empty()) text += "\nSaved the steps as " + OneLine(options.save) + "\n";
  return text;
}

std::string ResultJson(const PreprocessOptions& options, const CsvTable& table, const StepChain& chain,
                       const Signals& signals, const Notes& notes) {
  Json json = JsonHeader("kalmia-preprocess");
  json["table"] = signals.table;
  json["rows"] = RowNames(table, IdColumn(table, options));
  json["columns"] = options.restore ? OutputNames(chain) : chain.inputNames;
  json["restored"] = options.restore;
  json["steps"] = ChainJson(chain);
  json["out"] = options.out;
  json["outColumns"] = signals.names;
  json["saved"] = options.save.empty() ? Json(nullptr) : Json(options.save);
  json["notes"] = notes.Lines();
  return JsonText(json);
}

/// The chain that the signals have gone through, forwards or, for --restore, its last step backwards.
StepChain Work(const PreprocessOptions& options, const GivenSteps& steps, Signals* signals, Notes* notes,
               NCProgress* progress) {
  if (!steps.chain) return LearnChain(steps.steps, signals, notes, progress);
  if (options.restore) {
    RestoreSignals(*steps.chain, signals, progress);
  } else {
    ApplyChain(*steps.chain, signals, progress);
  }
  return *steps.chain;
}

}  // namespace

std::string RunCommand(const PreprocessOptions& options, Notes* notes) {
  CheckFiles(options);
  const GivenSteps steps = StepsOf(options);
  const CsvTable table = ReadTable(options.table, options.reading);
  const std::vector<int> columns = SignalColumns(table, options, steps, notes);
  Signals signals = ReadSignals(table, options, columns, notes);
  TerminalBar bar;
  const StepChain chain = Work(options, steps, &signals, notes, bar.Get());
  OutputFiles files;
  const CsvMarks marks = MarksOf(options.csvMarks);
  files.Stage(options.out, OutText(table, IdColumn(table, options), columns, signals, marks, bar.Get()));
  if (!options.save.empty()) files.Stage(options.save, StepChainFileBytes(chain));
  files.Commit();
  return options.json ? ResultJson(options, table, chain, signals, *notes) : ResultText(options, chain, signals);
}

}  // namespace kalmia::app

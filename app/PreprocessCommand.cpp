#include <algorithm>

#include "app/Commands.h"
#include "app/CsvTable.h"
#include "app/CsvText.h"
#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/InputFile.h"
#include "app/Json.h"
#include "app/OutputFiles.h"
#include "app/OutputPlaces.h"
#include "app/StepChainFile.h"
#include "app/StepChainJson.h"
#include "app/TableColumns.h"

namespace kalmia::app {

namespace {

[[noreturn]] void Refuse(const CsvTable& table, const std::string& message) {
  throw Failure(ExitCode::BadData, table.Name() + ": " + message);
}

bool Has(const std::vector<int>& columns, int column) {
  return std::find(columns.begin(), columns.end(), column) != columns.end();
}

/// Columns of the table, from 0, that become signals.
std::vector<int> SignalColumns(const CsvTable& table, const PreprocessOptions& options, const StepsFile& steps) {
  if (steps.chain) return RequireColumns(table, steps.chain->inputNames);
  std::vector<int> excluded = RequireColumns(table, options.exclude);
  if (!options.id.empty()) excluded.push_back(RequireColumn(table, options.id));
  std::vector<int> candidates;
  if (!options.x.empty()) {
    candidates = RequireColumnRange(table, options.x);
  } else {
    for (int column = 0; column < table.Columns(); ++column) candidates.push_back(column);
  }
  std::vector<int> columns;
  for (const int column : candidates) {
    if (!Has(excluded, column) && KindOfColumn(table, column) != ColumnKind::Texts) columns.push_back(column);
  }
  if (columns.empty()) Refuse(table, "there is no column of numbers to work on");
  return columns;
}

Signals ReadSignals(const CsvTable& table, const PreprocessOptions& options, const std::vector<int>& columns,
                    Notes* notes) {
  const int id = options.id.empty() ? -1 : RequireColumn(table, options.id);
  Signals signals{table.Name(), RowNames(table, id), {}, {}, {}};
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

/// A column that no step has touched: numbers with a decimal point like all others in the file, texts as they are.
class KeptColumn {
 public:
  KeptColumn(const CsvTable& table, int column) : table_(table), column_(column) {
    int moved = 0;
    if (KindOfColumn(table, column) == ColumnKind::Numbers) numbers_ = ReadNumbers(table, column, &moved);
  }

  const std::string& Name() const { return table_.ColumnNames()[static_cast<std::size_t>(column_)]; }

  void AddCell(int row, CsvText* csv) const {
    if (numbers_.empty()) {
      csv->Field(std::string(table_.Cell(row, column_)));
    } else {
      csv->Cell(numbers_[static_cast<std::size_t>(row)]);
    }
  }

 private:
  const CsvTable& table_;
  int column_;
  std::vector<float> numbers_;  ///< empty for a column of texts
};

/// The columns that are no signals, then what has become of the signals.
std::string OutText(const CsvTable& table, const std::vector<int>& columns, const Signals& signals) {
  std::vector<KeptColumn> kept;
  for (int column = 0; column < table.Columns(); ++column) {
    if (!Has(columns, column)) kept.emplace_back(table, column);
  }
  CsvText csv;
  for (const KeptColumn& column : kept) {
    const bool twice = std::find(signals.names.begin(), signals.names.end(), column.Name()) != signals.names.end();
    if (twice) Refuse(table, "column " + Quoted(column.Name()) + " would stand in the output twice: rename or exclude it");
    csv.Field(column.Name());
  }
  for (const std::string& name : signals.names) csv.Field(name);
  csv.EndLine();
  for (int row = 0; row < table.Rows(); ++row) {
    for (const KeptColumn& column : kept) column.AddCell(row, &csv);
    for (const float cell : signals.cells[row + 1]) csv.Cell(cell);
    csv.EndLine();
  }
  return csv.Text();
}

StepsFile StepsOf(const PreprocessOptions& options) {
  if (!options.stepsFile.empty()) return ReadStepsFile(options.stepsFile);
  if (options.steps.empty()) {
    throw Failure(ExitCode::Usage, "kalmia preprocess needs --steps or --steps-file; see kalmia preprocess --help");
  }
  return {"--steps", ParseSteps(options.steps, "--steps"), {}};
}

std::string ResultText(const PreprocessOptions& options, const StepChain& chain, const Signals& signals) {
  std::string text = "Preprocessed " + Counted(signals.rowNames.size(), "row") + " of " + signals.table + ", " +
                     Counted(chain.inputNames.size(), "column") + ", into " + OneLine(options.out) + ", " +
                     Counted(signals.names.size(), "column") + "\n";
  for (std::size_t i = 0; i < chain.steps.size(); ++i) {
    text += "  " + std::to_string(i + 1) + "  " + LearntText(chain.steps[i]) + "\n";
  }
  if (!options.save.empty()) text += "\nSaved the steps as " + OneLine(options.save) + "\n";
  return text;
}

std::string ResultJson(const PreprocessOptions& options, const StepChain& chain, const Signals& signals,
                       const Notes& notes) {
  Json json = JsonHeader("kalmia-preprocess");
  json["table"] = signals.table;
  json["rows"] = signals.rowNames;
  json["columns"] = chain.inputNames;
  json["steps"] = ChainJson(chain);
  json["out"] = options.out;
  json["outColumns"] = signals.names;
  json["saved"] = options.save.empty() ? Json(nullptr) : Json(options.save);
  json["notes"] = notes.Lines();
  return JsonText(json);
}

}  // namespace

std::string RunCommand(const PreprocessOptions& options, Notes* notes) {
  RefuseToOverwrite({{"the table", options.table}, {"--steps-file", options.stepsFile}},
                    {{"--out", options.out}, {"--save", options.save}});
  const StepsFile steps = StepsOf(options);
  const CsvTable table(ReadInput(options.table), InputName(options.table));
  const std::vector<int> columns = SignalColumns(table, options, steps);
  Signals signals = ReadSignals(table, options, columns, notes);
  StepChain chain;
  if (steps.chain) {
    chain = *steps.chain;
    ApplyChain(chain, &signals);
  } else {
    chain = LearnChain(steps.steps, &signals, notes);
  }
  OutputFiles files;
  files.Stage(options.out, OutText(table, columns, signals));
  if (!options.save.empty()) files.Stage(options.save, StepChainFileBytes(chain));
  files.Commit();
  return options.json ? ResultJson(options, chain, signals, *notes) : ResultText(options, chain, signals);
}

}  // namespace kalmia::app

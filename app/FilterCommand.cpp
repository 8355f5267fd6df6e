#include <string>
#include <utility>

#include "app/Commands.h"
#include "app/ConsoleProgress.h"
#include "app/CsvTable.h"
#include "app/Failure.h"
#include "app/FilterOutcome.h"
#include "app/FilterReport.h"
#include "app/InputFile.h"
#include "app/ModelFile.h"
#include "app/OutputFiles.h"
#include "app/OutputPlaces.h"
#include "app/ReadTable.h"
#include "app/Options.h"

namespace kalmia::app {

namespace {

void CheckFiles(const FilterOptions& options) {
  std::vector<FilePlace> inputs = {{"the table", options.table}};
  std::vector<FilePlace> outputs = {{"--out", options.out}};
  if (!options.model.empty()) inputs.push_back({"the model", options.model});
  if (!options.save.empty()) outputs.push_back({"--save", options.save});
  CheckPlaces(inputs, outputs);
}

StoredFilter ReadFilter(const std::string& file) {
  StoredModel model = ReadModelFile(ReadInput(file), InputName(file));
  auto* filter = std::get_if<StoredFilter>(&model);
  if (filter == nullptr) {
    throw BadData(InputName(file) + " holds no filter; kalmia predict takes models of other kinds");
  }
  return std::move(*filter);
}

FilterOutcome Compute(const CsvTable& table, const FilterOptions& options, Notes* notes, NCProgress* progress) {
  if (options.model.empty()) return MakeFilter(table, options.recipe, notes, progress);
  FilterOutcome outcome;
  outcome.filter = ReadFilter(options.model);
  outcome.source = InputName(options.model);
  outcome.filtered = ApplyFilter(outcome.filter, table, notes, progress);
  return outcome;
}

}  // namespace

std::string RunCommand(const FilterOptions& options, Notes* notes) {
  CheckFiles(options);
  const CsvTable table = ReadTable(options.table, options.reading);
  NoteDecimalsThatGiveWay(options.csvMarks.Asked(), table, notes);
  TerminalBar bar;
  const FilterOutcome outcome = Compute(table, options, notes, bar.Get());
  OutputFiles files;
  files.Stage(options.out, FilteredText(table, outcome, options.csvMarks.Asked(), notes, bar.Get()));
  if (!options.save.empty()) files.Stage(options.save, ModelFileBytes(outcome.filter));
  files.Commit();
  const FilterFiles written = {options.out, options.save};
  return options.json ? FilterJson(table, outcome, written, *notes) : FilterText(table, outcome, written);
}

}  // namespace kalmia::app

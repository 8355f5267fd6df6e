#include <string>
#include <utility>

#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/InputFile.h"
#include "app/console/OutputFiles.h"
#include "app/console/OutputPlaces.h"
#include "app/console/ReadTable.h"
#include "app/console/Remedies.h"
#include "app/options/Options.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/fit/FilterResult.h"
#include "kalmia/analysis/report/FilterReport.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::app {

namespace {

StoredFilter ReadFilter(const std::string& file) {
  StoredModel model = ReadModelFile(ReadInput(file), InputName(file));
  auto* filter = std::get_if<StoredFilter>(&model);
  if (filter == nullptr) {
    throw BadData(InputName(file) + " holds no filter; kalmia predict takes models of other kinds");
  }
  return std::move(*filter);
}

FilterResult Compute(const Table& table, const FilterOptions& options, NCProgress* progress) {
  if (options.model.empty()) return Fit(options.recipe, table, progress);
  FilterResult result = ApplyFilter(ReadFilter(options.model), table, progress);
  result.source = InputName(options.model);
  return result;
}

}  // namespace

std::string RunCommand(const FilterOptions& options, Notes* notes) {
  CheckPlaces(Given({{"the table", options.table}, {"the model", options.model}}),
              Given({{"--out", options.out}, {"--save", options.save}}));
  const Table table = ReadTable(options.table, options.reading);
  NoteDecimalsThatGiveWay(options.csvMarks.Asked(), table, notes);
  TerminalBar bar;
  const FilterResult result = Compute(table, options, bar.Get());
  notes->Add(WithRemedies(result.notes));
  OutputFiles files;
  files.Stage(options.out, FilteredText(table, result, options.csvMarks.Asked(), notes, bar.Get()));
  if (!options.save.empty()) {
    files.Stage(options.save, ModelFileBytes(result.filter, {!options.noRows, options.keepTable}));
  }
  files.Commit();
  const FilterFiles written = {options.out, options.save};
  return options.json ? FilterJson(table, result, written, *notes) : FilterText(table, result, written);
}

}  // namespace kalmia::app

#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/OutputFiles.h"
#include "app/console/OutputPlaces.h"
#include "app/console/ReadTable.h"
#include "kalmia/analysis/fit/FillResult.h"
#include "kalmia/analysis/report/FillReport.h"
#include "kalmia/analysis/table/Table.h"

namespace kalmia::app {

std::string RunCommand(const FillOptions& options, Notes* notes) {
  CheckPlaces({{"the table", options.table}}, {{"--out", options.out}});
  if (options.report) notes->Add("--report is called --check now");
  const Table table = ReadTable(options.table, options.reading);
  NoteDecimalsThatGiveWay(options.csvMarks.Asked(), table, notes);
  FillRecipe recipe = options.recipe;
  recipe.check = recipe.check || options.report;
  TerminalBar bar;
  const FillResult result = Fit(recipe, table, bar.Get());
  notes->Add(result.notes);
  OutputFiles files;
  files.Stage(options.out, FilledText(table, result, recipe.id, options.csvMarks.Asked(), notes, bar.Get()));
  files.Commit();
  return options.json ? FillJson(table, result, options.out, *notes)
                      : FillText(table, result, options.out, options.csvMarks.Given());
}

}  // namespace kalmia::app

#include "app/Commands.h"
#include "app/ConsoleProgress.h"
#include "app/CsvTable.h"
#include "app/FillOutcome.h"
#include "app/FillReport.h"
#include "app/OutputFiles.h"
#include "app/OutputPlaces.h"
#include "app/ReadTable.h"

namespace kalmia::app {

std::string RunCommand(const FillOptions& options, Notes* notes) {
  CheckPlaces({{"the table", options.table}}, {{"--out", options.out}});
  if (options.report) notes->Add("--report is called --check now");
  const CsvTable table = ReadTable(options.table, options.reading);
  NoteDecimalsThatGiveWay(options.csvMarks.Asked(), table, notes);
  FillRecipe recipe = options.recipe;
  recipe.check = recipe.check || options.report;
  TerminalBar bar;
  const FillOutcome outcome = ComputeFill(table, recipe, notes, bar.Get());
  OutputFiles files;
  files.Stage(options.out, FilledText(table, outcome, recipe.id, options.csvMarks.Asked(), notes, bar.Get()));
  files.Commit();
  return options.json ? FillJson(table, outcome, options.out, *notes) : FillText(table, outcome, options.out, options.csvMarks.Given());
}

}  // namespace kalmia::app

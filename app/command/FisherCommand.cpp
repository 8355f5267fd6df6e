#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/ReadTable.h"
#include "kalmia/analysis/chart/ExactTest.h"
#include "kalmia/analysis/report/ExactTestReport.h"
#include "kalmia/analysis/table/CountTable.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::app {

using namespace analysis;

namespace {

void CheckAlternative(const CountTable& counts, const std::string& alternative) {
  if (counts.IsFourfold() || alternative == ExactTestRecipe().alternative) return;
  throw BadData(counts.name + ": --alternative " + alternative + " goes with a table of 2 x 2, not of " +
                std::to_string(counts.rows) + " x " + std::to_string(counts.columns));
}

}  // namespace

std::string RunCommand(const FisherOptions& options, Notes* notes) {
  const CsvTable table = ReadTable(options.table, options.reading);
  TerminalBar bar;
  const CountTable counts = ReadCounts(table, notes, bar.Get());
  CheckAlternative(counts, options.recipe.alternative);
  if (counts.IsFourfold() && options.recipe.hybrid) notes->Add("--hybrid plays no part in a table of 2 x 2");
  const ExactTest test = ComputeExactTest(counts, options.recipe, bar.Get());
  return options.json ? ExactTestJson(test, *notes) : ExactTestText(test);
}

}  // namespace kalmia::app

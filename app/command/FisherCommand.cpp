#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/ReadTable.h"
#include "kalmia/analysis/chart/ExactTestResult.h"
#include "kalmia/analysis/report/ExactTestReport.h"

namespace kalmia::app {

std::string RunCommand(const FisherOptions& options, Notes* notes) {
  const Table table = ReadTable(options.table, options.reading);
  TerminalBar bar;
  const ExactTestResult result = ComputeExactTest(options.recipe, table, bar.Get());
  notes->Add(result.notes);
  return options.json ? ExactTestJson(result) : ExactTestText(result);
}

}  // namespace kalmia::app

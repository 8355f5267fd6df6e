#include <chrono>

#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/ReadTable.h"
#include "kalmia/analysis/report/DescriptionReport.h"
#include "kalmia/analysis/table/Description.h"

namespace kalmia::app {

namespace {

constexpr std::chrono::milliseconds kShort{400};  ///< a command within this time shows no bar

}  // namespace

std::string RunCommand(const DescribeOptions& options, Notes* notes) {
  TerminalBar bar(kShort);
  const Table table = ReadTable(options.table, options.reading);
  const Description description = Describe(table, bar.Get());
  notes->Add(description.notes);
  return options.json ? DescriptionJson(description) : DescriptionText(description);
}

}  // namespace kalmia::app

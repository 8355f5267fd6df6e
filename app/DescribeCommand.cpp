#include <chrono>

#include "app/Commands.h"
#include "app/ConsoleProgress.h"
#include "app/Description.h"
#include "app/DescriptionReport.h"
#include "app/ReadTable.h"

namespace kalmia::app {

namespace {

constexpr std::chrono::milliseconds kShort{400};  ///< a command within this time shows no bar

}  // namespace

std::string RunCommand(const DescribeOptions& options, Notes* notes) {
  TerminalBar bar(kShort);
  const CsvTable table = ReadTable(options.table, options.reading);
  const Description description = Describe(table, notes, bar.Get());
  return options.json ? DescriptionJson(description, *notes) : DescriptionText(description);
}

}  // namespace kalmia::app

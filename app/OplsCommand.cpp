#include "app/Commands.h"
#include "app/CsvTable.h"
#include "app/FitFiles.h"
#include "app/InputFile.h"
#include "app/ModelFile.h"
#include "app/OplsCsvFiles.h"
#include "app/OplsOutcome.h"
#include "app/OplsReport.h"

namespace kalmia::app {

std::string RunCommand(const OplsOptions& options, Notes* notes) {
  RefuseToOverwriteTable(options, OplsCsvFileNames());
  const CsvTable table(ReadInput(options.table), InputName(options.table));
  const OplsOutcome outcome = ComputeOpls(table, options, notes);
  const FitFiles files = WriteFitFiles(
      options, [&outcome] { return ModelFileBytes(outcome.model); }, [&outcome] { return OplsCsvFiles(outcome); });
  if (!files.csv.empty()) NoteNoDistances(outcome.model, outcome.model.Components(), notes);
  return options.json ? OplsJson(table, outcome, *notes, files) : OplsText(outcome, files);
}

}  // namespace kalmia::app

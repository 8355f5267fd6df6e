#include "app/command/Commands.h"
#include "app/command/RunFit.h"
#include "kalmia/analysis/report/ModelPages.h"
#include "kalmia/analysis/report/PLSReport.h"
#include "kalmia/analysis/validation/Analysis.h"

namespace kalmia::app {

std::string RunCommand(const PLSOptions& options, Notes* notes) {
  return RunAnalysis(options, FitReport<PLSAnalysis>{PLSText, PLSJson, PLSCsvFiles, PLSCsvFileNames, PageOf}, notes);
}

}  // namespace kalmia::app

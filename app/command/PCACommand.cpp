#include "app/command/Commands.h"
#include "app/command/RunFit.h"
#include "kalmia/analysis/report/ModelPages.h"
#include "kalmia/analysis/report/PCAReport.h"
#include "kalmia/analysis/validation/PCAAnalysis.h"

namespace kalmia::app {

std::string RunCommand(const PCAOptions& options, Notes* notes) {
  return RunAnalysis(options, FitReport<PCAAnalysis>{PCAText, PCAJson, PCACsvFiles, PCACsvFileNames, PageOf}, notes);
}

}  // namespace kalmia::app

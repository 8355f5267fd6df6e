#include "app/command/Commands.h"
#include "app/command/RunFit.h"
#include "kalmia/analysis/fit/PCAResult.h"
#include "kalmia/analysis/report/PCAReport.h"

namespace kalmia::app {

std::string RunCommand(const PCAOptions& options, Notes* notes) {
  return RunFit(options, FitReport<PCAResult>{PCAText, PCAJson, PCACsvFiles, PCACsvFileNames}, notes);
}

}  // namespace kalmia::app

#include "app/command/Commands.h"
#include "app/command/RunFit.h"
#include "kalmia/analysis/fit/PLSResult.h"
#include "kalmia/analysis/report/PLSReport.h"

namespace kalmia::app {

std::string RunCommand(const PLSOptions& options, Notes* notes) {
  return RunFit(options, FitReport<PLSResult>{PLSText, PLSJson, PLSCsvFiles, PLSCsvFileNames}, notes);
}

}  // namespace kalmia::app

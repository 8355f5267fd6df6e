#include "app/command/Commands.h"
#include "app/console/InputFile.h"
#include "kalmia/analysis/file/FileHeader.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/file/OPLSCvFile.h"
#include "kalmia/analysis/file/StepChainFile.h"
#include "kalmia/analysis/report/InfoReport.h"

namespace kalmia::app {

namespace {

template <class Kept>
std::string Info(const Kept& kept, const std::string& file, bool json) {
  return json ? InfoJson(kept, file) : InfoText(kept, file);
}

}  // namespace

std::string RunCommand(const InfoOptions& options, Notes* /*notes*/) {
  const std::string file = InputName(options.model);
  const std::string bytes = ReadInput(options.model);
  const FileKind* const kind = KindOfBytes(bytes);
  if (options.digest) return ModelDigest(ReadModelFile(bytes, file)) + "\n";
  if (kind == &kStepsFile) return Info(ReadStepChainFile(bytes, file), file, options.json);
  if (kind == &kOPLSCvFile) return Info(ReadOPLSCvFile(bytes, file), file, options.json);
  return Info(ReadModelFile(bytes, file), file, options.json);
}

}  // namespace kalmia::app

#include "app/console/ReadSteps.h"

#include "app/console/InputFile.h"
#include "kalmia/analysis/file/StepChainFile.h"

namespace kalmia::app {

GivenSteps ReadSteps(const std::string& text, const std::string& path) {
  if (!text.empty()) return {"--steps", ParseSteps(text, "--steps"), {}};
  return ReadStepsFile(ReadInput(path), InputName(path));
}

}  // namespace kalmia::app

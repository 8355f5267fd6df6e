#include "app/StepChainJson.h"

namespace kalmia::app {

Json ChainJson(const StepChain& chain) {
  Json list = Json::array();
  for (const LearntStep& step : chain.steps) {
    Json entry = {{"step", StepText(step.step)}};
    if (step.step.kind == StepKind::Derivative) entry["spacing"] = JsonNumber(step.spacing);
    if (step.step.kind == StepKind::WaveletCompress) entry["positions"] = step.positions;
    list.push_back(entry);
  }
  return list;
}

}  // namespace kalmia::app

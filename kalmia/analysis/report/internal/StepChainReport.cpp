#include "kalmia/analysis/report/internal/StepChainReport.h"

namespace kalmia::analysis {

std::string ChainText(const StepChain& chain, std::size_t first) {
  std::string text;
  for (std::size_t i = first; i < chain.steps.size(); ++i) {
    text += "  " + std::to_string(i + 1) + "  " + LearntText(chain.steps[i]) + "\n";
  }
  return text;
}

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

}  // namespace kalmia::analysis

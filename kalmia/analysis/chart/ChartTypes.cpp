#include "kalmia/analysis/chart/ChartTypes.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "kalmia/containers/Missing.h"
#include "kalmia/statistics/ControlChartFactors.h"

namespace kalmia::analysis {

const std::vector<std::string>& ChartTypeWords() {
  static const std::vector<std::string> words = {"individual", "mean-range", "mean-sd", "cusum", "ewma", "ewma-sd"};
  return words;
}

std::optional<ControlChart::ControlType> ChartTypeOfWord(const std::string& word) {
  const std::vector<std::string>& words = ChartTypeWords();
  const auto found = std::find(words.begin(), words.end(), word);
  if (found == words.end()) return std::nullopt;
  return static_cast<ControlChart::ControlType>(found - words.begin());
}

const std::string& WordOfChartType(ControlChart::ControlType type) {
  return ChartTypeWords()[static_cast<std::size_t>(type)];
}

bool NeedsFactors(ControlChart::ControlType type) {
  return type == ControlChart::MeanRange || type == ControlChart::MeanStdDev;
}

bool HasFactors(int subgroup) { return FindControlChartFactors(subgroup) != nullptr; }

bool IsEwma(ControlChart::ControlType type) {
  return type == ControlChart::EWMA || type == ControlChart::EWMAStdDev;
}

bool TakesRunRules(ControlChart::ControlType type) {
  return type == ControlChart::Individual || type == ControlChart::MeanRange || type == ControlChart::MeanStdDev;
}

const std::vector<std::string>& SigmaFromWords() {
  static const std::vector<std::string> words = {kFromMovingRange, kFromValues};
  return words;
}

const char* DefaultSigmaFrom(ControlChart::ControlType type) {
  return type == ControlChart::Individual || type == ControlChart::EWMA ? kFromMovingRange : kFromValues;
}

double TargetBeside99(double target) {
  return target == kMissing ? std::nextafter(target, std::numeric_limits<double>::lowest()) : target;
}

}  // namespace kalmia::analysis

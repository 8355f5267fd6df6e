#include "kalmia/analysis/validation/JackKnife.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/model/internal/Probabilities.h"
#include "kalmia/analysis/text/WorkProgress.h"

namespace kalmia::analysis {

JackKnife::JackKnife(std::vector<double> numbersOfModel, int groups)
    : numbers_(std::move(numbersOfModel)), squares_(numbers_.size(), 0.0), groups_(groups) {}

void JackKnife::AddRound(const std::vector<double>& numbers) {
  ++rounds_;
  for (std::size_t k = 0; k < numbers_.size(); ++k) {
    const double difference = numbers[k] - numbers_[k];
    squares_[k] += difference * difference;
  }
}

JackKnifeResult JackKnife::Result(double share, double least, NCProgress* progress) const {
  const double repeats = static_cast<double>(rounds_) / groups_;
  const double weight = static_cast<double>(groups_ - 1) / groups_ / repeats;
  std::vector<double> standardErrors;
  for (const double squares : squares_) standardErrors.push_back(std::sqrt(weight * squares));
  return IntervalsOf(numbers_, standardErrors, groups_ - 1, share, least, progress);
}

JackKnifeResult IntervalsOf(const std::vector<double>& numbers, const std::vector<double>& standardErrors, int degrees,
                            double share, double least, NCProgress* progress) {
  WorkProgress work(progress);
  JackKnifeResult result;
  result.degrees = degrees;
  result.standardErrors = standardErrors;
  const double t = QuantileOfAbsoluteStudent(share, degrees);
  const StudentShares shares(degrees);
  for (std::size_t k = 0; k < numbers.size(); ++k) {
    if (k % 1024 == 0) work.Ask();
    const double b = numbers[k], s = standardErrors[k];
    result.lower.push_back(std::max(least, b - t * s));
    result.upper.push_back(b + t * s);
    const bool hasRatio = s > 0.0 && !std::isnan(b / s);
    result.p.push_back(hasRatio ? shares.Beyond(b / s) : kNotANumber);
  }
  return result;
}

}  // namespace kalmia::analysis

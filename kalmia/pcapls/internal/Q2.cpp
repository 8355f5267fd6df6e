#include "kalmia/pcapls/internal/Q2.h"

#include <algorithm>

namespace kalmia {

namespace {

Q2 Judge(double ss, double press, float cumulated) {
  const double ratio = std::min(press / ss, kLargestUnexplainedRatio);
  return {static_cast<float>((ss - press) / ss), static_cast<float>(1.0 - (1.0 - cumulated) * ratio)};
}

}  // namespace

Q2 JudgeVariable(double ss, double press, float cumulated, float ssOriginal) {
  if (ss >= kSmallestVariance) return Judge(ss, press, cumulated);
  return {0.0F, ssOriginal >= kSmallestVariance ? 1.0F : 0.0F};  // -99 is below
}

Q2 Q2OfAllVariables(double ss, double press, float cumulated) {
  if (ss >= kSmallestVariance) return Judge(ss, press, cumulated);
  return {0.0F, 1.0F};
}

}  // namespace kalmia

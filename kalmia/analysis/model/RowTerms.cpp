#include "kalmia/analysis/model/RowTerms.h"

namespace kalmia::analysis {

namespace {

constexpr double kWarning = 0.95;  ///< shares of rows within the two limits
constexpr double kAction = 0.99;

/// The pair that limit(share) gives.
template <class Limit>
LimitPair PairOf(const Limit& limit) {
  return {limit(kWarning), limit(kAction)};
}

LimitPair DistanceLimits(const std::optional<DistanceMoments>& moments) {
  if (!moments || moments->rows == 0) return {};
  return PairOf([&](double share) { return std::optional<double>(DistanceLimit(*moments, share)); });
}

void AddPassed(const char* what, const LimitPair& limits, double number, std::vector<std::string>* passed) {
  if (limits.at95 && number > *limits.at95) passed->push_back(std::string(what) + " 95 %");
  if (limits.at99 && number > *limits.at99) passed->push_back(std::string(what) + " 99 %");
}

}  // namespace

RowLimits LimitsOfTrainingRows(const RowTerms& terms) {
  const auto components = static_cast<int>(terms.scores.means.size());
  return {PairOf([&](double share) { return T2LimitOfTrainingRows(terms.scores.rows, components, share); }),
          DistanceLimits(terms.distances)};
}

RowLimits LimitsOfNewRows(const RowTerms& terms, int components) {
  const auto scores = static_cast<int>(terms.scores.means.size());
  RowLimits limits;
  limits.t2 = PairOf([&](double share) { return T2LimitOfNewRows(terms.scores.rows, scores, share); });
  limits.distance = DistanceLimits(terms.leftOut);
  if (terms.leftOut || !terms.distances) return limits;
  limits.distance = PairOf([&](double share) {
    return DistanceLimitWithoutRefits(DistanceLimit(*terms.distances, share), terms.scores.rows, components);
  });
  return limits;
}

std::vector<std::string> LimitsPassed(const RowLimits& limits, double t2, double distance) {
  std::vector<std::string> passed;
  AddPassed("T2", limits.t2, t2, &passed);
  AddPassed("distance", limits.distance, distance, &passed);
  return passed;
}

double T2OfRow(const ScoreMoments& moments, const std::vector<double>& scores) {
  if (moments.means.empty() || scores.size() != moments.means.size()) return kNotANumber;
  return T2OfScores(moments, scores.data());
}

}  // namespace kalmia::analysis

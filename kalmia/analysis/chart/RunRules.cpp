#include "kalmia/analysis/chart/RunRules.h"

#include <algorithm>
#include <cmath>

namespace kalmia::analysis {

namespace {

using Pattern = RunRule::Pattern;

constexpr auto kOnePoint = "1 point beyond a limit";
constexpr auto kTwoOfThree = "2 of 3 points beyond 2 sigma on one side";
constexpr auto kFourOfFive = "4 of 5 points beyond 1 sigma on one side";

/// The points from `first` to `last`, none of them missing: what has come since the last hole.
struct Stretch {
  const std::vector<double>& values;
  std::size_t first;
  std::size_t last;

  std::size_t Size() const { return last + 1 - first; }
  bool Has(int window) const { return Size() >= static_cast<std::size_t>(window); }
  /// The point so many before the last one.
  double Back(int points) const { return values[last - static_cast<std::size_t>(points)]; }
};

int SideOf(double value, const RunZones& zones, int sigmas) {
  if (value > zones.Line(sigmas)) return 1;
  return value < zones.Line(-sigmas) ? -1 : 0;
}

/// The side on which the last point completes the pattern; 0: it does not.
int BeyondSide(const RunRule& rule, const Stretch& stretch, const RunZones& zones) {
  const int side = SideOf(stretch.Back(0), zones, rule.sigmas);
  if (side == 0) return 0;
  int count = 0;
  for (int back = 0; back < rule.window && stretch.Has(back + 1); ++back) {
    count += SideOf(stretch.Back(back), zones, rule.sigmas) == side ? 1 : 0;
  }
  return count >= rule.points ? side : 0;
}

/// 1 for a step upwards to the point so many before the last one, -1 downwards, 0 for none.
int Step(const Stretch& stretch, int back) {
  const double from = stretch.Back(back + 1), to = stretch.Back(back);
  return to > from ? 1 : to < from ? -1 : 0;
}

/// The direction of the last step where all steps of the window are alike, or (`turns`) take turns; otherwise 0.
int StepsSide(const RunRule& rule, const Stretch& stretch, bool turns) {
  if (!stretch.Has(rule.window)) return 0;
  const int last = Step(stretch, 0);
  for (int back = 1; back + 1 < rule.window; ++back) {
    const bool isTurned = turns && back % 2 == 1;
    if (Step(stretch, back) != (isTurned ? -last : last)) return 0;
  }
  return last;
}

bool IsWithin(const RunRule& rule, const Stretch& stretch, const RunZones& zones) {
  if (!stretch.Has(rule.window)) return false;
  for (int back = 0; back < rule.window; ++back) {
    const double value = stretch.Back(back);
    if (!(value < zones.Line(rule.sigmas) && value > zones.Line(-rule.sigmas))) return false;
  }
  return true;
}

bool IsOutside(const RunRule& rule, const Stretch& stretch, const RunZones& zones) {
  if (!stretch.Has(rule.window)) return false;
  int above = 0;
  for (int back = 0; back < rule.window; ++back) {
    const int side = SideOf(stretch.Back(back), zones, rule.sigmas);
    if (side == 0) return false;
    above += side > 0 ? 1 : 0;
  }
  return above > 0 && above < rule.window;
}

/// Whether the last point completes the pattern, and on which side.
bool Completes(const RunRule& rule, const Stretch& stretch, const RunZones& zones, int* side) {
  *side = 0;
  switch (rule.pattern) {
    case Pattern::Beyond: return (*side = BeyondSide(rule, stretch, zones)) != 0;
    case Pattern::Trend: return (*side = StepsSide(rule, stretch, /*turns=*/false)) != 0;
    case Pattern::Alternation: return StepsSide(rule, stretch, /*turns=*/true) != 0;
    case Pattern::Within: return IsWithin(rule, stretch, zones);
    case Pattern::Outside: break;
  }
  return IsOutside(rule, stretch, zones);
}

}  // namespace

double RunZones::Line(int sigmas) const {
  if (sigmas == 3) return upper;
  if (sigmas == -3) return lower;
  return centre + sigmas * (upper - centre) / 3.0;
}

const std::vector<std::string>& RunRuleWords() {
  static const std::vector<std::string> words = {"western-electric", "nelson"};
  return words;
}

const std::vector<RunRule>& RunRulesOfWord(const std::string& word) {
  static const std::vector<RunRule> limits = {{1, Pattern::Beyond, 1, 1, 3, kOnePoint}};
  static const std::vector<RunRule> westernElectric = {
      {1, Pattern::Beyond, 1, 1, 3, kOnePoint},
      {2, Pattern::Beyond, 2, 3, 2, kTwoOfThree},
      {3, Pattern::Beyond, 4, 5, 1, kFourOfFive},
      {4, Pattern::Beyond, 8, 8, 0, "8 points in a row on one side of the centre line"}};
  static const std::vector<RunRule> nelson = {
      {1, Pattern::Beyond, 1, 1, 3, kOnePoint},
      {2, Pattern::Beyond, 9, 9, 0, "9 points in a row on one side of the centre line"},
      {3, Pattern::Trend, 6, 6, 0, "6 points in a row rising or falling"},
      {4, Pattern::Alternation, 14, 14, 0, "14 points in a row alternating up and down"},
      {5, Pattern::Beyond, 2, 3, 2, kTwoOfThree},
      {6, Pattern::Beyond, 4, 5, 1, kFourOfFive},
      {7, Pattern::Within, 15, 15, 1, "15 points in a row within 1 sigma"},
      {8, Pattern::Outside, 8, 8, 1, "8 points in a row beyond 1 sigma, on both sides"}};
  if (word == "western-electric") return westernElectric;
  return word == "nelson" ? nelson : limits;
}

std::vector<RunSignal> FindRuns(const std::vector<double>& values, const RunZones& zones,
                                const std::vector<RunRule>& rules) {
  std::vector<RunSignal> signals;
  std::size_t first = 0;
  for (std::size_t point = 0; point < values.size(); ++point) {
    if (std::isnan(values[point])) {
      first = point + 1;
      continue;
    }
    const Stretch stretch = {values, first, point};
    for (const RunRule& rule : rules) {
      int side = 0;
      if (Completes(rule, stretch, zones, &side)) signals.push_back({point, &rule, side});
    }
  }
  return signals;
}

}  // namespace kalmia::analysis

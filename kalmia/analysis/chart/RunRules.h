#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The centre line of a chart and its limits, three standard deviations (sigma) away.
struct KALMIA_EXPORT RunZones {
  double centre;
  double lower;
  double upper;

  /// So many sigma from the centre line, upwards or (negative) downwards; exact on the limits.
  double Line(int sigmas) const;
};

/// A pattern of points that is improbable while a process is under control.
struct RunRule {
  enum class Pattern {
    Beyond,       ///< `points` of `window` points beyond `sigmas` on the same side, the last one among them
    Trend,        ///< `window` points, each above the one before, or each below it
    Alternation,  ///< `window` points, up and down in turn
    Within,       ///< `window` points nearer to the centre line than `sigmas`
    Outside       ///< `window` points farther from it than `sigmas`, on both sides
  };
  int number;  ///< as published
  Pattern pattern;
  int points, window, sigmas;
  const char* meaning;
};

/// A point that completes a pattern.
struct RunSignal {
  std::size_t point;  ///< from 0
  const RunRule* rule;
  int side;  ///< 1 above or rising, -1 below or falling, 0 neither
};

/// The words for sets of rules: western-electric, nelson.
KALMIA_EXPORT const std::vector<std::string>& RunRuleWords();

/// The rules of that set; for an empty word the limits alone. In their order.
/// Sources: Western Electric (1956), Statistical Quality Control Handbook, pages 25-28; Nelson (1984), J. Qual.
/// Technol. 16, 237-239.
KALMIA_EXPORT const std::vector<RunRule>& RunRulesOfWord(const std::string& word);

/// All points at which a pattern of `rules` is complete, point after point; the rules of one point in their order. All
/// comparisons are strict: a point on a line is on neither side of it. A missing point (NaN) ends every pattern; where
/// fewer points than `window` have come, those count that are there.
/// Cost: values x rules x window.
KALMIA_EXPORT std::vector<RunSignal> FindRuns(const std::vector<double>& values, const RunZones& zones,
                                const std::vector<RunRule>& rules);

}  // namespace kalmia::analysis

#include "kalmia/analysis/chart/internal/FourfoldTest.h"

#include <algorithm>
#include <cmath>

namespace kalmia::analysis {

namespace {

constexpr double kTie = 1 + 1e-7;          ///< tables whose probabilities differ by less are equally probable
constexpr double kSmallestWeight =
    1e-280;                                ///< of the most probable table's, beyond which there is no more digit to win
constexpr double kNegligible = 1e-20;      ///< of what has been summed

/// A table of given sums by its first cell, and its probability as a multiple of the most probable one's.
struct Fourfold {
  double a, b, c, d;
  double weight = 1.0;

  bool Grow() {
    if (b == 0 || c == 0) return false;
    weight *= b * c / ((a + 1) * (d + 1));
    ++a, --b, --c, ++d;
    return true;
  }
  bool Shrink() {
    if (a == 0 || d == 0) return false;
    weight *= a * d / ((b + 1) * (c + 1));
    --a, ++b, ++c, --d;
    return true;
  }
  bool Step(bool up) { return up ? Grow() : Shrink(); }
};

Fourfold MostProbable(double a, double b, double c, double d) {
  const double r = a + b, s = a + c, n = a + b + c + d;
  const double lowest = std::max(0.0, r + s - n), highest = std::min(r, s);
  const double mode = std::clamp(std::floor((r + 1) * (s + 1) / (n + 2)), lowest, highest);
  return {mode, r - mode, s - mode, n - r - s + mode};
}

/// Of the table with this first cell; 0 where it is below kSmallestWeight.
double WeightOf(Fourfold table, double a) {
  const bool up = a > table.a;
  while (table.a != a && table.weight >= kSmallestWeight) table.Step(up);
  return table.a == a ? table.weight : 0.0;
}

}  // namespace

double FourfoldProbability(int a, int b, int c, int d, Sta::SidedNess side) {
  const Fourfold mode = MostProbable(a, b, c, d);
  const double observed = WeightOf(mode, a);
  if (observed < kSmallestWeight) return 0.0;
  double all = 0, counted = 0;
  const auto add = [&](const Fourfold& table) {
    all += table.weight;
    const bool counts = side == Sta::LeftSided    ? table.a <= a
                        : side == Sta::RightSided ? table.a >= a
                                                  : table.weight <= observed * kTie;
    if (counts) counted += table.weight;
  };
  add(mode);
  for (const bool up : {false, true}) {
    Fourfold table = mode;
    // Beyond the observed table weights that are nothing beside its own add nothing to either sum.
    while (table.Step(up) && table.weight > kNegligible * observed) add(table);
  }
  return counted / all;
}

}  // namespace kalmia::analysis

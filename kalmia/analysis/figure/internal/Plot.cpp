#include "kalmia/analysis/figure/internal/Plot.h"

#include <algorithm>
#include <cmath>

#include "kalmia/analysis/chart/internal/BinEdge.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

constexpr double kFlat = 1e-9;  ///< of the size of the values: a shorter range cannot be told apart on paper
constexpr double kPlainLabel = 1e7;
constexpr int kMostDecimals = 6;
constexpr int kMostDigits = 9;  ///< of a number too large or too small for decimals

/// A step of 1, 2 or 5 times a power of ten.
struct RoundStep {
  int digit;
  int exponent;

  /// multiple * step, as exact as a double can be.
  double Times(double multiple) const { return TimesPowerOfTen(multiple * digit, exponent); }
};

RoundStep StepOf(double smallest) {
  RoundStep step = {1, static_cast<int>(std::floor(std::log10(smallest)))};
  for (const int digit : {1, 2, 5}) {
    step.digit = digit;
    if (step.Times(1) >= smallest) return step;
  }
  return {1, step.exponent + 1};
}

/// For a number too large or too small for decimals.
std::string ShortLabel(double value) { return Shortest(Rounded(value, kMostDigits)); }

std::string Label(double value, const RoundStep& step) {
  const int decimals = std::max(0, -step.exponent);
  const bool isPlain = decimals <= kMostDecimals && std::fabs(value) < kPlainLabel;
  return isPlain ? Fixed(value, decimals) : ShortLabel(value);
}

/// Whether the number has digits behind so many decimals.
bool IsRough(double number, int decimals) {
  const double scaled = number * std::pow(10.0, decimals);
  return std::fabs(scaled - std::round(scaled)) > kFlat * std::fabs(scaled);
}

}  // namespace

std::vector<Tick> RoundTicks(double low, double high, int count, bool whole) {
  const double smallest = high / count - low / count;
  const RoundStep step = StepOf(whole ? std::max(smallest, 1.0) : smallest);
  const double size = step.Times(1);
  std::vector<Tick> ticks;
  for (double multiple = std::ceil(low / size); ticks.size() < 2 * static_cast<std::size_t>(count); ++multiple) {
    const double value = step.Times(multiple);
    if (value > high) break;
    if (value >= low) ticks.push_back({value, Label(value, step)});
  }
  return ticks;
}

std::vector<Tick> EdgeTicks(double low, double width, int bins, double pixels) {
  const double first = BinEdge(low, width, 0), last = BinEdge(low, width, bins);
  int decimals = 0;  // as many as the width and the first edge have
  const auto isRough = [&] { return IsRough(width, decimals) || IsRough(first, decimals); };
  while (decimals < kMostDecimals && isRough()) ++decimals;
  const bool isPlain = !isRough() && std::max(std::fabs(first), std::fabs(last)) < kPlainLabel;
  const auto label = [&](int edge) {
    const double value = BinEdge(low, width, edge);
    return isPlain ? Fixed(value, decimals) : ShortLabel(value);
  };
  double widest = 0.0;
  for (int edge = 0; edge <= bins; ++edge) widest = std::max(widest, Svg::WidthOf(label(edge) + "00", Svg::Font::Tick));
  const double room = std::max(1.0, pixels / widest);
  const double every = StepOf(std::max(1.0, bins / room)).Times(1);
  std::vector<Tick> ticks;
  for (double at = 0; at <= bins; at += every) {
    const int edge = static_cast<int>(at);
    ticks.push_back({BinEdge(low, width, edge), label(edge)});
  }
  return ticks;
}

void ValueRange::Include(double value) {
  if (!std::isfinite(value)) return;
  low = std::min(low, value);
  high = std::max(high, value);
}

void ValueRange::Widen(double share) {
  const double size = std::max(std::fabs(low), std::fabs(high));
  const bool isFlat = high / 2 - low / 2 <= kFlat * size;
  const double margin = !isFlat ? share * (high - low) : size > 0 ? share * size : 1.0;
  low -= margin;
  high += margin;
}

}  // namespace kalmia::analysis

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
constexpr double kPixelsPerXTick = 80;
constexpr double kPixelsPerYTick = 35;
constexpr double kBeyondPanel = 50;  ///< of a text beside it: panels are farther apart

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

void Plot::DrawAxes(const std::string& xName, const std::string& yName, bool wholeX, bool wholeY) const {
  const int count = std::max(2, static_cast<int>(place_.width / kPixelsPerXTick));
  DrawAxes(xName, yName, RoundTicks(x_.low, x_.high, count, wholeX), wholeY);
}

void Plot::DrawAxes(const std::string& xName, const std::string& yName, const std::vector<Tick>& xTicks,
                    bool wholeY) const {
  const int yCount = std::max(2, static_cast<int>(place_.height / kPixelsPerYTick));
  for (const Tick& tick : xTicks) {
    svg_->Line(X(tick.value), place_.top, X(tick.value), Bottom() + 4, Svg::Look::Grid);
    svg_->Text(X(tick.value), Bottom() + 17, tick.label, Svg::Font::Tick, Svg::Anchor::Middle);
  }
  for (const Tick& tick : RoundTicks(y_.low, y_.high, yCount, wholeY)) {
    svg_->Line(place_.left - 4, Y(tick.value), Right(), Y(tick.value), Svg::Look::Grid);
    svg_->Text(place_.left - 8, Y(tick.value) + 4, tick.label, Svg::Font::Tick, Svg::Anchor::End);
  }
  svg_->Rectangle(place_.left, place_.top, place_.width, place_.height, Svg::Look::Frame);
  svg_->Text(place_.left + place_.width / 2, Bottom() + 35, Svg::Fitting(xName, place_.width, Svg::Font::Axis),
             Svg::Font::Axis, Svg::Anchor::Middle);
  svg_->UprightText(place_.left - 62, place_.top + place_.height / 2,
                    Svg::Fitting(yName, place_.height + kBeyondPanel, Svg::Font::Axis), Svg::Font::Axis);
}

void Plot::DrawLevel(double value, const std::string& name, Svg::Look look, double shift) const {
  svg_->Line(place_.left, Y(value), Right(), Y(value), look);
  const RoundStep hundredth = StepOf((y_.high / 2 - y_.low / 2) / 50);
  svg_->Text(Right() + 6, Y(value) + 4 + shift, name + " " + Label(value, hundredth), Svg::Font::Label,
             Svg::Anchor::Start);
}

}  // namespace kalmia::analysis

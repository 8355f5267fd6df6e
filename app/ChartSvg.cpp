#include <algorithm>
#include <cmath>

#include "app/ChartResult.h"
#include "app/Plot.h"

namespace kalmia::app {

namespace {

constexpr double kWidth = 820, kLeft = 80, kPlotWidth = 600;
constexpr double kTop = 46, kPlotHeight = 220, kPanelHeight = 290;
constexpr double kMargin = 0.06;              ///< of the range of values, above and below
constexpr std::size_t kStretches = 600;       ///< one a pixel
constexpr std::size_t kMostDots = 150;        ///< beyond, dots would run into each other
constexpr double kLabelHeight = 13;
constexpr double kDot = 2.6, kSignalDot = 4.4;

/// The points to draw: all, or the lowest and the highest of each stretch, in order.
std::vector<std::size_t> PointsToDraw(const std::vector<double>& values) {
  std::vector<std::size_t> drawn;
  const std::size_t size = values.size();
  const std::size_t length = size > 2 * kStretches ? (size + kStretches - 1) / kStretches : 1;
  for (std::size_t begin = 0; begin < size; begin += length) {
    const std::size_t end = std::min(begin + length, size);
    std::size_t lowest = end, highest = end;
    for (std::size_t i = begin; i < end; ++i) {
      if (std::isnan(values[i])) continue;
      if (lowest == end || values[i] < values[lowest]) lowest = i;
      if (highest == end || values[i] > values[highest]) highest = i;
    }
    if (lowest == end) {
      drawn.push_back(begin);  // a hole stays one
    } else {
      drawn.push_back(std::min(lowest, highest));
      if (lowest != highest) drawn.push_back(std::max(lowest, highest));
    }
  }
  return drawn;
}

double Abscissa(std::size_t point) { return static_cast<double>(point) + 1.0; }

ValueRange RangeOf(const ChartPanel& panel) {
  ValueRange range = {panel.centre, panel.centre};
  for (const double level : {panel.lower, panel.upper}) range.Include(level);
  for (const ChartSeries& series : panel.judged) {
    for (const double value : series.values) range.Include(value);
  }
  for (const double value : panel.background.values) range.Include(value);
  range.Widen(kMargin);
  return range;
}

/// A line from point to point, broken at holes.
void DrawLine(const ChartSeries& series, const std::vector<std::size_t>& drawn, const Plot& plot, Svg* svg) {
  Svg::Points line;
  for (const std::size_t point : drawn) {
    if (std::isnan(series.values[point])) {
      svg->Polyline(line, Svg::Look::Data);
      line.clear();
    } else {
      line.emplace_back(plot.X(Abscissa(point)), plot.Y(series.values[point]));
    }
  }
  svg->Polyline(line, Svg::Look::Data);
}

void DrawDots(const ChartSeries& series, const std::vector<std::size_t>& drawn, Svg::Look look, const Plot& plot,
              Svg* svg) {
  for (const std::size_t point : drawn) {
    if (std::isnan(series.values[point])) continue;
    svg->Circle(plot.X(Abscissa(point)), plot.Y(series.values[point]), kDot, look);
  }
}

void DrawSignals(const ChartPanel& panel, const ChartSeries& series, const std::vector<std::size_t>& drawn,
                 const Plot& plot, Svg* svg) {
  for (const std::size_t point : drawn) {
    const double value = series.values[point];
    if (!(value > panel.upper || value < panel.lower)) continue;
    svg->Circle(plot.X(Abscissa(point)), plot.Y(value), kSignalDot, Svg::Look::Signal);
  }
}

/// The centre and the limits; their names are pushed apart where they would run into each other.
void DrawLevels(const ChartPanel& panel, const Plot& plot) {
  plot.DrawLevel(panel.centre, "centre", Svg::Look::Centre, 0);
  if (std::isnan(panel.upper)) return;
  const double upperGap = plot.Y(panel.centre) - plot.Y(panel.upper);
  const double lowerGap = plot.Y(panel.lower) - plot.Y(panel.centre);
  plot.DrawLevel(panel.upper, "upper", Svg::Look::Limit, std::min(0.0, upperGap - kLabelHeight));
  plot.DrawLevel(panel.lower, "lower", Svg::Look::Limit, std::max(0.0, kLabelHeight - lowerGap));
}

void DrawPanel(const ChartPanel& panel, double top, const ChartResult& result, Svg* svg) {
  ValueRange x = {1.0, static_cast<double>(result.Points())};
  x.low -= 0.5;
  x.high += 0.5;
  const Plot plot(svg, {kLeft, top, kPlotWidth, kPlotHeight}, x, RangeOf(panel));
  plot.DrawAxes(result.IsSingle() ? "row" : "subgroup of " + std::to_string(result.subgroup), panel.name,
                /*wholeX=*/true, /*wholeY=*/false);
  DrawLevels(panel, plot);
  if (!panel.background.values.empty()) {
    DrawDots(panel.background, PointsToDraw(panel.background.values), Svg::Look::Faint, plot, svg);
  }
  for (const ChartSeries& series : panel.judged) {
    const std::vector<std::size_t> drawn = PointsToDraw(series.values);
    DrawLine(series, drawn, plot, svg);
    if (result.Points() <= kMostDots) DrawDots(series, drawn, Svg::Look::Point, plot, svg);
    DrawSignals(panel, series, drawn, plot, svg);
  }
}

}  // namespace

std::string ChartSvg(const ChartResult& result) {
  Svg svg(kWidth, kTop + static_cast<double>(result.panels.size()) * kPanelHeight - 22, result.Title());
  svg.Text(kLeft, 26, result.Title(), Svg::Font::Title, Svg::Anchor::Start);
  double top = kTop;
  for (const ChartPanel& panel : result.panels) {
    DrawPanel(panel, top, result, &svg);
    top += kPanelHeight;
  }
  return svg.File();
}

}  // namespace kalmia::app

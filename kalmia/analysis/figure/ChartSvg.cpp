#include "kalmia/analysis/figure/ChartSvg.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "kalmia/analysis/figure/internal/Plot.h"
#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

namespace {

constexpr double kWidth = 820, kLeft = 80, kPlotWidth = 600;
constexpr double kTop = 46, kPlotHeight = 220, kPanelHeight = 290;
constexpr double kMargin = 0.06;              ///< of the range of values, above and below
constexpr std::size_t kStretches = 600;       ///< one a pixel
constexpr std::size_t kMostDots = 150;        ///< beyond, dots would run into each other
constexpr double kLabelHeight = 13;
constexpr double kDot = 2.6, kSignalDot = 4.4, kRunRing = 6.5;
constexpr double kBottom = 22;        ///< of the last panel's height: nothing stands there
constexpr double kRuleHeight = 16;    ///< a line of the list of broken rules
constexpr double kLegendLine = 26, kLegendGap = 18;

/// Points that share a place: 1 where all of them are drawn.
std::size_t StretchLength(std::size_t points) {
  return points > 2 * kStretches ? (points + kStretches - 1) / kStretches : 1;
}

/// The points to draw: all, or the lowest and the highest of each stretch, in order.
std::vector<std::size_t> PointsToDraw(const std::vector<double>& values) {
  std::vector<std::size_t> drawn;
  const std::size_t size = values.size(), length = StretchLength(size);
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
  ValueRange range = {panel.zones.centre, panel.zones.centre};
  for (const double level : {panel.zones.lower, panel.zones.upper}) range.Include(level);
  for (const ChartSeries& series : panel.judged) {
    for (const double value : series.values) range.Include(value);
  }
  for (const double value : panel.background.values) range.Include(value);
  range.Widen(kMargin);
  return range;
}

/// How a series looks. A second one in the same panel has dashes and squares of another colour.
struct SeriesLook {
  Svg::Look line;
  Svg::Look point;
};
constexpr SeriesLook kFirst = {Svg::Look::Data, Svg::Look::Point};
constexpr SeriesLook kSecond = {Svg::Look::SecondData, Svg::Look::SecondPoint};

const SeriesLook& LookOf(std::size_t series) { return series == 0 ? kFirst : kSecond; }

/// A line from point to point, broken at holes.
void DrawLine(const ChartSeries& series, const std::vector<std::size_t>& drawn, Svg::Look look, const Plot& plot,
              Svg* svg) {
  Svg::Points line;
  for (const std::size_t point : drawn) {
    if (std::isnan(series.values[point])) {
      svg->Polyline(line, look);
      line.clear();
    } else {
      line.emplace_back(plot.X(Abscissa(point)), plot.Y(series.values[point]));
    }
  }
  svg->Polyline(line, look);
}

void DrawPoint(double x, double y, Svg::Look look, Svg* svg) {
  if (look == Svg::Look::SecondPoint) {
    svg->Rectangle(x - kDot, y - kDot, 2 * kDot, 2 * kDot, look);
  } else {
    svg->Circle(x, y, kDot, look);
  }
}

void DrawPoints(const ChartSeries& series, const std::vector<std::size_t>& drawn, Svg::Look look, const Plot& plot,
                Svg* svg) {
  for (const std::size_t point : drawn) {
    if (std::isnan(series.values[point])) continue;
    DrawPoint(plot.X(Abscissa(point)), plot.Y(series.values[point]), look, svg);
  }
}

/// The points beyond a limit.
void DrawSignals(const ChartPanel& panel, const ChartSeries& series, const std::vector<std::size_t>& drawn,
                 const Plot& plot, Svg* svg) {
  for (const std::size_t point : drawn) {
    const double value = series.values[point];
    if (!(value > panel.zones.upper || value < panel.zones.lower)) continue;
    svg->Circle(plot.X(Abscissa(point)), plot.Y(value), kSignalDot, Svg::Look::Signal);
  }
}

/// The numbers of the rules that the points of a panel break, that of the limits apart.
std::map<std::size_t, std::set<int>> RunsOf(const ChartPanel& panel, const ChartResult& result) {
  std::map<std::size_t, std::set<int>> runs;
  if (!panel.takesRuns) return runs;
  for (const ChartSignal& signal : result.signals) {
    const bool isOfPanel = signal.series == panel.judged.front().name;
    if (isOfPanel && signal.rule.number != 1) runs[signal.point].insert(signal.rule.number);
  }
  return runs;
}

std::string NumbersText(const std::set<int>& numbers) {
  std::string text;
  for (const int number : numbers) text += (text.empty() ? "" : ",") + std::to_string(number);
  return text;
}

/// A ring around each point that breaks a rule, with the numbers of the rules at the first one of those that follow
/// each other with the same numbers. Where many points share a place it has one ring for each set of numbers.
void DrawRuns(const ChartPanel& panel, const ChartResult& result, const Plot& plot, Svg* svg) {
  const std::vector<double>& values = panel.judged.front().values;
  const std::size_t length = StretchLength(values.size());
  std::set<int> before;
  std::size_t next = 0;  // the point that continues the last ring
  for (const auto& [point, numbers] : RunsOf(panel, result)) {
    const bool goesOn = numbers == before && point == next, isShared = goesOn && point % length != 0;
    before = numbers;
    next = point + 1;
    if (isShared) continue;
    const double x = plot.X(Abscissa(point)), y = plot.Y(values[point]);
    svg->Circle(x, y, kRunRing, Svg::Look::Run);
    if (goesOn) continue;
    const bool isHigh = values[point] > panel.zones.centre;  // away from the line of the points
    svg->Text(x, isHigh ? y - kRunRing - 3 : y + kRunRing + 10, NumbersText(numbers), Svg::Font::Mark,
              Svg::Anchor::Middle);
  }
}

/// The centre and the limits; their names are pushed apart where they would run into each other.
void DrawLevels(const ChartPanel& panel, const Plot& plot) {
  const RunZones& zones = panel.zones;
  plot.DrawLevel(zones.centre, "centre", Svg::Look::Centre, 0);
  if (!panel.HasLimits()) return;
  const double upperGap = plot.Y(zones.centre) - plot.Y(zones.upper);
  const double lowerGap = plot.Y(zones.lower) - plot.Y(zones.centre);
  plot.DrawLevel(zones.upper, "upper", Svg::Look::Limit, std::min(0.0, upperGap - kLabelHeight));
  plot.DrawLevel(zones.lower, "lower", Svg::Look::Limit, std::max(0.0, kLabelHeight - lowerGap));
}

/// What the lines and points of a panel with more than one series are, above its right end; the lines with points where
/// they are drawn so.
void DrawLegend(const ChartPanel& panel, const Plot& plot, double top, bool hasPoints, Svg* svg) {
  const bool hasBackground = !panel.background.values.empty();
  if (panel.judged.size() < 2 && !hasBackground) return;
  double x = plot.Right();
  const double y = top - 8;
  const auto name = [&](const std::string& text) {
    x -= Svg::WidthOf(text, Svg::Font::Label);
    svg->Text(x, y, text, Svg::Font::Label, Svg::Anchor::Start);
    x -= kLegendLine;
  };
  if (hasBackground) {
    name(panel.background.name);
    DrawPoint(x + kLegendLine / 2, y - 4, Svg::Look::Faint, svg);
    x -= kLegendGap;
  }
  for (std::size_t i = panel.judged.size(); i-- > 0;) {
    name(panel.judged[i].name);
    svg->Line(x, y - 4, x + kLegendLine - 4, y - 4, LookOf(i).line);
    if (hasPoints) DrawPoint(x + kLegendLine / 2 - 2, y - 4, LookOf(i).point, svg);
    x -= kLegendGap;
  }
}

/// "mean of diameter"; of single values what was measured, without a word more.
std::string QuantityOf(const ChartPanel& panel, const ChartResult& result, const PlotTexts& texts) {
  const std::string measured = texts.yLabel.empty() ? OneLine(result.column) : texts.yLabel;
  return panel.name == "value" ? measured : panel.name + " of " + measured;
}

std::string XLabelOf(const ChartResult& result, const PlotTexts& texts) {
  if (!texts.xLabel.empty()) return texts.xLabel;
  return result.IsSingle() ? "row" : "subgroup of " + std::to_string(result.subgroup) + " rows";
}

void DrawPanel(const ChartPanel& panel, double top, const ChartResult& result, const PlotTexts& texts, Svg* svg) {
  ValueRange x = {1.0, static_cast<double>(result.Points())};
  x.low -= 0.5;
  x.high += 0.5;
  const Plot plot(svg, {kLeft, top, kPlotWidth, kPlotHeight}, x, RangeOf(panel));
  plot.DrawAxes(XLabelOf(result, texts), QuantityOf(panel, result, texts), /*wholeX=*/true, /*wholeY=*/false);
  DrawLevels(panel, plot);
  const bool hasPoints = result.Points() <= kMostDots;
  DrawLegend(panel, plot, top, hasPoints, svg);
  if (!panel.background.values.empty()) {
    DrawPoints(panel.background, PointsToDraw(panel.background.values), Svg::Look::Faint, plot, svg);
  }
  for (std::size_t i = 0; i < panel.judged.size(); ++i) {
    const ChartSeries& series = panel.judged[i];
    const std::vector<std::size_t> drawn = PointsToDraw(series.values);
    DrawLine(series, drawn, LookOf(i).line, plot, svg);
    if (hasPoints) DrawPoints(series, drawn, LookOf(i).point, plot, svg);
    DrawSignals(panel, series, drawn, plot, svg);
  }
  DrawRuns(panel, result, plot, svg);
}

/// The rules that numbers in the drawing stand for, by number.
std::map<int, std::string> BrokenRunRules(const ChartResult& result) {
  std::map<int, std::string> rules;
  for (const ChartSignal& signal : result.signals) {
    if (signal.rule.number != 1) rules[signal.rule.number] = result.RuleName(signal) + ": " + signal.rule.meaning;
  }
  return rules;
}

}  // namespace

std::string ChartSvg(const ChartResult& result, const PlotTexts& texts) {
  const std::map<int, std::string> rules = BrokenRunRules(result);
  const double panels = static_cast<double>(result.panels.size()) * kPanelHeight;
  const double list = rules.empty() ? 0.0 : (static_cast<double>(rules.size()) + 0.5) * kRuleHeight;
  const std::string title = texts.title.empty() ? result.Title() : texts.title;
  Svg svg(kWidth, kTop + panels - kBottom + list, title);
  svg.AddChartStyle();
  svg.Text(kLeft, 26, Svg::Fitting(title, kWidth - kLeft - 10, Svg::Font::Title), Svg::Font::Title,
           Svg::Anchor::Start);
  double top = kTop;
  for (const ChartPanel& panel : result.panels) {
    DrawPanel(panel, top, result, texts, &svg);
    top += kPanelHeight;
  }
  for (const auto& [number, rule] : rules) {
    svg.Text(kLeft, top - kBottom + kRuleHeight / 2, rule, Svg::Font::Label, Svg::Anchor::Start);
    top += kRuleHeight;
  }
  return svg.File();
}

}  // namespace kalmia::analysis

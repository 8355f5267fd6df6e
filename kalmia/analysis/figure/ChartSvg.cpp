#include "kalmia/analysis/figure/ChartSvg.h"

#include <cmath>
#include <map>
#include <set>

#include "kalmia/analysis/figure/internal/FigureParts.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kStretches = 600;  ///< one a pixel
constexpr std::size_t kMostDots = 150;   ///< beyond, dots would run into each other
constexpr int kDigits = 5;

/// Points that share a place: 1 where all of them are told apart.
std::size_t StretchLength(std::size_t points) {
  return points > 2 * kStretches ? (points + kStretches - 1) / kStretches : 1;
}

double Abscissa(std::size_t point) { return static_cast<double>(point) + 1.0; }

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
FigureMark Rings(const ChartPanel& panel, const ChartResult& result) {
  FigureMark rings = MarkOf(FigureMark::Type::Points, FigureLook::Ring, {}, {});
  const std::vector<double>& values = panel.judged.front().values;
  const std::size_t length = StretchLength(values.size());
  std::vector<std::string> names;
  std::set<int> before;
  std::size_t next = 0;  // the point that continues the last ring
  for (const auto& [point, numbers] : RunsOf(panel, result)) {
    const bool goesOn = numbers == before && point == next, isShared = goesOn && point % length != 0;
    before = numbers;
    next = point + 1;
    if (isShared) continue;
    rings.x.push_back(Abscissa(point));
    rings.y.push_back(values[point]);
    names.push_back(goesOn ? "" : NumbersText(numbers));
  }
  rings.names = ListOf("", names);
  rings.labels = true;
  return rings;
}

std::string LevelName(const std::string& name, double level) { return name + " " + Shortest(Rounded(level, kDigits)); }

/// "mean of diameter"; of single values what was measured, without a word more.
std::string QuantityOf(const ChartPanel& panel, const ChartResult& result, const PlotTexts& texts) {
  const std::string measured = texts.yLabel.empty() ? OneLine(result.column) : texts.yLabel;
  return panel.name == "value" ? measured : panel.name + " of " + measured;
}

std::string XLabelOf(const ChartResult& result, const PlotTexts& texts) {
  if (!texts.xLabel.empty()) return texts.xLabel;
  return result.IsSingle() ? "row" : "subgroup of " + std::to_string(result.subgroup) + " rows";
}

FigureMark SeriesMark(FigureMark::Type type, FigureLook look, const ChartSeries& series, bool isNamed) {
  return MarkOf(type, look, NumbersTo(series.values.size()), series.values, isNamed ? series.name : "");
}

/// The points of a series beyond a limit.
FigureMark Signals(const ChartPanel& panel, const ChartSeries& series) {
  FigureMark signals = MarkOf(FigureMark::Type::Points, FigureLook::Signal, {}, {});
  for (std::size_t point = 0; point < series.values.size(); ++point) {
    const double value = series.values[point];
    if (!(value > panel.zones.upper || value < panel.zones.lower)) continue;
    signals.x.push_back(Abscissa(point));
    signals.y.push_back(value);
  }
  return signals;
}

FigurePanel PanelOf(const ChartPanel& panel, const ChartResult& result, const PlotTexts& texts) {
  FigurePanel figure;
  figure.x.label = XLabelOf(result, texts);
  figure.x.low = 0.5;
  figure.x.high = static_cast<double>(result.Points()) + 0.5;
  figure.x.whole = true;
  figure.y.label = QuantityOf(panel, result, texts);
  const RunZones& zones = panel.zones;
  figure.marks.push_back(LevelAt(zones.centre, FigureLook::Centre, LevelName("centre", zones.centre)));
  if (panel.HasLimits()) {
    figure.marks.push_back(LevelAt(zones.upper, FigureLook::Limit, LevelName("upper", zones.upper)));
    figure.marks.push_back(LevelAt(zones.lower, FigureLook::Limit, LevelName("lower", zones.lower)));
  }
  const bool hasBackground = !panel.background.values.empty(), areNamed = hasBackground || panel.judged.size() > 1;
  if (hasBackground) {
    figure.marks.push_back(SeriesMark(FigureMark::Type::Points, FigureLook::Faint, panel.background, true));
  }
  for (std::size_t i = 0; i < panel.judged.size(); ++i) {
    const ChartSeries& series = panel.judged[i];
    const FigureLook look = i == 0 ? FigureLook::Data : FigureLook::Second;
    figure.marks.push_back(SeriesMark(FigureMark::Type::Line, look, series, areNamed));
    if (result.Points() <= kMostDots) {
      figure.marks.push_back(SeriesMark(FigureMark::Type::Points, look, series, areNamed));
    }
    figure.marks.push_back(Signals(panel, series));
  }
  figure.marks.push_back(Rings(panel, result));
  return figure;
}

/// The rules that numbers in the drawing stand for, in their order.
std::vector<std::string> BrokenRunRules(const ChartResult& result) {
  std::map<int, std::string> rules;
  for (const ChartSignal& signal : result.signals) {
    if (signal.rule.number != 1) rules[signal.rule.number] = result.RuleName(signal) + ": " + signal.rule.meaning;
  }
  std::vector<std::string> lines;
  for (const auto& [number, rule] : rules) lines.push_back(rule);
  return lines;
}

}  // namespace

Figure ChartFigure(const ChartResult& result, const PlotTexts& texts) {
  Figure figure;
  figure.name = "chart";
  figure.kind = Figure::Kind::Rows;
  figure.title = texts.title.empty() ? result.Title() : texts.title;
  for (const ChartPanel& panel : result.panels) figure.panels.push_back(PanelOf(panel, result, texts));
  figure.notes = BrokenRunRules(result);
  figure.alt = Counted(result.Points(), "point") + "; " + Counted(result.signals.size(), "signal");
  for (const ChartPanel& panel : result.panels) {
    figure.alt += "; " + panel.name + ": " + LevelName("centre", panel.zones.centre);
    if (!panel.HasLimits()) continue;
    figure.alt += ", " + LevelName("lower limit", panel.zones.lower) + ", " + LevelName("upper", panel.zones.upper);
  }
  figure.alt += ".";
  return figure;
}

std::string ChartSvg(const ChartResult& result, const PlotTexts& texts, const SvgOptions& options) {
  return FigureSvg(ChartFigure(result, texts), options);
}

}  // namespace kalmia::analysis

#include "kalmia/analysis/chart/internal/ChartPanels.h"

#include <algorithm>
#include <limits>

namespace kalmia::analysis {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr double kIndividualWidth = 3.0;  ///< standard deviations from the target to a limit

/// A spread is never negative: -99 says without doubt that it is not known.
bool IsKnown(double spread) { return spread != kMissing; }

std::vector<double> Cells(const NCDataVector<float>& vector) {
  std::vector<double> cells;
  cells.reserve(static_cast<std::size_t>(vector.Size()));
  for (int i = 1; i <= vector.Size(); ++i) cells.push_back(vector[i] == kMissingCell<float> ? kNone : vector[i]);
  return cells;
}

/// Of a series that has no holes, in which a cell of -99 is just that.
std::vector<double> FullCells(const NCDataVector<float>& vector, double sign) {
  std::vector<double> cells;
  cells.reserve(static_cast<std::size_t>(vector.Size()));
  for (int i = 1; i <= vector.Size(); ++i) cells.push_back(0.0 + sign * vector[i]);  // 0.0 +: no -0
  return cells;
}

double IndividualSpread(const ControlChart& chart) {
  return IsKnown(chart.GetStdDevProcess()) ? chart.GetStdDevProcess() : chart.GetStdDevIndividual();
}

ChartPanel Means(const ControlChart& chart, int subgroup, double lower, double upper) {
  const std::string name = subgroup == 1 ? "value" : "mean";
  return {name, {{name, Cells(*chart.GetMeanVector())}}, {}, {chart.GetTarget(), lower, upper}, /*takesRuns=*/true};
}

ChartPanel Spreads(const std::string& name, const NCDataVector<float>& cells, double centre, double lower,
                   double upper) {
  return {name, {{name, Cells(cells)}}, {}, {centre, lower, upper}};
}

ChartPanel CuSums(const ControlChart& chart) {
  const double limit = chart.GetActionLimit();
  return {"CuSum",
          {{"high CuSum", FullCells(*chart.GetHighCuSum(), 1.0)}, {"low CuSum", FullCells(*chart.GetLowCuSum(), -1.0)}},
          {},
          {0.0, -limit, limit}};
}

ChartPanel Ewma(const ControlChart& chart, int subgroup) {
  return {"EWMA",
          {{"EWMA", FullCells(*chart.GetEWMA(), 1.0)}},
          {subgroup == 1 ? "value" : "mean", Cells(*chart.GetMeanVector())},
          {chart.GetTarget(), chart.GetEWMALCL(), chart.GetEWMAUCL()}};
}

const char* DirectionOf(const RunSignal& run) {
  switch (run.rule->pattern) {
    case RunRule::Pattern::Beyond: return run.side > 0 ? "above" : "below";
    case RunRule::Pattern::Trend: return run.side > 0 ? "rising" : "falling";
    case RunRule::Pattern::Alternation: return "alternating";
    case RunRule::Pattern::Within: return "within";
    case RunRule::Pattern::Outside: break;
  }
  return "outside";
}

ChartSignal SignalOf(const RunSignal& run, const ChartSeries& series, const RunZones& zones) {
  const bool hasLine = run.rule->pattern == RunRule::Pattern::Beyond;
  return {run.point,
          series.name,
          series.values[run.point],
          hasLine ? zones.Line(run.side * run.rule->sigmas) : kNone,
          *run.rule,
          DirectionOf(run)};
}

}  // namespace

bool HasLimits(const ControlChart& chart) {
  if (chart.GetTarget() == kMissing) return false;
  switch (chart.GetControlType()) {
    case ControlChart::MeanRange: return IsKnown(chart.GetRangeUCL());
    case ControlChart::MeanStdDev: return IsKnown(chart.GetStdDevUCL());
    case ControlChart::CuSum: return IsKnown(chart.GetActionLimit());
    case ControlChart::EWMA:
    case ControlChart::EWMAStdDev: return IsKnown(chart.GetEWMAStdDev());
    default: return IsKnown(IndividualSpread(chart));
  }
}

std::vector<ChartPanel> ChartPanels(const ControlChart& chart, int subgroup) {
  const double width = kIndividualWidth * IndividualSpread(chart);
  switch (chart.GetControlType()) {
    case ControlChart::MeanRange:
      return {Means(chart, subgroup, chart.GetMeanLCL(), chart.GetMeanUCL()),
              Spreads("range", *chart.GetRangeVector(), chart.GetRangeMean(), chart.GetRangeLCL(),
                      chart.GetRangeUCL())};
    case ControlChart::MeanStdDev:
      return {Means(chart, subgroup, chart.GetMeanLCL(), chart.GetMeanUCL()),
              Spreads("standard deviation", *chart.GetStdDevVector(), chart.GetStdDevMean(), chart.GetStdDevLCL(),
                      chart.GetStdDevUCL())};
    case ControlChart::CuSum: return {Means(chart, subgroup, kNone, kNone), CuSums(chart)};
    case ControlChart::EWMA:
    case ControlChart::EWMAStdDev: return {Ewma(chart, subgroup)};
    default: return {Means(chart, subgroup, chart.GetTarget() - width, chart.GetTarget() + width)};
  }
}

std::vector<ChartSignal> ChartSignals(const std::vector<ChartPanel>& panels, const std::string& rules) {
  std::vector<ChartSignal> signals;
  for (const ChartPanel& panel : panels) {
    if (!panel.HasLimits()) continue;
    std::vector<ChartSignal> found;
    std::vector<RunRule> judged = RunRulesOfWord(rules);
    if (!panel.takesRuns) judged.resize(1);  // the limits
    for (const ChartSeries& series : panel.judged) {
      for (const RunSignal& run : FindRuns(series.values, panel.zones, judged)) {
        found.push_back(SignalOf(run, series, panel.zones));
      }
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const ChartSignal& a, const ChartSignal& b) { return a.point < b.point; });
    signals.insert(signals.end(), found.begin(), found.end());
  }
  return signals;
}

}  // namespace kalmia::analysis

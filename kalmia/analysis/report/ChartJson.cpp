#include "kalmia/analysis/chart/ChartTypes.h"
#include "kalmia/analysis/report/ChartReport.h"
#include "kalmia/analysis/text/Json.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

Json KnownNumber(double number) { return number == kMissing ? Json() : JsonNumber(number); }

/// The points are cells of the library, single precision.
Json SeriesJson(const ChartSeries& series) {
  Json values = Json::array();
  for (const double value : series.values) values.push_back(JsonNumber(ShortestDouble(static_cast<float>(value))));
  return {{"name", series.name}, {"values", values}};
}

Json PanelJson(const ChartPanel& panel) {
  Json series = Json::array();
  for (const ChartSeries& judged : panel.judged) series.push_back(SeriesJson(judged));
  Json background = panel.background.values.empty() ? Json() : SeriesJson(panel.background);
  return {{"name", panel.name},
          {"lower", JsonNumber(panel.zones.lower)},
          {"centre", JsonNumber(panel.zones.centre)},
          {"upper", JsonNumber(panel.zones.upper)},
          {"series", series},
          {"background", background}};
}

Json SignalJson(const ChartResult& result, const ChartSignal& signal) {
  const std::size_t size = static_cast<std::size_t>(result.subgroup), first = signal.point * size + 1;
  return {{"point", signal.point + 1},
          {"firstRow", first},
          {"lastRow", first + size - 1},
          {"series", signal.series},
          {"direction", signal.direction},
          {"value", JsonNumber(ShortestDouble(static_cast<float>(signal.value)))},
          {"limit", JsonNumber(signal.limit)},
          {"rule", result.RuleName(signal)},
          {"meaning", signal.rule.meaning}};
}

Json TextOrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

}  // namespace

std::string ChartJson(const ChartResult& result, const Notes& notes) {
  const ControlChart& chart = result.chart;
  const ControlChart::ControlType type = chart.GetControlType();
  Json json = JsonHeader("kalmia-chart");
  json["table"] = result.table;
  json["column"] = result.column;
  json["type"] = WordOfChartType(type);
  json["subgroup"] = result.subgroup;
  json["values"] = result.values;
  json["missing"] = result.missing;
  json["limitsFrom"] = TextOrNull(result.limitsFrom);
  json["sigmaFrom"] = TextOrNull(result.sigmaFrom);
  json["sigmaProcess"] = KnownNumber(chart.GetStdDevProcess());
  json["sigmaValues"] = KnownNumber(chart.GetStdDevIndividual());
  json["deadBand"] = type == ControlChart::CuSum ? KnownNumber(chart.GetDeadBand()) : Json();
  json["lambda"] = IsEwma(type) ? KnownNumber(chart.GetEWMALambda()) : Json();
  json["rules"] = TextOrNull(result.rules);
  Json panels = Json::array(), signals = Json::array();
  for (const ChartPanel& panel : result.panels) panels.push_back(PanelJson(panel));
  for (const ChartSignal& signal : result.signals) signals.push_back(SignalJson(result, signal));
  json["panels"] = panels;
  json["signals"] = signals;
  json["notes"] = notes.Lines();
  return JsonText(json);
}

}  // namespace kalmia::analysis

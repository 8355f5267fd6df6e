#include "kalmia/analysis/report/ChartReport.h"

#include <algorithm>
#include <map>

#include "kalmia/analysis/chart/ChartTypes.h"
#include "kalmia/analysis/table/internal/CsvText.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/Json.h"
#include "kalmia/analysis/text/internal/TextTable.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

constexpr int kDigits = 6;
constexpr std::size_t kMostSignals = 40;  ///< in the text; the CSV file has all

std::string RowsOf(const ChartResult& result, std::size_t point) {
  const std::size_t size = static_cast<std::size_t>(result.subgroup), first = point * size + 1;
  return std::to_string(first) + " to " + std::to_string(first + size - 1);
}

std::string LimitsTable(const ChartResult& result) {
  TextTable table;
  table.AddColumn("", TextTable::Align::Left);
  for (const char* title : {"lower limit", "centre", "upper limit"}) table.AddColumn(title, TextTable::Align::Right);
  for (const ChartPanel& panel : result.panels) {
    table.AddRow({panel.name, Significant(panel.zones.lower, kDigits), Significant(panel.zones.centre, kDigits),
                  Significant(panel.zones.upper, kDigits)});
  }
  return table.Text();
}

/// Where the standard deviation of the process comes from, if not from subgroups.
std::string SourceText(const ChartResult& result) {
  if (result.sigmaFrom == kFromMovingRange) return " (mean moving range / 1.128)";
  return result.sigmaFrom == kGiven ? " (given)" : "";
}

/// "Standard deviation of the process 0.05, of the values 0.06": what is known of them.
std::string SpreadText(const ChartResult& result) {
  const ControlChart& chart = result.chart;
  std::vector<std::string> parts;
  const auto add = [&parts](const char* what, double spread, const std::string& source) {
    if (spread != kMissing) parts.push_back(what + Significant(spread, kDigits) + source);
  };
  add("of the process ", chart.GetStdDevProcess(), SourceText(result));
  add("of the values ", chart.GetStdDevIndividual(), "");
  if (chart.GetControlType() == ControlChart::CuSum) add("dead band of the CuSum ", chart.GetDeadBand(), "");
  std::string text = parts.empty() ? "" : "Standard deviation " + Listed(parts) + "\n";
  if (IsEwma(chart.GetControlType())) {
    text += "Weight lambda " + Significant(chart.GetEWMALambda(), kDigits) +
            (result.weightGiven ? "" : ", with the smallest forecast errors") + "\n";
  }
  return text;
}

std::string SignalName(const ChartSignal& signal) { return signal.series + " " + signal.direction; }

/// What the numbers of the broken rules stand for.
std::string RulesText(const ChartResult& result) {
  if (result.rules.empty()) return "";
  std::map<int, std::string> rules;
  for (const ChartSignal& signal : result.signals) rules[signal.rule.number] = signal.rule.meaning;
  std::string text = "\n";
  for (const auto& [number, meaning] : rules) text += "  rule " + std::to_string(number) + ": " + meaning + "\n";
  return text;
}

std::string SignalsText(const ChartResult& result) {
  if (result.signals.empty()) {
    return std::string("No signals: every point lies within its limits") +
           (result.rules.empty() ? "\n" : ", and no run breaks a rule\n");
  }
  TextTable table;
  table.AddColumn(result.IsSingle() ? "row" : "subgroup", TextTable::Align::Right);
  if (!result.IsSingle()) table.AddColumn("rows", TextTable::Align::Right);
  table.AddColumn("signal", TextTable::Align::Left);
  table.AddColumn("value", TextTable::Align::Right);
  table.AddColumn("limit", TextTable::Align::Right);
  if (!result.rules.empty()) table.AddColumn(result.rules + " rule", TextTable::Align::Right);
  for (std::size_t i = 0; i < result.signals.size() && i < kMostSignals; ++i) {
    const ChartSignal& signal = result.signals[i];
    std::vector<std::string> row = {std::to_string(signal.point + 1)};
    if (!result.IsSingle()) row.push_back(RowsOf(result, signal.point));
    row.push_back(SignalName(signal));
    row.push_back(Significant(signal.value, kDigits));
    row.push_back(Significant(signal.limit, kDigits));
    if (!result.rules.empty()) row.push_back(std::to_string(signal.rule.number));
    table.AddRow(row);
  }
  const std::size_t more = result.signals.size() - std::min(result.signals.size(), kMostSignals);
  return Counted(result.signals.size(), "signal") + "\n\n" + table.Text() +
         (more == 0 ? "" : "  and " + std::to_string(more) + " more: CSV or JSON gives them all\n") +
         RulesText(result);
}

/// What the signals of one point are, and which rules they break, in the same order.
struct SignalFields {
  std::string signals, rules;
};

SignalFields SignalsAt(const ChartResult& result, std::size_t point, const std::vector<std::size_t>& order,
                       std::size_t* next) {
  SignalFields fields;
  for (; *next < order.size() && result.signals[order[*next]].point == point; ++*next) {
    const ChartSignal& signal = result.signals[order[*next]];
    const char* const between = fields.signals.empty() ? "" : "; ";
    fields.signals += between + SignalName(signal);
    fields.rules += between + result.RuleName(signal);
  }
  return fields;
}

/// The signals by point: panels follow each other in the result.
std::vector<std::size_t> ByPoint(const std::vector<ChartSignal>& signals) {
  std::vector<std::size_t> order(signals.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::stable_sort(order.begin(), order.end(),
                   [&signals](std::size_t a, std::size_t b) { return signals[a].point < signals[b].point; });
  return order;
}

void CsvTitles(const ChartResult& result, CsvText* csv) {
  csv->Field(result.IsSingle() ? "row" : "subgroup");
  if (!result.IsSingle()) csv->Field("first row").Field("last row");
  for (const ChartPanel& panel : result.panels) {
    if (!panel.background.values.empty()) csv->Field(panel.background.name);
    for (const ChartSeries& series : panel.judged) csv->Field(series.name);
    csv->Field(panel.name + " lower limit").Field(panel.name + " centre").Field(panel.name + " upper limit");
  }
  csv->Field("signal");
  if (!result.rules.empty()) csv->Field("rule");
  csv->EndLine();
}

/// The points are cells of the library, single precision: full precision has so many digits.
void AddCell(double value, CsvText* csv) { csv->Number(ShortestDouble(static_cast<float>(value))); }

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

}  // namespace

std::string ChartText(const ChartResult& result) {
  std::string text = result.Title() + "\n" + Counted(static_cast<std::size_t>(result.values), "value");
  if (!result.IsSingle()) {
    text += " in " + Counted(result.Points(), "subgroup") + " of " + std::to_string(result.subgroup);
  }
  if (result.missing > 0) text += ", " + std::to_string(result.missing) + " of them missing";
  if (!result.limitsFrom.empty()) text += "; limits from " + OneLine(result.limitsFrom);
  return text + "\n\n" + LimitsTable(result) + "\n" + SpreadText(result) + "\n" + SignalsText(result);
}

std::string ChartJson(const ChartResult& result) {
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
  json["notes"] = result.notes.Lines();
  return JsonText(json);
}

std::string ChartCsv(const ChartResult& result, const CsvMarks& marks) {
  CsvText csv(marks);
  CsvTitles(result, &csv);
  const std::vector<std::size_t> order = ByPoint(result.signals);
  std::size_t next = 0;
  for (std::size_t point = 0; point < result.Points(); ++point) {
    csv.Field(std::to_string(point + 1));
    if (!result.IsSingle()) {
      const std::size_t size = static_cast<std::size_t>(result.subgroup);
      csv.Field(std::to_string(point * size + 1)).Field(std::to_string((point + 1) * size));
    }
    for (const ChartPanel& panel : result.panels) {
      if (!panel.background.values.empty()) AddCell(panel.background.values[point], &csv);
      for (const ChartSeries& series : panel.judged) AddCell(series.values[point], &csv);
      csv.Number(panel.zones.lower).Number(panel.zones.centre).Number(panel.zones.upper);
    }
    const SignalFields fields = SignalsAt(result, point, order, &next);
    csv.Field(fields.signals);
    if (!result.rules.empty()) csv.Field(fields.rules);
    csv.EndLine();
  }
  return csv.Text();
}

}  // namespace kalmia::analysis

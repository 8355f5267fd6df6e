#include "kalmia/analysis/report/SpectrumReport.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>

#include "kalmia/analysis/table/internal/CsvText.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/Json.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr int kMostLines = 65;  ///< of each table of the text; the files have all
constexpr int kLongestBar = 40;
constexpr auto kCorrelationFile = "correlation.csv";
constexpr auto kPowerFile = "power.csv";

std::string Bar(double share) {
  return std::string(static_cast<std::size_t>(std::ceil(std::max(0.0, share) * kLongestBar)), '#');
}

std::string MoreLine(std::size_t more) {
  return more == 0 ? "" : "  and " + std::to_string(more) + " more: CSV or JSON gives them all\n";
}

std::string PeriodText(const SpectrumResult& result, int i) {
  return i == 0 ? "-" : Significant(1.0 / result.Frequency(i), 4);
}

std::string LagSentence(const SpectrumResult& result) {
  const std::optional<int> peak = result.PeakLag();
  if (!peak) return "No correlation: nothing is left of a column\n";
  const int lag = *peak;
  const std::string column = OneLine(result.parts[0].column), with = OneLine(result.parts[1].column);
  const std::string rows = Counted(static_cast<std::size_t>(std::abs(lag)), "row");
  std::string text = "Furthest from 0 at lag " + std::to_string(lag) + ": ";
  if (lag == 0) return text + column + " and " + with + " go together\n";
  return text + (lag > 0 ? column + " follows " + with : with + " follows " + column) + " by " + rows + "\n";
}

std::string CorrelationText(const SpectrumResult& result) {
  TextTable table;
  for (const char* title : {"lag", "correlation"}) table.AddColumn(title, TextTable::Align::Right);
  table.AddColumn("", TextTable::Align::Left);
  const int mostLag = result.IsCross() ? kMostLines / 2 : kMostLines - 1;
  std::size_t more = 0;
  int lag = result.FirstLag();
  for (const double r : result.correlations) {
    if (std::abs(lag) <= mostLag) {
      table.AddRow({std::to_string(lag), Fixed(r, 4), std::abs(r) > result.CorrelationLimit() ? "*" : ""});
    } else {
      ++more;
    }
    ++lag;
  }
  const std::string title = result.IsCross() ? "Correlation of " + OneLine(result.parts[0].column) + " with " +
                                                   OneLine(result.parts[1].column)
                                             : "Autocorrelation of " + OneLine(result.parts[0].column);
  return title + " (*: beyond " + Fixed(result.CorrelationLimit(), 4) + ", as 1 of 20 would be by chance)\n" +
         (result.IsCross() ? LagSentence(result) : "") + "\n" + table.Text() + MoreLine(more);
}

std::string PeakSentence(const SpectrumResult& result, const ColumnSpectrum& part) {
  const std::optional<int> peak = SpectrumResult::Peak(part);
  if (!peak) return "No power at any frequency above 0\n";
  return "Largest at frequency " + Fixed(result.Frequency(*peak), 5) + ", a period of " + PeriodText(result, *peak) +
         " rows\n";
}

std::string PowerText(const SpectrumResult& result, const ColumnSpectrum& part) {
  TextTable table;
  for (const char* title : {"frequency", "period", "power"}) table.AddColumn(title, TextTable::Align::Right);
  table.AddColumn("", TextTable::Align::Left);
  const int lines = static_cast<int>(part.power.size());
  const double largest = *std::max_element(part.power.begin(), part.power.end());
  for (int i = 0; i < std::min(lines, kMostLines); ++i) {
    const double power = part.power[static_cast<std::size_t>(i)];
    table.AddRow({Fixed(result.Frequency(i), 5), PeriodText(result, i), Significant(power, 5),
                  largest > 0.0 ? Bar(power / largest) : ""});
  }
  return "Power of " + OneLine(part.column) + " in " +
         Counted(static_cast<std::size_t>(result.segments), "half-overlapping segment") + " of " +
         std::to_string(result.segment) + " rows, " + result.window + " window\n" + PeakSentence(result, part) +
         "\n" + table.Text() + MoreLine(static_cast<std::size_t>(std::max(0, lines - kMostLines)));
}

std::string RemovedText(const std::string& detrend) {
  if (detrend == "none") return "nothing removed";
  return detrend == "mean" ? "mean removed" : "straight line removed";
}

}  // namespace

std::string SpectrumText(const SpectrumResult& result) {
  std::string text = result.Title() + ": " + Counted(static_cast<std::size_t>(result.rows), "row") + ", " +
                     RemovedText(result.detrend) + "\n\n" + CorrelationText(result);
  for (const ColumnSpectrum& part : result.parts) text += "\n" + PowerText(result, part);
  return text;
}

std::string SpectrumJson(const SpectrumResult& result) {
  Json json = JsonHeader("kalmia-spectrum");
  json["table"] = result.table;
  json["rows"] = result.rows;
  json["detrend"] = result.detrend;
  json["lags"] = result.lags;
  json["correlationLimit"] = JsonNumber(result.CorrelationLimit());
  Json correlations = Json::array();
  int lag = result.FirstLag();
  for (const double r : result.correlations) correlations.push_back({{"lag", lag++}, {"correlation", JsonNumber(r)}});
  json["correlations"] = correlations;
  json["window"] = result.window;
  json["segment"] = result.segment;
  json["segments"] = result.segments;
  Json columns = Json::array();
  for (const ColumnSpectrum& part : result.parts) {
    Json spectrum = Json::array();
    for (int i = 0; i <= result.segment / 2; ++i) {
      spectrum.push_back({{"frequency", result.Frequency(i)},
                          {"period", i == 0 ? Json() : JsonNumber(1.0 / result.Frequency(i))},
                          {"power", JsonNumber(part.power[static_cast<std::size_t>(i)])}});
    }
    const std::optional<int> peak = SpectrumResult::Peak(part);
    columns.push_back({{"name", part.column},
                       {"missing", part.missing},
                       {"peakFrequency", peak ? Json(result.Frequency(*peak)) : Json()},
                       {"spectrum", spectrum}});
  }
  json["columns"] = columns;
  json["notes"] = result.notes.Lines();
  return JsonText(json);
}

std::vector<CsvFile> SpectrumCsvFiles(const SpectrumResult& result, const CsvMarks& marks) {
  CsvText correlation(marks);
  correlation.Field("lag").Field("correlation").EndLine();
  int lag = result.FirstLag();
  for (const double r : result.correlations) correlation.Number(lag++).Number(r).EndLine();
  CsvText power(marks);
  power.Field("frequency").Field("period");
  for (const ColumnSpectrum& part : result.parts) power.Field("power of " + part.column);
  power.EndLine();
  for (int i = 0; i <= result.segment / 2; ++i) {
    power.Number(result.Frequency(i)).Number(1.0 / result.Frequency(i));  // that of frequency 0 stays empty
    for (const ColumnSpectrum& part : result.parts) power.Number(part.power[static_cast<std::size_t>(i)]);
    power.EndLine();
  }
  return {{kCorrelationFile, correlation.Text()}, {kPowerFile, power.Text()}};
}

std::vector<std::string> SpectrumCsvFileNames() { return {kCorrelationFile, kPowerFile}; }

}  // namespace kalmia::analysis

#include "kalmia/analysis/report/HistogramReport.h"

#include <algorithm>
#include <cmath>

#include "kalmia/analysis/table/internal/CsvText.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/Json.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr int kDigits = 6;
constexpr int kMostLines = 60;  ///< bins in the text; the CSV file has all
constexpr int kLongestBar = 40;

}  // namespace

std::string HistogramText(const HistogramResult& histogram) {
  TextTable table;
  for (const char* title : {"from", "to", "values"}) table.AddColumn(title, TextTable::Align::Right);
  table.AddColumn("", TextTable::Align::Left);
  const int largest = histogram.LargestCount();
  for (int bin = 1; bin <= std::min(histogram.Bins(), kMostLines); ++bin) {
    const int count = histogram.Count(bin);
    const double length = std::ceil(static_cast<double>(count) * kLongestBar / largest);
    table.AddRow({Significant(histogram.From(bin), kDigits), Significant(histogram.To(bin), kDigits),
                  std::to_string(count), std::string(static_cast<std::size_t>(length), '#')});
  }
  const int more = histogram.Bins() - kMostLines;
  std::string text = histogram.Title() + ": " + Counted(static_cast<std::size_t>(histogram.values), "value") + " in " +
                     Counted(static_cast<std::size_t>(histogram.Bins()), "bin") + " of width " +
                     Significant(histogram.width, 2);
  if (histogram.missing > 0) text += ", " + std::to_string(histogram.missing) + " missing";
  return text + "\n\n" + table.Text() +
         (more > 0 ? "  and " + std::to_string(more) + " more: CSV or JSON gives them all\n" : "");
}

std::string HistogramJson(const HistogramResult& histogram) {
  Json json = JsonHeader("kalmia-histogram");
  json["table"] = histogram.table;
  json["column"] = histogram.column;
  json["values"] = histogram.values;
  json["missing"] = histogram.missing;
  json["width"] = JsonNumber(histogram.width);
  Json bins = Json::array();
  for (int bin = 1; bin <= histogram.Bins(); ++bin) {
    bins.push_back({{"from", JsonNumber(histogram.From(bin))},
                    {"to", JsonNumber(histogram.To(bin))},
                    {"count", histogram.Count(bin)},
                    {"rows", histogram.bins.members[static_cast<std::size_t>(bin) - 1]}});
  }
  json["bins"] = bins;
  json["notes"] = histogram.notes.Lines();
  return JsonText(json);
}

std::string HistogramCsv(const HistogramResult& histogram, const CsvMarks& marks) {
  CsvText csv(marks);
  for (const char* title : {"from", "to", "centre", "values", "rows"}) csv.Field(title);
  csv.EndLine();
  for (int bin = 1; bin <= histogram.Bins(); ++bin) {
    csv.Number(histogram.From(bin)).Number(histogram.To(bin)).Cell(histogram.bins.centres[bin]);
    csv.Number(histogram.Count(bin));
    std::string rows;
    for (const int row : histogram.bins.members[static_cast<std::size_t>(bin) - 1]) {
      rows += (rows.empty() ? "" : " ") + std::to_string(row);
    }
    csv.Field(rows).EndLine();
  }
  return csv.Text();
}

}  // namespace kalmia::analysis

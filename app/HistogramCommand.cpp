#include <algorithm>
#include <cmath>

#include "app/Commands.h"
#include "app/ConsoleProgress.h"
#include "app/CsvText.h"
#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/Json.h"
#include "app/MeasuredColumn.h"
#include "app/Numbers.h"
#include "app/OutputFiles.h"
#include "app/OutputPlaces.h"
#include "app/Plot.h"
#include "app/ReadTable.h"
#include "app/TextTable.h"
#include "app/WorkProgress.h"
#include "kalmia/statistics/FrequencyHistogram.h"

namespace kalmia::app {

namespace {

constexpr int kDigits = 6;
constexpr int kMostLines = 60;  ///< bins in the text; the CSV file has all
constexpr int kLongestBar = 40;

struct Histogram {
  std::string table, column;
  int values;
  int missing;
  double width;
  FrequencyHistogram::HistogramInfo bins;

  int Bins() const { return bins.counts.Size(); }
  double First() const { return bins.centres[1] - width / 2; }
  double From(int bin) const { return BinEdge(First(), width, bin - 1); }
  double To(int bin) const { return BinEdge(First(), width, bin); }
  int Count(int bin) const { return static_cast<int>(bins.members[static_cast<std::size_t>(bin) - 1].size()); }
  int LargestCount() const {
    int largest = 0;
    for (int bin = 1; bin <= Bins(); ++bin) largest = std::max(largest, Count(bin));
    return largest;
  }
  std::string Title() const { return OneLine(column) + " of " + OneLine(table); }
};

/// The width as it was rounded by the histogram: the centres, single precision, are that far apart. A single bin is
/// one unit wide, or ends with the largest value.
double WidthOf(const NCDataVector<float>& data, const NCDataVector<float>& centres) {
  float smallest = 0.0F, largest = 0.0F;
  data.GetMinMax(smallest, largest);
  const int bins = centres.Size();
  double width = 1.0;
  if (bins > 1) {
    width = (static_cast<double>(centres[bins]) - centres[1]) / (bins - 1);
  } else if (smallest < largest) {
    width = 2.0 * (static_cast<double>(largest) - centres[1]);
  }
  return Rounded(width, 4);
}

/// Whether the bins have edges that differ, in single precision.
bool HasEdges(const Histogram& histogram) {
  if (!(histogram.width > 0.0) || !std::isfinite(histogram.width)) return false;
  const double first = histogram.From(1), last = histogram.To(histogram.Bins());
  return first < histogram.To(1) && std::isfinite(static_cast<float>(first)) && std::isfinite(static_cast<float>(last));
}

Histogram HistogramOf(const CsvTable& table, const HistogramOptions& options, Notes* notes) {
  const NCDataVector<float> data = ReadMeasurements(table, options.column, notes);
  Histogram histogram = {table.Name(), options.column, data.Size() - data.GetNumMisVal(), data.GetNumMisVal(), 0.0, {}};
  FrequencyHistogram().CreateHistogram(data, histogram.bins);
  histogram.width = WidthOf(data, histogram.bins.centres);
  if (!HasEdges(histogram)) {
    throw BadData(table.Name() + ": the column " + Quoted(options.column) + " has values too large for a histogram");
  }
  return histogram;
}

std::string HistogramText(const Histogram& histogram) {
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
  return text + "\n\n" + table.Text() + (more > 0 ? "  and " + std::to_string(more) + " more; --csv has all\n" : "");
}

std::string HistogramCsv(const Histogram& histogram, const CsvMarks& marks) {
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

std::string HistogramJson(const Histogram& histogram, const Notes& notes) {
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
  json["notes"] = notes.Lines();
  return JsonText(json);
}

std::string TextOr(const std::string& text, const std::string& otherwise) { return text.empty() ? otherwise : text; }

std::string HistogramSvg(const Histogram& histogram, const PlotTexts& texts) {
  constexpr double kLeft = 80, kTop = 46, kWidth = 600, kHeight = 300;
  const std::string title = TextOr(texts.title, histogram.Title());
  Svg svg(kLeft + kWidth + 40, kTop + kHeight + 54, title);
  svg.Text(kLeft, 26, Svg::Fitting(title, kWidth + 30, Svg::Font::Title), Svg::Font::Title, Svg::Anchor::Start);
  const ValueRange values = {histogram.From(1), histogram.To(histogram.Bins())};
  const ValueRange counts = {0.0, 1.05 * histogram.LargestCount()};
  const Plot plot(&svg, {kLeft, kTop, kWidth, kHeight}, values, counts);
  plot.DrawAxes(TextOr(texts.xLabel, histogram.column), TextOr(texts.yLabel, "count"),
                EdgeTicks(histogram.First(), histogram.width, histogram.Bins(), kWidth), /*wholeY=*/true);
  for (int bin = 1; bin <= histogram.Bins(); ++bin) {
    const double left = plot.X(histogram.From(bin)), top = plot.Y(histogram.Count(bin));
    if (histogram.Count(bin) == 0) continue;
    svg.Rectangle(left, top, plot.X(histogram.To(bin)) - left, plot.Bottom() - top, Svg::Look::Bar);
  }
  return svg.File();
}

std::vector<FilePlace> OutputsOf(const HistogramOptions& options) {
  std::vector<FilePlace> places;
  if (!options.csv.empty()) places.push_back({"--csv", options.csv});
  if (!options.svg.empty()) places.push_back({"--svg", options.svg});
  return places;
}

}  // namespace

std::string RunCommand(const HistogramOptions& options, Notes* notes) {
  CheckPlaces({{"the table", options.table}}, OutputsOf(options));
  const CsvTable table = ReadTable(options.table, options.reading);
  TerminalBar bar;
  WorkProgress(bar.Get()).Begin("computing the histogram");
  const Histogram histogram = HistogramOf(table, options, notes);
  OutputFiles files;
  if (!options.csv.empty()) files.Stage(options.csv, HistogramCsv(histogram, MarksOf(options.csvMarks)));
  if (!options.svg.empty()) files.Stage(options.svg, HistogramSvg(histogram, options.texts));
  files.Commit();
  return options.json ? HistogramJson(histogram, *notes) : HistogramText(histogram) + WrittenText(OutputsOf(options));
}

}  // namespace kalmia::app

#include "kalmia/analysis/figure/HistogramSvg.h"

#include "kalmia/analysis/figure/internal/FigureParts.h"
#include "kalmia/analysis/figure/internal/Plot.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

constexpr double kUsualWidth = 600;  ///< pixels that the edges share

std::string TextOr(const std::string& text, const std::string& otherwise) { return text.empty() ? otherwise : text; }

}  // namespace

Figure HistogramFigure(const HistogramResult& histogram, const PlotTexts& texts) {
  Figure figure;
  figure.name = "histogram";
  figure.kind = Figure::Kind::Other;
  figure.title = TextOr(texts.title, histogram.Title());
  FigurePanel panel;
  panel.x.label = TextOr(texts.xLabel, histogram.column);
  panel.x.low = histogram.From(1);
  panel.x.high = histogram.To(histogram.Bins());
  panel.y.label = TextOr(texts.yLabel, "count");
  panel.y.whole = true;
  for (Tick& tick : EdgeTicks(histogram.First(), histogram.width, histogram.Bins(), kUsualWidth)) {
    panel.x.ticks.push_back({tick.value, std::move(tick.label)});
  }
  FigureMark bars = MarkOf(FigureMark::Type::Bars, FigureLook::Data, {}, {});
  bars.width = histogram.width;
  int largest = 1;
  for (int bin = 1; bin <= histogram.Bins(); ++bin) {
    bars.x.push_back((histogram.From(bin) + histogram.To(bin)) / 2);
    bars.y.push_back(histogram.Count(bin));
    if (histogram.Count(bin) > histogram.Count(largest)) largest = bin;
  }
  panel.marks.push_back(bars);
  figure.panels.push_back(panel);
  figure.alt = Counted(static_cast<std::size_t>(histogram.values), "value") + " of " + OneLine(histogram.column) +
               " in " + Counted(static_cast<std::size_t>(histogram.Bins()), "bin") + "; most, " +
               std::to_string(histogram.Count(largest)) + ", from " + Shortest(histogram.From(largest)) + " to " +
               Shortest(histogram.To(largest)) + ".";
  return figure;
}

std::string HistogramSvg(const HistogramResult& histogram, const PlotTexts& texts, const SvgOptions& options) {
  return FigureSvg(HistogramFigure(histogram, texts), options);
}

}  // namespace kalmia::analysis

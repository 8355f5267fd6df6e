#include "kalmia/analysis/figure/HistogramSvg.h"

#include "kalmia/analysis/figure/internal/Plot.h"

namespace kalmia::analysis {

namespace {

std::string TextOr(const std::string& text, const std::string& otherwise) { return text.empty() ? otherwise : text; }

}  // namespace

std::string HistogramSvg(const HistogramResult& histogram, const PlotTexts& texts) {
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

}  // namespace kalmia::analysis

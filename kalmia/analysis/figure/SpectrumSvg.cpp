#include "kalmia/analysis/figure/SpectrumSvg.h"

#include <algorithm>
#include <optional>

#include "kalmia/analysis/figure/internal/Plot.h"
#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

namespace {

constexpr double kWidth = 820, kLeft = 80, kPlotWidth = 600;
constexpr double kTop = 46, kPlotHeight = 220, kPanelHeight = 290;
constexpr double kMargin = 0.06;        ///< of the range of values, above and below
constexpr std::size_t kMostDots = 150;  ///< beyond, dots would run into each other

/// A stem from 0 to each correlation, and the limits of what chance does.
void DrawCorrelations(const SpectrumResult& result, double top, Svg* svg) {
  const double limit = result.CorrelationLimit();
  ValueRange lags = {static_cast<double>(result.FirstLag()) - 0.5, static_cast<double>(result.lags) + 0.5};
  ValueRange values = {-limit, limit};
  for (const double r : result.correlations) values.Include(r);
  values.Widen(kMargin);
  const Plot plot(svg, {kLeft, top, kPlotWidth, kPlotHeight}, lags, values);
  plot.DrawAxes("lag in rows", result.IsCross() ? "correlation" : "autocorrelation", /*wholeX=*/true,
                /*wholeY=*/false);
  for (const double level : {limit, -limit}) plot.DrawLevel(level, "chance", Svg::Look::Limit, 0);
  double lag = result.FirstLag();
  for (const double r : result.correlations) {
    svg->Line(plot.X(lag), plot.Y(0.0), plot.X(lag), plot.Y(r), Svg::Look::Data);
    if (result.correlations.size() <= kMostDots) svg->Circle(plot.X(lag), plot.Y(r), 2.6, Svg::Look::Point);
    lag += 1.0;
  }
}

void DrawPower(const SpectrumResult& result, const ColumnSpectrum& part, double top, Svg* svg) {
  const double largest = *std::max_element(part.power.begin(), part.power.end());
  const Plot plot(svg, {kLeft, top, kPlotWidth, kPlotHeight}, {0.0, 0.5},
                  {0.0, largest > 0.0 ? (1.0 + kMargin) * largest : 1.0});
  plot.DrawAxes("frequency, in cycles a row", "power of " + OneLine(part.column), /*wholeX=*/false, /*wholeY=*/false);
  Svg::Points line;
  for (int i = 0; i <= result.segment / 2; ++i) {
    line.emplace_back(plot.X(result.Frequency(i)), plot.Y(part.power[static_cast<std::size_t>(i)]));
  }
  svg->Polyline(line, Svg::Look::Data);
  const std::optional<int> peak = SpectrumResult::Peak(part);
  if (!peak) return;
  const auto& [x, y] = line[static_cast<std::size_t>(*peak)];
  svg->Circle(x, y, 3.4, Svg::Look::Point);
}

}  // namespace

std::string SpectrumSvg(const SpectrumResult& result) {
  const double panels = 1.0 + static_cast<double>(result.parts.size());
  Svg svg(kWidth, kTop + panels * kPanelHeight - 22, result.Title());
  svg.Text(kLeft, 26, result.Title(), Svg::Font::Title, Svg::Anchor::Start);
  double top = kTop;
  DrawCorrelations(result, top, &svg);
  for (const ColumnSpectrum& part : result.parts) DrawPower(result, part, top += kPanelHeight, &svg);
  return svg.File();
}

}  // namespace kalmia::analysis

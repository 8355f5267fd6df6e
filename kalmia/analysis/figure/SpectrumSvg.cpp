#include "kalmia/analysis/figure/SpectrumSvg.h"

#include <algorithm>
#include <optional>

#include "kalmia/analysis/figure/internal/FigureParts.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

constexpr double kStem = 0.12;          ///< of the distance of two lags
constexpr std::size_t kMostDots = 150;  ///< beyond, dots would run into each other
constexpr int kDigits = 3;

FigurePanel CorrelationPanel(const SpectrumResult& result) {
  const double limit = result.CorrelationLimit();
  FigurePanel panel;
  panel.x.label = "lag in rows";
  panel.x.low = static_cast<double>(result.FirstLag()) - 0.5;
  panel.x.high = static_cast<double>(result.lags) + 0.5;
  panel.x.whole = true;
  panel.y.label = result.IsCross() ? "correlation" : "autocorrelation";
  FigureMark stems = MarkOf(FigureMark::Type::Bars, FigureLook::Data, {}, result.correlations);
  stems.width = kStem;
  for (std::size_t i = 0; i < stems.y.size(); ++i) stems.x.push_back(result.FirstLag() + static_cast<int>(i));
  panel.marks.push_back(stems);
  panel.marks.push_back(LevelAt(0.0, FigureLook::Plain, ""));
  for (const double level : {limit, -limit}) {
    panel.marks.push_back(LevelAt(level, FigureLook::Limit, "chance: " + Significant(level, kDigits)));
  }
  if (stems.x.size() <= kMostDots) {
    panel.marks.push_back(MarkOf(FigureMark::Type::Points, FigureLook::Data, stems.x, stems.y));
  }
  return panel;
}

FigurePanel PowerPanel(const SpectrumResult& result, const ColumnSpectrum& part) {
  FigurePanel panel;
  panel.x.label = "frequency, in cycles a row";
  panel.x.low = 0.0;
  panel.x.high = 0.5;
  panel.y.label = "power of " + OneLine(part.column);
  panel.y.low = 0.0;
  FigureMark line = MarkOf(FigureMark::Type::Line, FigureLook::Data, {}, part.power);
  for (int i = 0; i <= result.segment / 2; ++i) line.x.push_back(result.Frequency(i));
  panel.marks.push_back(line);
  if (const std::optional<int> peak = SpectrumResult::Peak(part)) {
    const auto at = static_cast<std::size_t>(*peak);
    panel.marks.push_back(MarkOf(FigureMark::Type::Points, FigureLook::Data, {line.x[at]}, {line.y[at]}));
  }
  if (*std::max_element(part.power.begin(), part.power.end()) <= 0.0) panel.y.high = 1.0;
  return panel;
}

std::string Alt(const SpectrumResult& result) {
  std::string text = Counted(static_cast<std::size_t>(result.rows), "row");
  if (const std::optional<int> lag = result.PeakLag()) {
    const double r = result.correlations[static_cast<std::size_t>(*lag - result.FirstLag())];
    text += "; the correlation furthest from 0 is " + Significant(r, kDigits) + " at lag " + std::to_string(*lag);
  }
  for (const ColumnSpectrum& part : result.parts) {
    const std::optional<int> peak = SpectrumResult::Peak(part);
    if (!peak) continue;
    text += "; " + OneLine(part.column) + " has most power at " + Significant(result.Frequency(*peak), kDigits) +
            " cycles a row";
  }
  return text + ".";
}

}  // namespace

Figure SpectrumFigure(const SpectrumResult& result) {
  Figure figure;
  figure.name = "spectrum";
  figure.kind = Figure::Kind::Other;
  figure.title = result.Title();
  figure.panels.push_back(CorrelationPanel(result));
  for (const ColumnSpectrum& part : result.parts) figure.panels.push_back(PowerPanel(result, part));
  figure.alt = Alt(result);
  return figure;
}

std::string SpectrumSvg(const SpectrumResult& result, const SvgOptions& options) {
  return FigureSvg(SpectrumFigure(result), options);
}

}  // namespace kalmia::analysis

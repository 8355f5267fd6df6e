// Figures of columns: loadings, coefficients, contributions.

#include <algorithm>
#include <cmath>
#include <numeric>

#include "kalmia/analysis/figure/internal/FigureParts.h"
#include "kalmia/analysis/steps/internal/ChannelSpacing.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kNamed = 5;  ///< columns, in a text alternative
constexpr int kDigits = 4;

/// What all names of channels have beside their numbers, without marks around it: "nm".
std::string UnitOf(const Channels& channels) {
  const auto isLetter = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 0x80U;
  };
  for (const std::string& text : {channels.behind, channels.before}) {
    const auto begin = std::find_if(text.begin(), text.end(), isLetter);
    const auto end = std::find_if(text.rbegin(), text.rend(), isLetter).base();
    if (begin < end) return {begin, end};
  }
  return "column";
}

/// Where columns stand: at their numbers where they are channels, otherwise one beside the other by their names.
struct ColumnPlaces {
  FigureAxis axis;
  std::vector<double> x;
  bool areChannels = false;

  explicit ColumnPlaces(const SharedNames& columns) {
    const std::optional<Channels> channels = ChannelsOf(columns->names);
    areChannels = channels.has_value();
    if (areChannels) {
      x = channels->numbers;
      axis.label = UnitOf(*channels);
      const auto [low, high] = std::minmax_element(x.begin(), x.end());
      axis.low = *low;
      axis.high = *high;
    } else {
      x.resize(columns->names.size());
      std::iota(x.begin(), x.end(), 0.0);
      axis.kind = FigureAxis::Kind::Category;
      axis.categories = columns;
      axis.label = "column";
    }
  }

  /// A line of channels, otherwise bars.
  FigureMark Mark(const std::vector<double>& y, FigureLook look, const std::string& name) const {
    return MarkOf(areChannels ? FigureMark::Type::Line : FigureMark::Type::Bars, look, x, y, name);
  }
};

/// "largest: b (0.6), a (-0.58)", by absolute value.
std::string LargestText(const std::vector<double>& numbers, const std::vector<std::string>& names) {
  std::vector<std::size_t> order;
  for (std::size_t k = 0; k < numbers.size(); ++k) {
    if (!std::isnan(numbers[k])) order.push_back(k);
  }
  const std::size_t count = std::min(kNamed, order.size());
  std::partial_sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(count), order.end(),
                    [&numbers](std::size_t a, std::size_t b) {
                      const double ofA = std::fabs(numbers[a]), ofB = std::fabs(numbers[b]);
                      return ofA != ofB ? ofA > ofB : a < b;
                    });
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string number = Significant(numbers[order[i]], kDigits);
    text += (i == 0 ? "largest: " : ", ") + OneLine(names[order[i]]) + " (" + number + ")";
  }
  return text;
}

}  // namespace

Figure LoadingsFigure(const ColumnVectors& loadings, const FigureAxes& axes, const std::string& subject,
                      const FigureRecipe& recipe, const std::string& name) {
  Figure figure = NewFigure(name, Figure::Kind::Columns, name, subject, recipe);
  const ColumnPlaces places(loadings.columns);
  const std::string& xSymbol = loadings.symbols[axes.x];
  const std::vector<double>& first = loadings.vectors[axes.x];
  FigurePanel panel;
  figure.alt = Counted(first.size(), "column") + "; " + xSymbol + ", " + LargestText(first, loadings.columns->names);
  if (axes.y) {
    figure.alt += "; " + loadings.symbols[*axes.y] + ", " +
                  LargestText(loadings.vectors[*axes.y], loadings.columns->names);
  }
  figure.alt += ".";
  panel.marks.push_back(LevelAt(0.0, FigureLook::Plain, ""));
  if (axes.y && !places.areChannels) {
    panel.x.label = xSymbol;
    panel.y.label = loadings.symbols[*axes.y];
    panel.marks.push_back(UprightAt(0.0, FigureLook::Plain, ""));
    FigureMark points = MarkOf(FigureMark::Type::Points, FigureLook::Data, first, loadings.vectors[*axes.y]);
    points.names = loadings.columns;
    points.labels = true;
    panel.marks.push_back(points);
  } else {
    panel.x = places.axis;
    panel.y.label = axes.y ? "loading" : xSymbol;
    FigureMark mark = places.Mark(first, FigureLook::Data, axes.y ? xSymbol : "");
    mark.names = loadings.columns;
    panel.marks.push_back(mark);
    if (axes.y) {
      mark = places.Mark(loadings.vectors[*axes.y], FigureLook::Second, loadings.symbols[*axes.y]);
      mark.names = loadings.columns;
      panel.marks.push_back(mark);
    }
  }
  figure.panels.push_back(panel);
  return figure;
}

Figure ColumnsFigure(const std::string& name, const std::string& what, const SharedNames& columns,
                     const std::vector<ColumnNumbers>& panels, std::optional<double> level, const std::string& subject,
                     const FigureRecipe& recipe) {
  Figure figure = NewFigure(name, Figure::Kind::Columns, what, subject, recipe);
  const ColumnPlaces places(columns);
  figure.alt = Counted(columns->names.size(), "column");
  const std::size_t shown = std::min(panels.size(), kMostYPanels);
  for (std::size_t i = 0; i < shown; ++i) {
    const ColumnNumbers& numbers = panels[i];
    figure.alt += "; " + numbers.name + ", " + LargestText(numbers.numbers, columns->names);
    FigurePanel panel;
    panel.x = places.axis;
    panel.y.label = numbers.name;
    FigureMark mark = places.Mark(numbers.numbers, FigureLook::Data, "");
    mark.names = columns;
    if (numbers.intervals != nullptr) {
      // Intervals of the columns alone: that of an intercept, if there is one, stands behind them.
      const auto count = static_cast<std::ptrdiff_t>(numbers.numbers.size());
      mark.low.assign(numbers.intervals->lower.begin(), numbers.intervals->lower.begin() + count);
      mark.high.assign(numbers.intervals->upper.begin(), numbers.intervals->upper.begin() + count);
    }
    if (places.areChannels && !mark.low.empty()) {
      FigureMark band = MarkOf(FigureMark::Type::Area, FigureLook::Data, mark.x, mark.y, "95 % interval");
      band.low = std::move(mark.low);
      band.high = std::move(mark.high);
      mark.low.clear();
      mark.high.clear();
      panel.marks.push_back(band);
    }
    panel.marks.push_back(mark);
    panel.marks.push_back(LevelAt(0.0, FigureLook::Plain, ""));
    if (level) panel.marks.push_back(LevelAt(*level, FigureLook::Limit, Shortest(*level)));
    figure.panels.push_back(panel);
  }
  figure.alt += ".";
  if (shown < panels.size()) {
    figure.notes.push_back("the first " + std::to_string(shown) + " of " + std::to_string(panels.size()) +
                           " Y columns");
  }
  return figure;
}

std::vector<Figure> ContributionFigures(const std::vector<RowContributions>& rows,
                                        const std::vector<std::string>& columns, const std::string& subject,
                                        const FigureRecipe& recipe) {
  std::vector<Figure> figures;
  const SharedNames names = ListOf("columns", columns);
  for (const RowContributions& row : rows) {
    figures.push_back(ColumnsFigure("contributions-" + std::to_string(figures.size() + 1),
                                    "contributions of " + OneLine(row.row), names,
                                    {{"part of T2", row.t2Parts}, {"residual, scaled", row.residuals}}, std::nullopt,
                                    subject, recipe));
  }
  return figures;
}

}  // namespace kalmia::analysis

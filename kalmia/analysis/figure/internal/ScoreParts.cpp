// Figures of rows: scores, distances.

#include <algorithm>
#include <cmath>

#include "kalmia/analysis/figure/internal/FigureParts.h"
#include "kalmia/analysis/model/RowDiagnosis.h"
#include "kalmia/analysis/model/RowLimits.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

constexpr double kShare = 0.95;
constexpr std::size_t kNamed = 10;  ///< rows, in a text alternative

/// Points of a circle of radius 1, from the first round to the first again. They come from u = tan(angle / 2) by
/// divisions alone, which have the same bits on every machine.
std::vector<std::pair<double, double>> Circle() {
  constexpr int kSteps = 24;  // of a quarter
  std::vector<std::pair<double, double>> quarter, circle;
  for (int i = 0; i < 2 * kSteps; ++i) {
    const double u = (i - kSteps) / static_cast<double>(kSteps), across = 1 + u * u;
    quarter.emplace_back((1 - u * u) / across, 2 * u / across);  // from -90 to 90 degrees
  }
  circle = quarter;
  for (const auto& [x, y] : quarter) circle.emplace_back(-x, -y);
  circle.push_back(circle.front());
  return circle;
}

/// The limit for so many components; nothing where the variances are none.
std::optional<double> LimitIn(const ScoreSpace& space, const std::vector<std::size_t>& components) {
  for (const std::size_t a : components) {
    if (space.moments.means.size() <= a || !(space.moments.variances[a] > 0.0)) return std::nullopt;
  }
  const auto limit = space.areNew ? T2LimitOfNewRows : T2LimitOfTrainingRows;
  return limit(space.trainingRows, static_cast<int>(components.size()), kShare);
}

double PartOfT2(const ScoreSpace& space, std::size_t row, std::size_t component) {
  const double away = space.scores(row, component) - space.moments.means[component];
  return away * away / space.moments.variances[component];
}

/// "60 rows by t1 and t2; 2 beyond the 95 % limit of their plane: 2, 15."
std::string ScoresAlt(const ScoreSpace& space, const FigureAxes& axes, const std::optional<double>& limit,
                      const std::vector<int>& beyond, std::size_t shown) {
  std::string text = Counted(shown, "row") + " by " + space.symbols[axes.x];
  if (axes.y) text += " and " + space.symbols[*axes.y];
  if (shown < space.scores.rows) text += "; " + std::to_string(space.scores.rows - shown) + " without scores";
  if (!limit) return text + ".";
  std::vector<std::string> names;
  for (const int row : beyond) names.push_back(space.rows->names[static_cast<std::size_t>(row)]);
  text += "; " + std::to_string(beyond.size()) + " beyond the 95 % limit of T2 here";
  return text + (names.empty() ? "" : ": " + Listed(names, kNamed)) + ".";
}

FigureMark Ellipse(const ScoreSpace& space, std::size_t x, std::size_t y, double limit) {
  FigureMark ellipse = MarkOf(FigureMark::Type::Line, FigureLook::Limit, {}, {}, "T2, 95 %");
  const double a = std::sqrt(limit * space.moments.variances[x]), b = std::sqrt(limit * space.moments.variances[y]);
  for (const auto& [across, up] : Circle()) {
    ellipse.x.push_back(space.moments.means[x] + a * across);
    ellipse.y.push_back(space.moments.means[y] + b * up);
  }
  return ellipse;
}

/// Items of one of the flags.
std::vector<int> RowsWith(const std::vector<std::vector<std::string>>& flags, const std::vector<std::string>& wanted) {
  std::vector<int> rows;
  for (std::size_t i = 0; i < flags.size(); ++i) {
    if (std::find_first_of(flags[i].begin(), flags[i].end(), wanted.begin(), wanted.end()) != flags[i].end()) {
      rows.push_back(static_cast<int>(i));
    }
  }
  return rows;
}

std::string DistanceAlt(const std::vector<std::string>& rowNames, const RowDiagnosis& rows) {
  std::string text = Counted(rows.flags.size(), "row");
  for (const char* what : {"T2", "distance"}) {
    const LimitPair& limits = what == std::string("T2") ? rows.limits.t2 : rows.limits.distance;
    if (!limits.at95) continue;
    std::vector<std::string> names;
    for (const int row : RowsWith(rows.flags, {std::string(what) + " 95 %"})) {
      names.push_back(rowNames[static_cast<std::size_t>(row)]);
    }
    text += "; " + std::to_string(names.size()) + " beyond the 95 % limit of " + what + ", " +
            Significant(*limits.at95, 4) + (names.empty() ? "" : ": " + Listed(names, kNamed));
  }
  return text + ".";
}

}  // namespace

std::vector<double> ScoreSpace::Column(std::size_t component) const {
  std::vector<double> numbers;
  for (std::size_t i = 0; i < scores.rows; ++i) {
    const double score = scores(i, component);
    numbers.push_back(areNew ? score : ShortestDouble(static_cast<float>(score)));
  }
  return numbers;
}

std::string ScoreSpace::Label(std::size_t component) const {
  const double share = shares.size() > component ? shares[component] : kNotANumber;
  return symbols[component] + (std::isnan(share) ? "" : " (" + Fixed(100 * share, 1) + " % of " + block + ")");
}

FigureAxes AxesOf(const FigureRecipe& recipe, std::size_t components, std::size_t usualX, std::size_t usualY) {
  if (!recipe.axes) {
    if (usualY >= components) return {usualX, std::nullopt};
    return {usualX, usualY};
  }
  const auto [x, y] = *recipe.axes;
  for (const int component : {x, y}) {
    if (component >= 1 && static_cast<std::size_t>(component) <= components) continue;
    throw BadRequest("figures of components " + std::to_string(x) + " and " + std::to_string(y) + ": the model has " +
                     Counted(components, "component"));
  }
  if (x == y) throw BadRequest("figures of components " + std::to_string(x) + " and " + std::to_string(y) +
                               ": they are one component, and two are needed");
  return {static_cast<std::size_t>(x) - 1, static_cast<std::size_t>(y) - 1};
}

Figure ScoresFigure(const ScoreSpace& space, const FigureAxes& axes, const std::string& subject,
                    const FigureRecipe& recipe, const std::string& name) {
  Figure figure = NewFigure(name, Figure::Kind::Rows, name, subject, recipe);
  figure.classNames = space.classNames;
  FigurePanel panel;
  const bool isPlane = axes.y.has_value();
  std::vector<std::size_t> shown = {axes.x};
  if (isPlane) shown.push_back(*axes.y);
  const std::optional<double> limit = LimitIn(space, shown);
  FigureMark points = MarkOf(FigureMark::Type::Points, space.classes.empty() ? FigureLook::Data : FigureLook::Class,
                             isPlane ? space.Column(axes.x) : NumbersTo(space.scores.rows),
                             space.Column(isPlane ? *axes.y : axes.x));
  points.names = space.rows;
  points.labels = true;
  points.classes = space.classes;
  std::size_t count = 0;
  for (std::size_t i = 0; i < space.scores.rows; ++i) {
    double t2 = 0.0;
    bool isShown = true;
    for (const std::size_t a : shown) {
      isShown = isShown && !std::isnan(space.scores(i, a));
      if (limit) t2 += PartOfT2(space, i, a);
    }
    if (isShown) ++count;
    if (isShown && limit && t2 > *limit) points.selected.push_back(static_cast<int>(i));
  }
  figure.alt = ScoresAlt(space, axes, limit, points.selected, count);
  panel.y.label = space.Label(isPlane ? *axes.y : axes.x);
  if (isPlane) {
    panel.x.label = space.Label(axes.x);
    panel.marks.push_back(UprightAt(0.0, FigureLook::Plain, ""));
    if (limit) panel.marks.push_back(Ellipse(space, axes.x, *axes.y, *limit));
  } else {
    panel.x.label = "row";
    panel.x.whole = true;
    if (limit) {
      const double half = std::sqrt(*limit * space.moments.variances[axes.x]);
      for (const double side : {half, -half}) {
        panel.marks.push_back(LevelAt(space.moments.means[axes.x] + side, FigureLook::Limit, "T2, 95 %"));
      }
    }
  }
  panel.marks.push_back(LevelAt(0.0, FigureLook::Plain, ""));
  panel.marks.push_back(points);
  figure.panels.push_back(panel);
  return figure;
}

std::optional<Figure> DistanceFigure(const ModelInfo& model, const std::string& subject, const FigureRecipe& recipe) {
  return DistanceFigure(ListOf("rows", model.rowNames), DiagnoseTrainingRows(model), subject, recipe);
}

std::optional<Figure> DistanceFigure(const SharedNames& names, const RowDiagnosis& rows, const std::string& subject,
                                     const FigureRecipe& recipe) {
  const auto isThere = [](double number) { return !std::isnan(number); };
  if (std::none_of(rows.distances.begin(), rows.distances.end(), isThere)) return std::nullopt;
  const bool hasT2 = std::any_of(rows.t2.begin(), rows.t2.end(), isThere);
  Figure figure = NewFigure("distance", Figure::Kind::Rows, hasT2 ? "distance and T2" : "distance", subject, recipe);
  FigurePanel panel;
  FigureMark points = MarkOf(FigureMark::Type::Points, FigureLook::Data, hasT2 ? rows.t2 : NumbersTo(rows.t2.size()),
                             rows.distances);
  points.names = names;
  points.labels = true;
  points.selected = RowsWith(rows.flags, {"T2 99 %", "distance 99 %"});
  panel.x.label = hasT2 ? "Hotelling's T2" : "row";
  panel.x.whole = !hasT2;
  if (hasT2) panel.x.low = 0.0;
  panel.y.label = "distance to the model, normalised";
  panel.y.low = 0.0;
  const auto add = [&panel](const LimitPair& limits, const auto& rule) {
    if (limits.at95) panel.marks.push_back(rule(*limits.at95, FigureLook::Limit, LimitName("95 %", *limits.at95)));
    if (limits.at99) panel.marks.push_back(rule(*limits.at99, FigureLook::Limit, LimitName("99 %", *limits.at99)));
  };
  if (hasT2) add(rows.limits.t2, UprightAt);
  add(rows.limits.distance, LevelAt);
  panel.marks.push_back(points);
  figure.panels.push_back(panel);
  figure.alt = DistanceAlt(names->names, rows);
  return figure;
}

}  // namespace kalmia::analysis

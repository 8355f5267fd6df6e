// Figures of what judges a model: by number of components, measured against predicted, permutations.

#include <algorithm>
#include <cmath>

#include "kalmia/analysis/figure/internal/FigureParts.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

constexpr int kDigits = 4;

std::string ChosenName(bool isChosen) { return isChosen ? "chosen" : "given"; }

/// A bar for each share beside the others, around the place of its model.
FigureMark SharesMark(const std::vector<double>& shares, std::size_t place, std::size_t places,
                      const std::string& name) {
  constexpr FigureLook kLooks[] = {FigureLook::Faint, FigureLook::Data, FigureLook::Second};
  const double width = 0.84 / static_cast<double>(places);
  FigureMark bars = MarkOf(FigureMark::Type::Bars, places == 2 ? kLooks[place + 1] : kLooks[place], {}, shares, name);
  const double shift = (static_cast<double>(place) - (static_cast<double>(places) - 1) / 2) * width;
  for (std::size_t a = 0; a < shares.size(); ++a) bars.x.push_back(static_cast<double>(a) + shift);
  bars.width = 0.92 * width;
  return bars;
}

FigureAxis ModelsAxis(const std::vector<std::string>& labels) {
  FigureAxis axis;
  axis.label = "components";
  axis.kind = FigureAxis::Kind::Category;
  axis.categories = ListOf("", labels);
  return axis;
}

std::vector<double> ColumnOf(const RealMatrix& matrix, std::size_t column) {
  std::vector<double> numbers;
  for (std::size_t i = 0; i < matrix.rows; ++i) numbers.push_back(matrix(i, column));
  return numbers;
}

/// The line by least squares through runs, which meets 0 at the intercept and goes through their means.
FigureMark LineOfRuns(const std::vector<double>& x, const std::vector<double>& y, double intercept) {
  double sumX = 0.0, sumY = 0.0;
  int count = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (std::isnan(x[i]) || std::isnan(y[i])) continue;
    sumX += x[i];
    sumY += y[i];
    ++count;
  }
  const double slope = (sumY - count * intercept) / sumX;
  return MarkOf(FigureMark::Type::Line, FigureLook::Plain, {0.0, 1.0}, {intercept, intercept + slope}, "least squares");
}

}  // namespace

void TakeCommonRange(FigurePanel* panel) {
  double low = INFINITY, high = -INFINITY;
  const auto include = [&low, &high](double number) {
    if (!std::isfinite(number)) return;
    low = std::min(low, number);
    high = std::max(high, number);
  };
  for (const FigureMark& mark : panel->marks) {
    for (std::size_t i = 0; i < mark.x.size(); ++i) {
      if (!std::isfinite(mark.x[i]) || !std::isfinite(mark.y[i])) continue;
      include(mark.x[i]);
      include(mark.y[i]);
      if (!mark.low.empty()) include(mark.low[i]);
      if (!mark.high.empty()) include(mark.high[i]);
    }
  }
  if (!(low <= high)) return;
  const double margin = low < high ? 0.05 * (high - low) : std::max(std::fabs(low), 1.0) / 10;
  panel->x.low = panel->y.low = low - margin;
  panel->x.high = panel->y.high = high + margin;
  const std::vector<double> ends = {low - margin, high + margin};
  panel->marks.insert(panel->marks.begin(), MarkOf(FigureMark::Type::Line, FigureLook::Plain, ends, ends));
}

std::vector<std::string> LabelsOf(const StoredValidation& validation) {
  std::vector<std::string> labels;
  for (const StoredValidationEntry& entry : validation.components) {
    std::string label;
    for (const int count : entry.kinds) label += (label.empty() ? "" : " + ") + std::to_string(count);
    labels.push_back(entry.components == 0 || label.empty() ? std::to_string(entry.components) : label);
  }
  return labels;
}

SharesByNumber SharesOf(const StoredValidation& validation, bool hasY) {
  SharesByNumber numbers;
  std::vector<double> r2x, r2y, q2;
  numbers.labels = LabelsOf(validation);
  for (const StoredValidationEntry& entry : validation.components) {
    r2x.push_back(entry.r2x);
    r2y.push_back(entry.r2y);
    q2.push_back(entry.q2);
  }
  numbers.shares.emplace_back("R2X", r2x);
  if (hasY) numbers.shares.emplace_back("R2Y", r2y);
  numbers.shares.emplace_back("Q2", q2);
  numbers.model = validation.Model();
  numbers.isChosen = !validation.rule.empty();
  return numbers;
}

std::optional<Figure> ComponentsFigure(const SharesByNumber& numbers, const std::string& subject,
                                       const FigureRecipe& recipe) {
  if (numbers.labels.size() < 2) return std::nullopt;
  Figure figure = NewFigure("components", Figure::Kind::Components, "R2 and Q2 by number of components", subject,
                            recipe);
  FigurePanel panel;
  panel.x = ModelsAxis(numbers.labels);
  panel.y.label = "share";
  const bool isKnown = numbers.model < numbers.labels.size();
  figure.alt = "Models of " + numbers.labels.front() + " to " + numbers.labels.back() + " components";
  if (isKnown) {
    figure.alt += "; " + ChosenName(numbers.isChosen) + ": " + numbers.labels[numbers.model];
  }
  for (std::size_t i = 0; i < numbers.shares.size(); ++i) {
    const auto& [name, shares] = numbers.shares[i];
    panel.marks.push_back(SharesMark(shares, i, numbers.shares.size(), name));
    if (isKnown) figure.alt += ", " + name + " " + Fixed(shares[numbers.model], 4);
  }
  panel.marks.push_back(LevelAt(0.0, FigureLook::Plain, ""));
  if (isKnown) {
    panel.marks.push_back(
        UprightAt(static_cast<double>(numbers.model), FigureLook::Centre, ChosenName(numbers.isChosen)));
  }
  figure.alt += ".";
  figure.panels.push_back(panel);
  return figure;
}

ErrorsByNumber ErrorsOf(const RefitValidation& validation, std::vector<std::string> labels) {
  ErrorsByNumber errors;
  errors.labels = std::move(labels);
  const LeftOutErrors& leftOut = validation.errors;
  std::size_t rows = 0;
  for (std::size_t i = 0; i < leftOut.rowErrors.rows; ++i) rows += std::isnan(leftOut.rowErrors(i, 0)) ? 0U : 1U;
  for (const double press : leftOut.press) errors.meanSquares.push_back(press / static_cast<double>(rows));
  const bool isOne = validation.yNames.size() == 1;
  errors.unit = isOne ? leftOut.deviations.front() : 1.0;
  errors.label = isOne ? "RMSECV, in units of " + validation.yNames.front()
                       : "root of the mean squared error, in standard deviations";
  errors.choice = validation.choice ? &*validation.choice : nullptr;
  errors.model = validation.model;
  return errors;
}

std::optional<Figure> ValidationFigure(const ErrorsByNumber& errors, const std::string& subject,
                                       const FigureRecipe& recipe) {
  if (errors.meanSquares.size() < 2) return std::nullopt;
  Figure figure = NewFigure("validation", Figure::Kind::Components, "errors of left-out rows", subject, recipe);
  FigurePanel panel;
  panel.x = ModelsAxis(errors.labels);
  panel.y.label = errors.label;
  const auto root = [&errors](double meanSquare) { return errors.unit * std::sqrt(std::max(0.0, meanSquare)); };
  FigureMark line = MarkOf(FigureMark::Type::Line, FigureLook::Data, {}, {});
  for (std::size_t a = 0; a < errors.meanSquares.size(); ++a) {
    line.x.push_back(static_cast<double>(a));
    line.y.push_back(root(errors.meanSquares[a]));
  }
  FigureMark points = line;
  points.type = FigureMark::Type::Points;
  const bool hasError = errors.choice != nullptr && errors.choice->rule == SelectionRule::OneSE;
  const std::size_t model = errors.model, models = line.y.size();
  if (model < models) {
    panel.marks.push_back(
        UprightAt(static_cast<double>(model), FigureLook::Centre, ChosenName(errors.choice != nullptr)));
  }
  if (hasError) {
    const std::size_t best = errors.choice->best;
    const double error = errors.choice->limit - errors.meanSquares[best];
    points.low.assign(models, kNotANumber);
    points.high.assign(models, kNotANumber);
    points.low[best] = root(errors.meanSquares[best] - error);
    points.high[best] = root(errors.choice->limit);
    panel.marks.push_back(LevelAt(points.high[best], FigureLook::Limit, "least + 1 SE"));
  }
  panel.marks.push_back(line);
  panel.marks.push_back(points);
  const auto least = std::min_element(line.y.begin(), line.y.end());
  figure.alt = panel.y.label + ": " + Significant(line.y.front(), kDigits) + " of 0 components, least " +
               Significant(*least, kDigits) + " of " + errors.labels[static_cast<std::size_t>(least - line.y.begin())];
  if (model < models) {
    figure.alt += ", " + Significant(line.y[model], kDigits) + " of " + errors.labels[model] + ", the number " +
                  ChosenName(errors.choice != nullptr);
  }
  figure.alt += ".";
  figure.panels.push_back(panel);
  return figure;
}

std::optional<Figure> FitFigure(const FitOfColumns& fit, const std::string& subject, const FigureRecipe& recipe) {
  if (fit.fitted.rows == 0) return std::nullopt;
  Figure figure = NewFigure("fit", Figure::Kind::Rows, "measured and predicted", subject, recipe);
  const std::size_t shown = std::min(fit.yNames.size(), kMostYPanels);
  figure.alt = Counted(fit.rows->names.size(), "row");
  for (std::size_t j = 0; j < shown; ++j) {
    FigurePanel panel;
    panel.x.label = fit.yNames[j] + ", measured";
    panel.y.label = "predicted";
    FigureMark fitted = MarkOf(FigureMark::Type::Points, FigureLook::Data, fit.measured[j], ColumnOf(fit.fitted, j),
                               "fitted");
    fitted.names = fit.rows;
    if (fit.leftOut.rows > 0) {
      FigureMark leftOut = MarkOf(FigureMark::Type::Points, FigureLook::Second, fit.measured[j],
                                  ColumnOf(fit.leftOut, j), "cross-validated");
      leftOut.names = fit.rows;
      leftOut.labels = true;
      panel.marks.push_back(leftOut);
    }
    fitted.labels = fit.leftOut.rows == 0;
    panel.marks.push_back(fitted);
    double worst = 0.0;
    std::string name;
    const FigureMark& judged = panel.marks.front();
    for (std::size_t i = 0; i < judged.x.size(); ++i) {
      const double away = std::fabs(judged.y[i] - judged.x[i]);
      if (!(away > worst)) continue;
      worst = away;
      name = fit.rows->names[i];
    }
    figure.alt += "; " + OneLine(fit.yNames[j]) + ": " + judged.name + " values are at most " +
                  Significant(worst, kDigits) + " off" + (name.empty() ? "" : ", in row " + OneLine(name));
    TakeCommonRange(&panel);
    figure.panels.push_back(panel);
  }
  figure.alt += ".";
  if (shown < fit.yNames.size()) {
    figure.notes.push_back("the first " + std::to_string(shown) + " of " + std::to_string(fit.yNames.size()) +
                           " Y columns");
  }
  return figure;
}

Figure PermutationFigure(const PermutationTest& test, const std::string& subject, const FigureRecipe& recipe) {
  Figure figure = NewFigure("permutation", Figure::Kind::Other, "models of Y in random order", subject, recipe);
  FigurePanel panel;
  panel.x.label = "correlation with the true Y, absolute value";
  panel.x.low = -0.02;
  panel.x.high = 1.05;
  panel.y.label = "R2 and Q2";
  FigureMark r2 = MarkOf(FigureMark::Type::Points, FigureLook::Data, {}, {}, "R2");
  FigureMark q2 = MarkOf(FigureMark::Type::Points, FigureLook::Second, {}, {}, "Q2");
  for (const PermutationRun& run : test.runs) {
    for (FigureMark* mark : {&r2, &q2}) mark->x.push_back(std::fabs(run.correlation));
    r2.y.push_back(run.r2);
    q2.y.push_back(run.q2);
  }
  panel.marks.push_back(LevelAt(0.0, FigureLook::Plain, ""));
  for (const auto& [mark, intercept] : {std::make_pair(&r2, test.judgement.interceptR2),
                                        std::make_pair(&q2, test.judgement.interceptQ2)}) {
    if (!std::isnan(intercept)) panel.marks.push_back(LineOfRuns(mark->x, mark->y, intercept));
    panel.marks.push_back(*mark);
  }
  for (FigureMark* mark : {&r2, &q2}) {
    mark->x = {std::fabs(test.original.correlation)};
    mark->y = {mark == &r2 ? test.original.r2 : test.original.q2};
    mark->names = ListOf("", {mark->name + " of the true Y"});
    mark->labels = true;
    panel.marks.push_back(*mark);
  }
  figure.alt = Counted(test.runs.size(), "model") + " of Y in random order; of the true Y, at 1: R2 " +
               Fixed(test.original.r2, 4) + " (p " + Significant(test.judgement.pR2, 2) + "), Q2 " +
               Fixed(test.original.q2, 4) + " (p " + Significant(test.judgement.pQ2, 2) + ").";
  figure.panels.push_back(panel);
  return figure;
}

}  // namespace kalmia::analysis

#include "kalmia/analysis/figure/PredictFigures.h"

#include <algorithm>
#include <cmath>

#include "kalmia/analysis/figure/internal/ModelSpaces.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

constexpr auto kNewRows = "new-rows";

/// Where new rows lie in the space of the training rows.
template <class Row>
ScoreSpace SpaceOfNewRows(ScoreSpace space, const std::vector<std::string>& names, const std::vector<Row>& rows) {
  space.rows = ListOf(kNewRows, names);
  space.areNew = true;
  space.scores = RealMatrix(rows.size(), space.Components(), kNotANumber);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t a = 0; a < rows[i].t.size() && a < space.Components(); ++a) space.scores(i, a) = rows[i].t[a];
  }
  return space;
}

/// The training rows below the new ones.
Figure ScoresOfNewRows(const ScoreSpace& training, const ScoreSpace& fresh, const FigureAxes& axes,
                       const std::string& subject, const FigureRecipe& recipe) {
  Figure figure = ScoresFigure(fresh, axes, subject, recipe);
  if (training.scores.rows == 0) {
    figure.notes.push_back("the model has no training rows with it: only new rows are shown");
    return figure;
  }
  FigureMark faint = MarkOf(FigureMark::Type::Points, FigureLook::Faint,
                            axes.y ? training.Column(axes.x) : NumbersTo(training.scores.rows),
                            training.Column(axes.y.value_or(axes.x)), "training rows");
  faint.names = training.rows;
  std::vector<FigureMark>& marks = figure.panels.front().marks;
  marks.back().name = "new rows";
  marks.insert(marks.end() - 1, faint);
  return figure;
}

/// Predicted values of each Y column with their intervals.
std::optional<Figure> PredictionsFigure(const YModelInfo& model, const PLSPredictions& result,
                                        const std::string& subject, const FigureRecipe& recipe) {
  if (result.classes || result.predictions.empty()) return std::nullopt;
  Figure figure = NewFigure("predictions", Figure::Kind::Rows, "predicted values", subject, recipe);
  const SharedNames rows = ListOf(kNewRows, result.rows.names);
  const std::size_t shown = std::min(model.yNames.size(), kMostYPanels);
  figure.alt = Counted(result.rows.names.size(), "new row");
  for (std::size_t j = 0; j < shown; ++j) {
    const std::vector<double>& measured = result.measured[j];
    const bool isMeasured = std::any_of(measured.begin(), measured.end(), [](double y) { return !std::isnan(y); });
    FigureMark points = MarkOf(FigureMark::Type::Points, FigureLook::Data,
                               isMeasured ? measured : NumbersTo(result.predictions.size()), {});
    std::size_t covered = 0, judged = 0;
    for (std::size_t i = 0; i < result.predictions.size(); ++i) {
      const double y = result.predictions[i].y.empty() ? kNotANumber : result.predictions[i].y[j];
      const double half = result.diagnosis.halfWidths.rows > 0 ? result.diagnosis.halfWidths(i, j) : kNotANumber;
      points.y.push_back(y);
      points.low.push_back(y - half);
      points.high.push_back(y + half);
      if (result.diagnosis.IsBeyond99(i)) points.selected.push_back(static_cast<int>(i));
      if (!isMeasured || std::isnan(measured[i]) || std::isnan(y - half)) continue;
      ++judged;
      if (std::fabs(measured[i] - y) <= half) ++covered;
    }
    points.names = rows;
    points.labels = true;
    FigurePanel panel;
    panel.x.label = isMeasured ? model.yNames[j] + ", measured" : "row";
    panel.x.whole = !isMeasured;
    panel.y.label = isMeasured ? "predicted, with 95 % intervals" : model.yNames[j] + ", predicted";
    panel.marks.push_back(points);
    if (isMeasured) TakeCommonRange(&panel);
    figure.panels.push_back(panel);
    if (judged == 0) continue;
    figure.alt += "; " + OneLine(model.yNames[j]) + ": " + std::to_string(covered) + " of " + std::to_string(judged) +
                  " measured values lie within their intervals";
  }
  figure.alt += ".";
  if (shown < model.yNames.size()) {
    figure.notes.push_back("the first " + std::to_string(shown) + " of " + std::to_string(model.yNames.size()) +
                           " Y columns");
  }
  return figure;
}

template <class Model, class Rows>
std::vector<Figure> FiguresOfRows(const Model& model, const NewRows& newRows, const Rows& rows,
                                  const RowDiagnosis& diagnosis, const FigureAxes& axes, const std::string& subject,
                                  const FigureRecipe& recipe) {
  std::vector<Figure> figures;
  if (model.Components() > 0) {
    const ScoreSpace training = SpaceOf(model);
    figures.push_back(
        ScoresOfNewRows(training, SpaceOfNewRows(training, newRows.names, rows), axes, subject, recipe));
  }
  if (auto distance = DistanceFigure(ListOf(kNewRows, newRows.names), diagnosis, subject, recipe)) {
    figures.push_back(std::move(*distance));
  }
  return figures;
}

void AddContributions(const ModelInfo& model, const std::vector<RowContributions>& rows, const std::string& subject,
                      const FigureRecipe& recipe, std::vector<Figure>* figures) {
  for (Figure& figure : ContributionFigures(rows, model.xNames, subject, recipe)) figures->push_back(std::move(figure));
}

std::string SubjectOf(const ModelInfo& model) { return "new rows by the model of " + FileName(model.table); }

/// Of a model without components there are none to choose.
template <class Model>
FigureAxes UsualAxes(const FigureRecipe& recipe, const Model& model) {
  const auto components = static_cast<std::size_t>(model.Components());
  return AxesOf(recipe, components);
}

template <class Model>
std::vector<Figure> FiguresOfY(const Model& model, const PLSPredictions& result, const FigureAxes& axes,
                               const FigureRecipe& recipe, const std::vector<RowContributions>& contributions) {
  const std::string subject = SubjectOf(model);
  std::vector<Figure> figures =
      FiguresOfRows(model, result.rows, result.predictions, result.diagnosis, axes, subject, recipe);
  if (auto predictions = PredictionsFigure(model, result, subject, recipe)) figures.push_back(std::move(*predictions));
  AddContributions(model, contributions, subject, recipe, &figures);
  return figures;
}

}  // namespace

std::vector<Figure> Figures(const StoredPLS& model, const PLSPredictions& result, const FigureRecipe& recipe,
                            const std::vector<RowContributions>& contributions) {
  return FiguresOfY(model, result, UsualAxes(recipe, model), recipe, contributions);
}

std::vector<Figure> Figures(const StoredOPLS& model, const PLSPredictions& result, const FigureRecipe& recipe,
                            const std::vector<RowContributions>& contributions) {
  return FiguresOfY(model, result, AxesOf(recipe, model), recipe, contributions);
}

std::vector<Figure> Figures(const StoredO2PLS& model, const PLSPredictions& result, const FigureRecipe& recipe,
                            const std::vector<RowContributions>& contributions) {
  return FiguresOfY(model, result, UsualAxes(recipe, model), recipe, contributions);
}

std::vector<Figure> Figures(const StoredPCA& model, const PCAPredictions& result, const FigureRecipe& recipe,
                            const std::vector<RowContributions>& contributions) {
  const std::string subject = SubjectOf(model);
  std::vector<Figure> figures = FiguresOfRows(model, result.rows, result.scores, result.diagnosis,
                                              UsualAxes(recipe, model), subject, recipe);
  AddContributions(model, contributions, subject, recipe, &figures);
  return figures;
}

}  // namespace kalmia::analysis

#include "kalmia/analysis/figure/ModelFigures.h"
#include "kalmia/analysis/figure/internal/ModelSpaces.h"
#include "kalmia/analysis/figure/internal/YFigures.h"
#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/model/internal/OPLSDiagnostics.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

/// What judged the models by refits; otherwise the components one after the other, cumulated.
SharesByNumber SharesOf(const OPLSAnalysis& analysis) {
  if (analysis.fit.model.validation) return SharesOf(*analysis.fit.model.validation, true);
  SharesByNumber numbers;
  std::vector<double> r2x, r2y, q2;
  int predictive = 0, orthogonal = 0;
  std::size_t kept = 0;
  double x = 0.0, y = 0.0;
  for (const OPLSComponentRecord& record : analysis.fit.components) {
    numbers.labels.push_back(record.orthogonal ? "to" + std::to_string(++orthogonal)
                                               : "t" + std::to_string(++predictive));
    r2x.push_back(x += record.r2x);
    r2y.push_back(y += record.r2y);
    q2.push_back(record.q2Cum);
    if (record.kept) ++kept;
  }
  numbers.shares = {{"R2X", r2x}, {"R2Y", r2y}};
  if (analysis.recipe.method == ValidationMethod::Component) numbers.shares.emplace_back("Q2", q2);
  numbers.model = kept > 0 ? kept - 1 : numbers.labels.size();
  return numbers;
}

std::vector<std::string> SymbolsOf(const std::string& symbol, const StoredOPLS& model) {
  std::vector<std::string> symbols;
  for (int a = 1; a <= model.Predictive(); ++a) symbols.push_back(symbol + std::to_string(a));
  for (int o = 1; o <= model.Orthogonal(); ++o) symbols.push_back(symbol + "o" + std::to_string(o));
  return symbols;
}

std::vector<std::vector<double>> BothOf(const NCDataMatrix<float>& predictive, const NCDataMatrix<float>& orthogonal) {
  std::vector<std::vector<double>> vectors = VectorsOf(predictive);
  for (std::vector<double>& vector : VectorsOf(orthogonal)) vectors.push_back(std::move(vector));
  return vectors;
}

/// Of each column the covariance and the correlation with the scores of a predictive component, the one across where
/// it is one.
Figure SPlotFigure(const OPLSResult& fit, const FigureAxes& axes, const SharedNames& columns,
                   const std::string& subject, const FigureRecipe& recipe) {
  Figure figure = NewFigure("s-plot", Figure::Kind::Columns, "S-plot", subject, recipe);
  const bool isPredictive = axes.x < static_cast<std::size_t>(fit.model.Predictive());
  const int component = isPredictive ? static_cast<int>(axes.x) + 1 : 1;
  const std::string symbol = "t" + std::to_string(component);
  FigureMark points = MarkOf(FigureMark::Type::Points, FigureLook::Data, {}, {});
  std::size_t largest = 0;
  for (std::size_t k = 0; k < columns->names.size(); ++k) {
    const ColumnWithScores related = RelateColumn(fit.scaledX, static_cast<int>(k) + 1, fit.model.opls.t[component]);
    points.x.push_back(related.covariance);
    points.y.push_back(related.correlation);
    if (std::fabs(related.covariance) > std::fabs(points.x[largest])) largest = k;
  }
  points.names = columns;
  points.labels = true;
  FigurePanel panel;
  panel.x.label = "covariance with " + symbol;
  panel.y.label = "correlation with " + symbol;
  panel.y.low = -1.05;
  panel.y.high = 1.05;
  panel.marks = {LevelAt(0.0, FigureLook::Plain, ""), UprightAt(0.0, FigureLook::Plain, ""), points};
  figure.panels.push_back(panel);
  figure.alt = Counted(columns->names.size(), "column") + " by covariance and correlation with " + symbol +
               "; the largest covariance is that of " + OneLine(columns->names[largest]) + ", " +
               Significant(points.x[largest], 4) + ".";
  return figure;
}

/// The scores while rows were left out beside those of the model, of a validation by component.
std::optional<Figure> LeftOutScoresFigure(const OPLSResult& fit, const ScoreSpace& space, const FigureAxes& axes,
                                          const std::string& subject, const FigureRecipe& recipe) {
  const std::vector<std::vector<double>> leftOut = BothOf(fit.crossValidated.t, fit.crossValidated.to);
  const std::size_t up = axes.y.value_or(axes.x);
  if (leftOut.size() <= std::max(axes.x, up)) return std::nullopt;
  Figure figure = NewFigure("cross-validated-scores", Figure::Kind::Rows, "cross-validated scores", subject, recipe);
  const std::vector<double> rows = NumbersTo(space.scores.rows);
  FigureMark fitted = MarkOf(FigureMark::Type::Points, FigureLook::Faint, axes.y ? space.Column(axes.x) : rows,
                             space.Column(up), "of the model");
  FigureMark points = MarkOf(FigureMark::Type::Points, FigureLook::Data, axes.y ? leftOut[axes.x] : rows, leftOut[up],
                             "cross-validated");
  fitted.names = points.names = space.rows;
  points.labels = true;
  FigurePanel panel;
  panel.x.label = axes.y ? space.Label(axes.x) : "row";
  panel.y.label = space.Label(up);
  panel.marks = {LevelAt(0.0, FigureLook::Plain, ""), fitted, points};
  figure.panels.push_back(panel);
  figure.alt = Counted(space.scores.rows, "row") + " by " + panel.x.label + " and " + panel.y.label +
               " of the model, and while they were left out.";
  return figure;
}

}  // namespace

std::vector<Figure> Figures(const OPLSAnalysis& analysis, const FigureRecipe& recipe,
                            const std::vector<RowContributions>& contributions) {
  const OPLSResult& fit = analysis.fit;
  const StoredOPLS& model = fit.model;
  const std::string subject = SubjectOf("OPLS", model);
  std::vector<Figure> figures;
  const auto add = [&figures](std::optional<Figure> figure) {
    if (figure) figures.push_back(std::move(*figure));
  };
  YFigureParts parts = {model, fit.data, fit.classes, analysis.validation ? &*analysis.validation : nullptr,
                        analysis.permutation, SharesOf(analysis), std::nullopt, {}};
  if (model.Components() > 0) {
    ScoreSpace space = SpaceOf(model);
    TakeClasses(fit.classes, &space);
    const FigureAxes axes = AxesOf(recipe, model);
    const SharedNames columns = ListOf("columns", model.xNames);
    add(ScoresFigure(space, axes, subject, recipe));
    add(LoadingsFigure({columns, BothOf(model.opls.p.back(), model.opls.po), SymbolsOf("p", model)}, axes, subject,
                       recipe));
    add(SPlotFigure(fit, axes, columns, subject, recipe));
    add(LeftOutScoresFigure(fit, space, axes, subject, recipe));
    parts.coefficients = CoefficientsInOriginalUnits(model);
    parts.importances = {ImportanceOf("VIP, predictive", PredictiveImportance(model), parts.validation, 0)};
    if (model.Orthogonal() > 0) {
      parts.importances.push_back(ImportanceOf("VIP, orthogonal", OrthogonalImportance(model), parts.validation, 1));
    }
  } else if (recipe.axes) {
    AxesOf(recipe, 0);
  }
  AddYFigures(parts, subject, recipe, &figures);
  for (Figure& figure : ContributionFigures(contributions, model.xNames, subject, recipe)) add(std::move(figure));
  return figures;
}

}  // namespace kalmia::analysis

#include "kalmia/analysis/figure/ModelFigures.h"
#include "kalmia/analysis/figure/internal/FigureParts.h"
#include "kalmia/analysis/model/ClassPredictions.h"
#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/model/TrainingRows.h"
#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

namespace {

ScoreSpace SpaceOf(const PLSResult& fit) {
  const StoredPLS& model = fit.model;
  ScoreSpace space;
  space.rows = ListOf("rows", model.rowNames);
  space.scores = TrainingScores(model);
  for (int a = 1; a <= model.Components(); ++a) space.symbols.push_back("t" + std::to_string(a));
  for (const ComponentRecord& record : model.components) space.shares.push_back(record.r2x);
  space.trainingRows = model.rows;
  if (model.rowTerms) space.moments = model.rowTerms->scores;
  if (fit.classes) {
    space.classes = fit.classes->classes.classOfRow;
    space.classNames = fit.classes->classes.names;
  }
  return space;
}

/// What judged the models by refits; otherwise the cumulated figures of the components.
SharesByNumber SharesOf(const PLSAnalysis& analysis) {
  if (analysis.fit.model.validation) return SharesOf(*analysis.fit.model.validation, true);
  SharesByNumber numbers;
  std::vector<double> r2x, r2y, q2;
  for (const ComponentRecord& record : analysis.fit.components) {
    numbers.labels.push_back(std::to_string(numbers.labels.size() + 1));
    r2x.push_back(record.r2xCum);
    r2y.push_back(record.y.r2Cum);
    q2.push_back(record.y.q2Cum);
  }
  numbers.shares = {{"R2X", r2x}, {"R2Y", r2y}};
  if (analysis.recipe.method == ValidationMethod::Component) numbers.shares.emplace_back("Q2", q2);
  numbers.model = static_cast<std::size_t>(analysis.fit.model.Components());
  numbers.model = numbers.model > 0 ? numbers.model - 1 : numbers.labels.size();
  return numbers;
}

/// Coefficients of each Y column with their intervals.
Figure CoefficientsFigure(const PLSAnalysis& analysis, const SharedNames& columns, const std::string& subject,
                          const FigureRecipe& recipe) {
  const StoredPLS& model = analysis.fit.model;
  const Coefficients coefficients = CoefficientsInOriginalUnits(*model.pls, model.xScaling, model.yScaling);
  std::vector<ColumnNumbers> panels;
  for (std::size_t j = 0; j < model.yNames.size(); ++j) {
    ColumnNumbers panel = {"coefficient, " + model.yNames[j], {}, nullptr};
    for (const std::vector<double>& slopes : coefficients.slopes) panel.numbers.push_back(slopes[j]);
    if (analysis.validation && !analysis.validation->coefficients.empty()) {
      panel.intervals = &analysis.validation->coefficients[j];
    }
    panels.push_back(std::move(panel));
  }
  return ColumnsFigure("coefficients", "coefficients", columns, panels, std::nullopt, subject, recipe);
}

Figure VipFigure(const PLSAnalysis& analysis, const SharedNames& columns, const std::string& subject,
                 const FigureRecipe& recipe) {
  ColumnNumbers panel = {"VIP", VariableImportance(*analysis.fit.model.pls), nullptr};
  if (analysis.validation && !analysis.validation->importances.empty()) {
    panel.intervals = &analysis.validation->importances.front();
  }
  return ColumnsFigure("vip", "variable importance", columns, {panel}, 1.0, subject, recipe);
}

std::vector<std::string> LabelsOf(const StoredValidation& validation) {
  std::vector<std::string> labels;
  for (const StoredValidationEntry& entry : validation.components) labels.push_back(std::to_string(entry.components));
  return labels;
}

}  // namespace

std::vector<Figure> Figures(const PLSAnalysis& analysis, const FigureRecipe& recipe,
                            const std::vector<RowContributions>& contributions) {
  const PLSResult& fit = analysis.fit;
  const StoredPLS& model = fit.model;
  const std::string of = model.classes ? OneLine(model.classes->column) : Listed(model.yNames, 3);
  const std::string subject = "PLS of " + of + " on " + FileName(model.table);
  std::vector<Figure> figures;
  const auto add = [&figures](std::optional<Figure> figure) {
    if (figure) figures.push_back(std::move(*figure));
  };
  const SharedNames columns = ListOf("columns", model.xNames);
  const bool hasComponents = model.Components() > 0;
  if (hasComponents) {
    const ScoreSpace space = SpaceOf(fit);
    const FigureAxes axes = AxesOf(recipe, space.Components());
    add(ScoresFigure(space, axes, subject, recipe));
    ColumnVectors loadings = {columns, VectorsOf(*model.pls->GetPprim()), {}};
    for (int a = 1; a <= model.Components(); ++a) loadings.symbols.push_back("p" + std::to_string(a));
    add(LoadingsFigure(loadings, axes, subject, recipe));
  } else if (recipe.axes) {
    AxesOf(recipe, 0);
  }
  add(DistanceFigure(model, subject, recipe));
  add(ComponentsFigure(SharesOf(analysis), subject, recipe));
  if (analysis.validation) {
    add(ValidationFigure(ErrorsOf(*analysis.validation, LabelsOf(*model.validation)), subject, recipe));
  }
  if (!fit.classes && model.rowStatistics) {
    add(FitFigure({ListOf("rows", model.rowNames), model.yNames, fit.data.measuredY, model.rowStatistics->fitted,
                   model.rowStatistics->leftOut},
                  subject, recipe));
  }
  if (hasComponents) {
    add(CoefficientsFigure(analysis, columns, subject, recipe));
    add(VipFigure(analysis, columns, subject, recipe));
  }
  if (analysis.permutation) add(PermutationFigure(*analysis.permutation, subject, recipe));
  if (model.classes && model.classes->leftOut && analysis.validation && analysis.validation->classes) {
    const ClassValidation& classes = *analysis.validation->classes;
    add(ConfusionFigure(classes.figures, classes.classes.names, true, subject, recipe));
    add(RocFigure(classes.classes.classOfRow, classes.values, classes.figures, classes.classes.names, true, subject,
                  recipe));
  } else if (fit.classes && model.classes->fitted) {
    const Classes& classes = fit.classes->classes;
    add(ConfusionFigure(*model.classes->fitted, classes.names, false, subject, recipe));
    add(RocFigure(classes.classOfRow, fit.classes->values, *model.classes->fitted, classes.names, false, subject,
                  recipe));
  }
  for (Figure& figure : ContributionFigures(contributions, model.xNames, subject, recipe)) {
    figures.push_back(std::move(figure));
  }
  return figures;
}

std::vector<std::string> FigureNames(std::size_t contributions) {
  std::vector<std::string> names = {"scores",       "loadings", "distance",    "components", "validation", "fit",
                                    "coefficients", "vip",      "permutation", "confusion",  "roc"};
  for (std::size_t i = 1; i <= contributions; ++i) names.push_back("contributions-" + std::to_string(i));
  return names;
}

}  // namespace kalmia::analysis

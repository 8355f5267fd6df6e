#include "kalmia/analysis/figure/ModelFigures.h"
#include "kalmia/analysis/figure/internal/ModelSpaces.h"
#include "kalmia/analysis/figure/internal/YFigures.h"
#include "kalmia/analysis/model/ModelDiagnostics.h"

namespace kalmia::analysis {

namespace {

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

}  // namespace

std::vector<Figure> Figures(const PLSAnalysis& analysis, const FigureRecipe& recipe,
                            const std::vector<RowContributions>& contributions) {
  const PLSResult& fit = analysis.fit;
  const StoredPLS& model = fit.model;
  const std::string subject = SubjectOf("PLS", model);
  std::vector<Figure> figures;
  YFigureParts parts = {model, fit.data, fit.classes, analysis.validation ? &*analysis.validation : nullptr,
                        analysis.permutation, SharesOf(analysis), std::nullopt, {}};
  if (model.Components() > 0) {
    ScoreSpace space = SpaceOf(model);
    TakeClasses(fit.classes, &space);
    const FigureAxes axes = AxesOf(recipe, space.Components());
    figures.push_back(ScoresFigure(space, axes, subject, recipe));
    ColumnVectors loadings = {ListOf("columns", model.xNames), VectorsOf(*model.pls->GetPprim()), {}};
    for (int a = 1; a <= model.Components(); ++a) loadings.symbols.push_back("p" + std::to_string(a));
    figures.push_back(LoadingsFigure(loadings, axes, subject, recipe));
    parts.coefficients = CoefficientsInOriginalUnits(*model.pls, model.xScaling, model.yScaling);
    parts.importances = {ImportanceOf("VIP", VariableImportance(*model.pls), parts.validation, 0)};
  } else if (recipe.axes) {
    AxesOf(recipe, 0);
  }
  AddYFigures(parts, subject, recipe, &figures);
  for (Figure& figure : ContributionFigures(contributions, model.xNames, subject, recipe)) {
    figures.push_back(std::move(figure));
  }
  return figures;
}

std::vector<std::string> FigureNames(std::size_t contributions) {
  std::vector<std::string> names = {
      "scores",      "loadings",     "distance", "components",     "validation",      "fit",
      "s-plot",      "coefficients", "vip",      "permutation",    "confusion",       "roc",
      "predictions", "x-scores",     "y-scores", "x-unique-scores", "y-unique-scores", "joint-scores",
      "x-loadings",  "y-loadings",   "shares",   "cross-validated-scores"};
  for (std::size_t i = 1; i <= contributions; ++i) names.push_back("contributions-" + std::to_string(i));
  return names;
}

}  // namespace kalmia::analysis

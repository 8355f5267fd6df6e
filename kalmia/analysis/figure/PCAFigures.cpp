#include "kalmia/analysis/figure/ModelFigures.h"
#include "kalmia/analysis/figure/internal/ModelSpaces.h"

namespace kalmia::analysis {

namespace {

/// What judged the models by refits; otherwise the cumulated figures of the components.
SharesByNumber SharesOf(const PCAAnalysis& analysis) {
  if (analysis.fit.model.validation) return SharesOf(*analysis.fit.model.validation, false);
  SharesByNumber numbers;
  std::vector<double> r2x, q2;
  for (const PCAComponentRecord& record : analysis.fit.components) {
    numbers.labels.push_back(std::to_string(numbers.labels.size() + 1));
    r2x.push_back(record.r2xCum);
    q2.push_back(record.q2Cum);
  }
  numbers.shares = {{"R2X", r2x}};
  if (analysis.recipe.method == ValidationMethod::Component) numbers.shares.emplace_back("Q2", q2);
  numbers.model = static_cast<std::size_t>(analysis.fit.model.Components());
  numbers.model = numbers.model > 0 ? numbers.model - 1 : numbers.labels.size();
  return numbers;
}

ErrorsByNumber ErrorsOf(const PCAValidation& validation) {
  ErrorsByNumber errors;
  std::size_t rows = 0;
  for (std::size_t i = 0; i < validation.errors.rowErrors.rows; ++i) {
    rows += validation.errors.rowErrors(i, 0) == validation.errors.rowErrors(i, 0) ? 1U : 0U;
  }
  for (const double press : validation.errors.press) {
    errors.labels.push_back(std::to_string(errors.labels.size()));
    errors.meanSquares.push_back(press / static_cast<double>(rows));
  }
  errors.label = "root of the mean squared error of a row, scaled";
  errors.choice = validation.choice ? &*validation.choice : nullptr;
  errors.model = static_cast<std::size_t>(validation.components);
  return errors;
}

}  // namespace

std::vector<Figure> Figures(const PCAAnalysis& analysis, const FigureRecipe& recipe,
                            const std::vector<RowContributions>& contributions) {
  const StoredPCA& model = analysis.fit.model;
  const std::string subject = "PCA of " + FileName(model.table);
  std::vector<Figure> figures;
  const auto add = [&figures](std::optional<Figure> figure) {
    if (figure) figures.push_back(std::move(*figure));
  };
  if (model.Components() > 0) {
    const ScoreSpace space = SpaceOf(model);
    const FigureAxes axes = AxesOf(recipe, space.Components());
    add(ScoresFigure(space, axes, subject, recipe));
    ColumnVectors loadings = {ListOf("columns", model.xNames), VectorsOf(*model.pca->GetPprim()), {}};
    for (int a = 1; a <= model.Components(); ++a) loadings.symbols.push_back("p" + std::to_string(a));
    add(LoadingsFigure(loadings, axes, subject, recipe));
  } else if (recipe.axes) {
    AxesOf(recipe, 0);
  }
  add(DistanceFigure(model, subject, recipe));
  add(ComponentsFigure(SharesOf(analysis), subject, recipe));
  if (analysis.validation) add(ValidationFigure(ErrorsOf(*analysis.validation), subject, recipe));
  for (Figure& figure : ContributionFigures(contributions, model.xNames, subject, recipe)) {
    figures.push_back(std::move(figure));
  }
  return figures;
}

}  // namespace kalmia::analysis

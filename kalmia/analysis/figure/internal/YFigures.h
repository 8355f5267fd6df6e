#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/figure/internal/FigureParts.h"
#include "kalmia/analysis/fit/ClassFit.h"
#include "kalmia/analysis/fit/ModelData.h"

namespace kalmia::analysis {

/// What figures of models of Y show beside scores and loadings.
struct YFigureParts {
  const YModelInfo& model;
  const ModelData& data;
  const std::optional<ClassFit>& classes;
  const RefitValidation* validation;  ///< null without refits
  const std::optional<PermutationTest>& permutation;
  SharesByNumber shares;
  std::optional<Coefficients> coefficients;  ///< nothing of a model without components
  std::vector<ColumnNumbers> importances;    ///< of each kind, likewise
};

/// "PLS of octane on gasoline.csv"
std::string SubjectOf(const std::string& family, const YModelInfo& model);

/// Distance, components, validation, fit, coefficients, VIP, permutation, confusion and ROC, as far as they are there.
void AddYFigures(const YFigureParts& parts, const std::string& subject, const FigureRecipe& recipe,
                 std::vector<Figure>* figures);

/// VIP of one kind, `place` among those of the validation, with its intervals.
ColumnNumbers ImportanceOf(const std::string& name, std::vector<double> numbers, const RefitValidation* validation,
                           std::size_t place);

}  // namespace kalmia::analysis

#include "kalmia/analysis/figure/internal/YFigures.h"

#include <utility>

#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

namespace {

/// Coefficients of each Y column with their intervals.
Figure CoefficientsFigure(const YFigureParts& parts, const SharedNames& columns, const std::string& subject,
                          const FigureRecipe& recipe) {
  std::vector<ColumnNumbers> panels;
  for (std::size_t j = 0; j < parts.model.yNames.size(); ++j) {
    ColumnNumbers panel = {"coefficient, " + parts.model.yNames[j], {}, nullptr};
    for (const std::vector<double>& slopes : parts.coefficients->slopes) panel.numbers.push_back(slopes[j]);
    if (parts.validation != nullptr && !parts.validation->coefficients.empty()) {
      panel.intervals = &parts.validation->coefficients[j];
    }
    panels.push_back(std::move(panel));
  }
  return ColumnsFigure("coefficients", "coefficients", columns, panels, std::nullopt, subject, recipe);
}

/// Of left-out rows where there are any, otherwise of fitted ones.
void AddClassFigures(const YFigureParts& parts, const std::string& subject, const FigureRecipe& recipe,
                     std::vector<Figure>* figures) {
  if (!parts.classes || !parts.model.classes || !parts.model.classes->fitted) return;
  const bool areLeftOut = parts.validation != nullptr && parts.validation->classes.has_value();
  const Classes& classes = areLeftOut ? parts.validation->classes->classes : parts.classes->classes;
  const RealMatrix& values = areLeftOut ? parts.validation->classes->values : parts.classes->values;
  const ClassFigures& found = areLeftOut ? parts.validation->classes->figures : *parts.model.classes->fitted;
  figures->push_back(ConfusionFigure(found, classes.names, areLeftOut, subject, recipe));
  figures->push_back(RocFigure(classes.classOfRow, values, found, classes.names, areLeftOut, subject, recipe));
}

}  // namespace

std::string SubjectOf(const std::string& family, const YModelInfo& model) {
  const std::string of = model.classes ? OneLine(model.classes->column) : Listed(model.yNames, 3);
  return family + " of " + of + " on " + FileName(model.table);
}

ColumnNumbers ImportanceOf(const std::string& name, std::vector<double> numbers, const RefitValidation* validation,
                           std::size_t place) {
  const bool isKnown = validation != nullptr && place < validation->importances.size();
  return {name, std::move(numbers), isKnown ? &validation->importances[place] : nullptr};
}

void AddYFigures(const YFigureParts& parts, const std::string& subject, const FigureRecipe& recipe,
                 std::vector<Figure>* figures) {
  const YModelInfo& model = parts.model;
  const auto add = [figures](std::optional<Figure> figure) {
    if (figure) figures->push_back(std::move(*figure));
  };
  add(DistanceFigure(model, subject, recipe));
  add(ComponentsFigure(parts.shares, subject, recipe));
  if (parts.validation != nullptr) {
    add(ValidationFigure(ErrorsOf(*parts.validation, LabelsOf(*model.validation)), subject, recipe));
  }
  if (!parts.classes && model.rowStatistics) {
    add(FitFigure({ListOf("rows", model.rowNames), model.yNames, parts.data.measuredY, model.rowStatistics->fitted,
                   model.rowStatistics->leftOut},
                  subject, recipe));
  }
  const SharedNames columns = ListOf("columns", model.xNames);
  if (parts.coefficients) add(CoefficientsFigure(parts, columns, subject, recipe));
  if (!parts.importances.empty()) {
    add(ColumnsFigure("vip", "variable importance", columns, parts.importances, 1.0, subject, recipe));
  }
  if (parts.permutation) add(PermutationFigure(*parts.permutation, subject, recipe));
  AddClassFigures(parts, subject, recipe, figures);
}

}  // namespace kalmia::analysis

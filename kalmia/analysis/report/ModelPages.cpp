#include "kalmia/analysis/report/ModelPages.h"

#include <filesystem>

#include "kalmia/analysis/report/PCAReport.h"
#include "kalmia/analysis/report/PLSReport.h"
#include "kalmia/analysis/report/internal/PageParts.h"
#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

namespace {

std::string NameOf(const Table& table) { return OneLine(std::filesystem::path(table.Name()).filename().string()); }

/// What a page has of any model of one table. `title` stands for the recipe's, if that has none.
template <class Analysis>
ReportPage PageOfModel(const std::string& title, const Analysis& analysis, const Notes& notes,
                       const FigureRecipe& recipe, const std::vector<RowContributions>& contributions) {
  const auto& model = analysis.fit.model;
  ReportPage page;
  page.title = recipe.title.empty() ? title : recipe.title;
  page.rowNames = analysis.fit.data.rowNames;
  AddNotes(analysis.fit.data, notes, &page);
  if (!analysis.fit.IsUsable()) return page;
  page.figures = Figures(analysis, recipe, contributions);
  page.components = ComponentsOfFigures(
      model.Components(), recipe.axes.value_or(std::make_pair(1, 2)),
      [&analysis](std::pair<int, int> axes) { return Figures(analysis, FigureRecipe{axes, ""}); });
  AddFacts(model, &page);
  return page;
}

}  // namespace

ReportPage PageOf(const Table& table, const PCAAnalysis& analysis, const Notes& notes, const FigureRecipe& recipe,
                  const std::vector<RowContributions>& contributions) {
  const StoredPCA& model = analysis.fit.model;
  ReportPage page = PageOfModel("PCA of " + NameOf(table), analysis, notes, recipe, contributions);
  page.text = PCAText(analysis, {}, contributions);
  if (!analysis.fit.IsUsable()) return page;
  if (!model.components.empty()) AddShare("R2X", model.components.back().r2xCum, &page);
  AddQ2(model, &page);
  AddDiagnosis(model, &page);
  AddOtherColumns(table, analysis.fit.data, model, &page);
  return page;
}

ReportPage PageOf(const Table& table, const PLSAnalysis& analysis, const Notes& notes, const FigureRecipe& recipe,
                  const std::vector<RowContributions>& contributions) {
  const PLSResult& fit = analysis.fit;
  const std::string of = fit.data.classes ? OneLine(fit.data.classColumn) : Listed(fit.data.yNames, 3);
  ReportPage page =
      PageOfModel("PLS of " + of + " on " + NameOf(table), analysis, notes, recipe, contributions);
  page.text = PLSText(analysis, {}, contributions);
  if (!fit.IsUsable()) return page;
  if (!fit.model.components.empty()) {
    AddShare("R2X", fit.model.components.back().r2xCum, &page);
    AddShare("R2Y", fit.model.components.back().y.r2Cum, &page);
  }
  AddQ2(fit.model, &page);
  AddErrors(fit.model, &page);
  if (fit.classes) AddClasses(fit.data.classColumn, fit.classes->classes, &page);
  AddFits(fit.model, fit.data.measuredY, &page);
  AddDiagnosis(fit.model, &page);
  AddOtherColumns(table, fit.data, fit.model, &page);
  return page;
}

}  // namespace kalmia::analysis

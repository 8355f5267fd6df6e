#include "kalmia/analysis/report/ModelPages.h"

#include <filesystem>

#include "kalmia/analysis/report/O2PLSReport.h"
#include "kalmia/analysis/report/OPLSReport.h"
#include "kalmia/analysis/report/PCAReport.h"
#include "kalmia/analysis/report/PLSReport.h"
#include "kalmia/analysis/report/internal/PageParts.h"
#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

namespace {

std::string FileOf(const std::string& path) { return OneLine(std::filesystem::path(path).filename().string()); }

std::string NameOf(const Table& table) { return FileOf(table.Name()); }

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

ReportPage PageOf(const Table& table, const OPLSAnalysis& analysis, const Notes& notes, const FigureRecipe& recipe,
                  const std::vector<RowContributions>& contributions) {
  const OPLSResult& fit = analysis.fit;
  const StoredOPLS& model = fit.model;
  const std::string of = fit.data.classes ? OneLine(fit.data.classColumn) : Listed(fit.data.yNames, 3);
  ReportPage page;
  page.title = recipe.title.empty() ? "OPLS of " + of + " on " + NameOf(table) : recipe.title;
  page.text = OPLSText(analysis, {}, contributions);
  page.rowNames = fit.data.rowNames;
  page.figures = Figures(analysis, recipe, contributions);
  const auto usual = std::make_pair(1, model.Orthogonal() > 0 ? model.Predictive() + 1 : 2);
  page.components = ComponentsOfFigures(
      model.Components(), recipe.axes.value_or(usual),
      [&analysis](std::pair<int, int> axes) { return Figures(analysis, FigureRecipe{axes, ""}); });
  AddFacts(model, &page);
  AddNotes(fit.data, notes, &page);
  AddQ2(model, &page);
  AddErrors(model, &page);
  if (fit.classes) AddClasses(fit.data.classColumn, fit.classes->classes, &page);
  AddFits(model, fit.data.measuredY, &page);
  AddDiagnosis(model, &page);
  AddOtherColumns(table, fit.data, model, &page);
  return page;
}

ReportPage PageOf(const O2PLSAnalysis& analysis, const Notes& notes, const FigureRecipe& recipe) {
  const O2PLSResult& fit = analysis.fit;
  ReportPage page;
  page.title = recipe.title.empty() ? "O2PLS of " + FileOf(fit.data.x.table) + " and " + FileOf(fit.data.y.table)
                                    : recipe.title;
  page.text = O2PLSText(analysis, {});
  page.rowNames = fit.data.rowNames;
  page.notes = notes.Lines();
  if (!fit.AnyKept()) return page;
  page.figures = Figures(analysis, recipe);
  AddFacts(fit.model, &page);
  AddShare("R2Y from X", fit.r2y, &page);
  AddShare("R2X from Y", fit.r2x, &page);
  AddErrors(fit.model, &page);
  AddFits(fit.model, fit.data.y.measured, &page);
  AddDiagnosis(fit.model, &page);
  return page;
}

}  // namespace kalmia::analysis

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kalmia/analysis/figure/Figure.h"
#include "kalmia/analysis/fit/ModelData.h"
#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/report/ReportPage.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"

namespace kalmia::analysis {

// What pages of models are made of, whatever the family.

/// Where figures that show components stand: components from 1, across and up.
using FiguresAt = std::function<std::vector<Figure>(std::pair<int, int>)>;

/// All components of the figures that show two of them, from the figures of enough pairs: the same numbers, labels and
/// limits. `shown` are those of the page. Nothing of fewer than two components.
std::vector<FigureComponents> ComponentsOfFigures(int components, std::pair<int, int> shown, const FiguresAt& figuresAt);

/// T2, the normalised distance and the limits passed, of each row the model was fitted to; columns without any number
/// are left out.
void AddDiagnosis(const ModelInfo& model, ReportPage* page);

/// Of each Y column, the first six, what was measured, fitted and predicted while the row was left out.
void AddFits(const YModelInfo& model, const std::vector<std::vector<double>>& measured, ReportPage* page);

void AddNumbers(const std::string& name, std::vector<double> numbers, ReportPage* page);
void AddTexts(const std::string& name, std::vector<std::string> texts, ReportPage* page);

/// Columns of the table that no model sees: the texts and those that were left out, at most twenty. `taken` are names
/// that are there already.
void AddOtherColumns(const Table& table, const ModelData& data, const ModelInfo& model, ReportPage* page);

/// The class of each row, empty for none.
void AddClasses(const std::string& name, const Classes& classes, ReportPage* page);

/// The facts that all models have: rows, columns, components.
template <class Model>
void AddFacts(const Model& model, ReportPage* page) {
  page->facts.emplace_back("rows", std::to_string(model.rows));
  page->facts.emplace_back("X columns", std::to_string(model.xNames.size()));
  page->facts.emplace_back("components", std::to_string(model.Components()));
}
/// Q2 of the number of components, where refits judged it.
void AddQ2(const ModelInfo& model, ReportPage* page);
void AddShare(const std::string& name, double share, ReportPage* page);
void AddNumber(const std::string& name, double number, ReportPage* page);
/// RMSEE and RMSECV of the first Y columns.
void AddErrors(const YModelInfo& model, ReportPage* page);

/// The notes, and what was left out of X.
void AddNotes(const ModelData& data, const Notes& notes, ReportPage* page);

}  // namespace kalmia::analysis

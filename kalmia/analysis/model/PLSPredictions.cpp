#include "kalmia/analysis/model/PLSPredictions.h"

#include <utility>

#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

namespace {

/// Measured values of Y serve as a check; a column of texts under the name of a Y is none, and a note says so.
void ReadMeasured(const YModelInfo& model, const Table& table, PLSPredictions* result, Notes* notes) {
  std::vector<std::string> texts;
  for (const std::string& name : model.yNames) {
    result->measured.emplace_back();
    if (model.classes) continue;
    const int column = table.Find(name);
    if (column < 0) continue;
    const ColumnKind kind = KindOfColumn(table, column);
    if (kind == ColumnKind::Numbers) result->measured.back() = ReadNumbers(table, column);
    if (kind == ColumnKind::Texts) texts.push_back(name);
  }
  if (!texts.empty()) notes->Add("not taken as measured values, text columns: " + Listed(texts));
}

/// "t1", "t2": symbol and number.
void AddNames(const std::string& symbol, int count, std::vector<std::string>* names) {
  for (int a = 1; a <= count; ++a) names->push_back(symbol + std::to_string(a));
}

std::vector<std::string> ScoreNames(const StoredPLS& model) {
  std::vector<std::string> names;
  AddNames("t", model.Components(), &names);
  return names;
}

std::vector<std::string> ScoreNames(const StoredOPLS& model) {
  std::vector<std::string> names;
  AddNames("t", model.Predictive(), &names);
  AddNames("to", model.Orthogonal(), &names);
  return names;
}

std::vector<std::string> ScoreNames(const StoredO2PLS& model) {
  const std::string symbol = model.inputBlock == "X" ? "t" : "u";
  std::vector<std::string> names;
  AddNames(symbol, model.Joint(), &names);
  AddNames(symbol + "o", model.XUnique(), &names);
  return names;
}

template <class Model>
PLSPredictions PredictWith(const Model& model, const Table& table, NewRows rows, Notes* notes,
                            NCProgress* progress) {
  PLSPredictions result;
  result.components = model.Components();
  result.rows = std::move(rows);
  ReadMeasured(model, table, &result, notes);
  NoteMovedCells(result.rows.moved, notes);
  result.predictions = PredictRows(model, result.rows.x, progress);
  result.scoreNames = ScoreNames(model);
  result.diagnosis = Diagnose(model, result.predictions, notes);
  if (model.classes) result.classes = PredictClasses(model, table, result.predictions, result.diagnosis, notes);
  return result;
}

}  // namespace

PLSPredictions PredictTable(const StoredPLS& model, const Table& table, NewRows rows, Notes* notes,
                            NCProgress* progress) {
  return PredictWith(model, table, std::move(rows), notes, progress);
}

PLSPredictions PredictTable(const StoredOPLS& model, const Table& table, NewRows rows, Notes* notes,
                            NCProgress* progress) {
  return PredictWith(model, table, std::move(rows), notes, progress);
}

PLSPredictions PredictTable(const StoredO2PLS& model, const Table& table, NewRows rows, Notes* notes,
                            NCProgress* progress) {
  return PredictWith(model, table, std::move(rows), notes, progress);
}

}  // namespace kalmia::analysis

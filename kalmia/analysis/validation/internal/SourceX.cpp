#include "kalmia/analysis/validation/internal/SourceX.h"

#include <algorithm>
#include <numeric>

#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/text/WorkProgress.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kColumnsBetweenQuestions = 32;  ///< whether to stop

RealColumns ColumnsOf(const CellRows& cells, const std::vector<int>& places) {
  RealColumns columns;
  for (const int place : places) columns.push_back(cells.Column(place));
  return columns;
}

std::vector<int> AllPlaces(const Signals& signals) {
  std::vector<int> places(signals.names.size());
  std::iota(places.begin(), places.end(), 0);
  return places;
}

}  // namespace

bool LearnsAnew(const FitRecipe& recipe) {
  if (!recipe.steps || recipe.steps->chain) return false;
  return std::any_of(recipe.steps->steps.begin(), recipe.steps->steps.end(), LearnsOfRows);
}

RealColumns RowsOfColumns(const RealColumns& columns, const std::vector<std::size_t>& rows, NCProgress* progress) {
  RealColumns taken;
  taken.reserve(columns.size());
  for (const std::vector<double>& column : columns) {
    if (taken.size() % kColumnsBetweenQuestions == 0) WorkProgress(progress).Ask();
    std::vector<double> cells(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) cells[i] = column[rows[i]];
    taken.push_back(std::move(cells));
  }
  return taken;
}

SourceX::SourceX(const Table& table, const FitRecipe& recipe, const ModelData& data, NCProgress* progress)
    : table_(table), rows_(data.rows), names_(data.chain.Empty() ? data.xNames : data.chain.inputNames) {
  const std::vector<std::size_t> modelled(data.rows.begin(), data.rows.end());
  const std::vector<std::string> places = RowPlaces(table, recipe.id.empty() ? -1 : table.Find(recipe.id));
  for (const std::size_t row : modelled) rowPlaces_.push_back(places[row]);
  for (const std::string& name : names_) {
    columns_.push_back(RowsOfColumns({ReadNumbers(table, table.Find(name))}, modelled).front());
  }
  if (LearnsAnew(recipe)) {
    steps_ = recipe.steps->steps;
    return;
  }
  if (data.chain.Empty()) return;
  std::vector<std::size_t> all(modelled.size());
  std::iota(all.begin(), all.end(), std::size_t{0});
  Signals signals = SignalsOf(all);
  ApplyChain(data.chain, &signals, progress);
  columns_ = ColumnsOf(signals.cells, PlacesOf(signals, data.xNames));
  names_ = data.xNames;
}

Signals SourceX::SignalsOf(const std::vector<std::size_t>& rows) const {
  Signals signals{table_.Name(), {}, names_, {}, {}, table_.DecimalComma()};
  for (const std::size_t row : rows) {
    signals.rowPlaces.push_back(rowPlaces_[row]);
    signals.rows.push_back(rows_[row]);
  }
  signals.cells = CellRows(static_cast<int>(rows.size()), static_cast<int>(names_.size()));
  for (std::size_t k = 0; k < columns_.size(); ++k) {
    signals.cells.SetColumn(static_cast<int>(k), RowsOfColumns({columns_[k]}, rows).front().data());
  }
  return signals;
}

SplitX SourceX::Split(const std::vector<std::size_t>& fitted, const std::vector<std::size_t>& leftOut,
                      NCProgress* progress) const {
  if (steps_.empty()) {
    return {names_, RowsOfColumns(columns_, fitted, progress), RowsOfColumns(columns_, leftOut, progress)};
  }
  Notes ofAllRounds;  // what the steps say of columns they say of the whole table too
  Signals fittedSignals = SignalsOf(fitted);
  const StepChain chain = LearnChain(steps_, &fittedSignals, &ofAllRounds, progress);
  SplitX split{fittedSignals.names, ColumnsOf(fittedSignals.cells, AllPlaces(fittedSignals)), {}};
  if (leftOut.empty()) {
    split.leftOut.resize(split.fitted.size());
    return split;
  }
  Signals leftOutSignals = SignalsOf(leftOut);
  ApplyChain(chain, &leftOutSignals, progress);
  split.leftOut = ColumnsOf(leftOutSignals.cells, AllPlaces(leftOutSignals));
  return split;
}

}  // namespace kalmia::analysis

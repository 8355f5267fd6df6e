#include "kalmia/analysis/steps/internal/PreprocessedX.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <utility>

#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/table/internal/Refuse.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

namespace {

/// Of the columns those that the chain takes, in its order.
std::vector<NumberColumn> Inputs(const Table& table, const GivenSteps& given, const std::vector<NumberColumn>& x,
                                 const std::vector<std::string>& textColumns, Notes* notes) {
  std::unordered_map<std::string, std::size_t> placeOf;
  for (std::size_t k = 0; k < x.size(); ++k) placeOf.emplace(x[k].name, k);
  std::vector<NumberColumn> taken;
  for (const std::string& name : given.chain->inputNames) {
    const auto place = placeOf.find(name);
    if (place == placeOf.end()) {
      const bool isText = std::find(textColumns.begin(), textColumns.end(), name) != textColumns.end();
      Refuse(table, "the steps of " + given.name + " take column " + Quoted(name) + ", which " +
                        (isText ? "holds text, not numbers" : "is not in X"),
             InColumn(name));
    }
    taken.push_back(x[place->second]);
    placeOf.erase(place);
  }
  std::vector<std::string> others;
  for (const NumberColumn& column : x) {
    if (placeOf.count(column.name) > 0) others.push_back(column.name);
  }
  if (!others.empty()) notes->Add("left out of X, not among the columns of " + given.name + ": " + Listed(others));
  return taken;
}

void TakeColumns(const std::vector<NumberColumn>& columns, int rows, Signals* signals) {
  signals->cells = CellRows(rows, static_cast<int>(columns.size()));
  int place = 0;
  for (const NumberColumn& column : columns) {
    signals->names.push_back(column.name);
    signals->cells.SetColumn(place++, column.cells.data());
  }
}

}  // namespace

std::size_t NumberColumn::Present() const {
  return static_cast<std::size_t>(
      std::count_if(cells.begin(), cells.end(), [](double cell) { return !std::isnan(cell); }));
}

PreprocessedX PreprocessX(const Table& table, int idColumn, const GivenSteps& given,
                          const std::vector<NumberColumn>& x, const std::vector<std::string>& textColumns,
                          Notes* notes, NCProgress* progress) {
  PreprocessedX made;
  Signals signals{table.Name(), RowPlaces(table, idColumn), {}, {}, {}, table.DecimalComma()};
  if (given.chain) {
    TakeColumns(Inputs(table, given, x, textColumns, notes), table.Rows(), &signals);
    made.chain = *given.chain;
    ApplyChain(made.chain, &signals, progress);
  } else {
    TakeColumns(x, table.Rows(), &signals);
    made.chain = LearnChain(given.steps, &signals, notes, progress);
  }
  for (std::size_t k = 0; k < signals.names.size(); ++k) {
    NumberColumn column{signals.names[k], signals.cells.Column(static_cast<int>(k))};
    if (column.Present() == 0) {
      made.emptyColumns.push_back(signals.names[k]);
    } else {
      made.columns.push_back(std::move(column));
    }
  }
  if (made.columns.empty()) Refuse(table, "no cell of X is left after the steps of " + given.name);
  return made;
}

}  // namespace kalmia::analysis

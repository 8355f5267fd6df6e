#include "kalmia/analysis/steps/internal/PreprocessedX.h"

#include <algorithm>
#include <unordered_map>

#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

[[noreturn]] void Refuse(const CsvTable& table, const std::string& message) {
  throw BadData(table.Name() + ": " + message);
}

/// Of the columns those that the chain takes, in its order.
std::vector<NumberColumn> Inputs(const CsvTable& table, const GivenSteps& given, const std::vector<NumberColumn>& x,
                                 const std::vector<std::string>& textColumns, Notes* notes) {
  std::unordered_map<std::string, std::size_t> placeOf;
  for (std::size_t k = 0; k < x.size(); ++k) placeOf.emplace(x[k].name, k);
  std::vector<NumberColumn> taken;
  for (const std::string& name : given.chain->inputNames) {
    const auto place = placeOf.find(name);
    if (place == placeOf.end()) {
      const bool isText = std::find(textColumns.begin(), textColumns.end(), name) != textColumns.end();
      Refuse(table, "the steps of " + given.name + " take column " + Quoted(name) + ", which " +
                        (isText ? "holds text, not numbers" : "is not in X"));
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

}  // namespace

std::size_t NumberColumn::Present() const {
  return cells.size() - static_cast<std::size_t>(std::count(cells.begin(), cells.end(), kMissingCell<float>));
}

bool NumberColumn::IsConstant() const { return analysis::IsConstant(cells.data(), cells.data() + cells.size()); }

void FillMatrix(const std::vector<NumberColumn>& columns, int rows, NCDataMatrix<float>* matrix,
                std::vector<std::string>* names) {
  *matrix = NCDataMatrix<float>(rows, static_cast<int>(columns.size()));
  int c = 0;
  for (const NumberColumn& column : columns) {
    ++c;
    names->push_back(column.name);
    for (int r = 1; r <= rows; ++r) (*matrix)(r, c, column.cells[static_cast<std::size_t>(r - 1)]);
  }
}

PreprocessedX PreprocessX(const CsvTable& table, int idColumn, const GivenSteps& given,
                          const std::vector<NumberColumn>& x, const std::vector<std::string>& textColumns,
                          Notes* notes, NCProgress* progress) {
  PreprocessedX made;
  Signals signals{table.Name(), RowPlaces(table, idColumn), {}, {}, {}, table.DecimalComma()};
  if (given.chain) {
    FillMatrix(Inputs(table, given, x, textColumns, notes), table.Rows(), &signals.cells, &signals.names);
    made.chain = *given.chain;
    ApplyChain(made.chain, &signals, progress);
  } else {
    FillMatrix(x, table.Rows(), &signals.cells, &signals.names);
    made.chain = LearnChain(given.steps, &signals, notes, progress);
    NoteLearntOfAllRows(made.chain, notes);
  }
  for (std::size_t k = 0; k < signals.names.size(); ++k) {
    const NCDataVector<float> cells = signals.cells.GetColumn(static_cast<int>(k) + 1);
    if (cells.GetNumMisVal() == cells.Size()) {
      made.emptyColumns.push_back(signals.names[k]);
    } else {
      made.columns.push_back({signals.names[k], {cells.begin(), cells.end()}});
    }
  }
  if (made.columns.empty()) Refuse(table, "no cell of X is left after the steps of " + given.name);
  return made;
}

}  // namespace kalmia::analysis

#include "kalmia/analysis/model/ClassPredictions.h"

#include <algorithm>
#include <cstddef>
#include <set>

#include "kalmia/analysis/model/DiscriminantRule.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

namespace {

/// The number of the class of that name, from 0; -1 where the model has no such class.
int NumberOf(const std::vector<std::string>& names, const std::string& name) {
  const auto found = std::find(names.begin(), names.end(), name);
  return found == names.end() ? -1 : static_cast<int>(found - names.begin());
}

std::vector<std::string> ReadLabels(const YModelInfo& model, const Table& table, Notes* notes) {
  const int column = table.Find(model.classes->column);
  if (column < 0) return {};
  std::vector<std::string> labels;
  std::set<std::string> unknown;
  for (int row = 0; row < table.Rows(); ++row) {
    labels.push_back(LabelOf(table, row, column));
    if (!labels.back().empty() && NumberOf(model.yNames, labels.back()) < 0) unknown.insert(labels.back());
  }
  if (!unknown.empty()) {
    notes->Add("not counted, of classes that the model does not know: " +
               Listed({unknown.begin(), unknown.end()}, kColumnsNamed));
  }
  return labels;
}

}  // namespace

RealMatrix PredictedMatrix(const std::vector<RowPrediction>& rows, std::size_t yColumns) {
  RealMatrix predicted(rows.size(), yColumns, kNotANumber);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t j = 0; j < rows[i].y.size(); ++j) predicted(i, j) = rows[i].y[j];
  }
  return predicted;
}

ClassPredictions PredictClasses(const YModelInfo& model, const Table& table, const std::vector<RowPrediction>& rows,
                                const RowDiagnosis& diagnosis, Notes* notes) {
  ClassPredictions result;
  const RealMatrix values = DiscriminantValues(model.classes->rule, PredictedMatrix(rows, model.yNames.size()));
  result.logOdds = LogOdds(values);
  result.nearest = AssignedClasses(values);
  result.assigned = result.nearest;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (diagnosis.IsBeyond99(i)) result.assigned[i] = -1;
  }
  result.measured = ReadLabels(model, table, notes);
  return result;
}

ClassTally TallyOf(const std::vector<std::string>& names, const ClassPredictions& predictions) {
  ClassTally tally;
  tally.confusion.assign(names.size(), std::vector<int>(names.size(), 0));
  tally.unassigned.assign(names.size(), 0);
  for (std::size_t i = 0; i < predictions.measured.size(); ++i) {
    const int own = NumberOf(names, predictions.measured[i]), assigned = predictions.assigned[i];
    if (own < 0) continue;
    const auto g = static_cast<std::size_t>(own);
    ++tally.rows;
    ++(assigned < 0 ? tally.unassigned[g] : tally.confusion[g][static_cast<std::size_t>(assigned)]);
    if (assigned == own) ++tally.right;
  }
  return tally;
}

}  // namespace kalmia::analysis

#include "kalmia/analysis/fit/FitContributions.h"

#include <algorithm>

#include "kalmia/analysis/table/internal/Refuse.h"

namespace kalmia::analysis {

namespace {

/// Rows of the table as those that the model sees, both from 0.
std::vector<int> FittedRows(const ModelData& data, const Table& table, const std::vector<int>& rows) {
  std::vector<int> fitted;
  for (const int row : rows) {
    const auto found = std::find(data.rows.begin(), data.rows.end(), row);
    if (found == data.rows.end()) {
      Refuse(table, table.RowPlace(row) + " has no contributions: it is left out, as it has no cell of X",
             InRow(row));
    }
    fitted.push_back(static_cast<int>(found - data.rows.begin()));
  }
  return fitted;
}

template <class Result>
std::vector<RowContributions> Of(const Result& fit, const Table& table, const std::vector<int>& rows, Notes* notes) {
  return ContributionsOfTrainingRows(fit.model, fit.data.x, FittedRows(fit.data, table, rows), notes);
}

}  // namespace

std::vector<RowContributions> Contributions(const PLSResult& fit, const Table& table, const std::vector<int>& rows,
                                            Notes* notes) {
  return Of(fit, table, rows, notes);
}

std::vector<RowContributions> Contributions(const PCAResult& fit, const Table& table, const std::vector<int>& rows,
                                            Notes* notes) {
  return Of(fit, table, rows, notes);
}

std::vector<RowContributions> Contributions(const OPLSResult& fit, const Table& table, const std::vector<int>& rows,
                                            Notes* notes) {
  return Of(fit, table, rows, notes);
}

}  // namespace kalmia::analysis

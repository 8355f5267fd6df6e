#include "kalmia/analysis/fit/internal/FitRules.h"

#include <limits>

#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

/// Sums of squares of a table and of what is left of it, over the cells present in both.
class SumsOfSquares {
 public:
  void Add(float cell, float left) {
    if (cell == kMissingCell<float> || left == kMissingCell<float>) return;
    table_ += static_cast<double>(cell) * cell;
    residual_ += static_cast<double>(left) * left;
  }
  double Described() const {
    return table_ > 0.0 ? 1.0 - residual_ / table_ : std::numeric_limits<double>::quiet_NaN();
  }

 private:
  double table_ = 0.0;
  double residual_ = 0.0;
};

}  // namespace

std::string ComponentText(int component) { return "component " + std::to_string(component); }

std::string ReasonToEnd(const FitRules& rules, int component, const std::string& reason, const std::string& whose) {
  if (component > 1) return reason;
  const std::string hint = " (or " + whose + " numbers are too small; try scaling to unit variance)";
  const std::string text = reason + (rules.unitVariance ? "" : hint);
  if (!rules.stopAtFirstFailure) throw BadData("no component can be computed: " + text);
  return text;
}

double DescribedShare(const NCDataMatrix<float>& table, const NCDataMatrix<float>& residual) {
  SumsOfSquares sums;
  for (int r = 1; r <= table.SizeRows(); ++r) {
    const NCDataVector<float>& row = table[r];
    const NCDataVector<float>& left = residual[r];
    for (int c = 1; c <= table.SizeColumns(); ++c) sums.Add(row[c], left[c]);
  }
  return sums.Described();
}

double DescribedShareOfColumn(const NCDataMatrix<float>& table, const NCDataMatrix<float>& residual, int c) {
  SumsOfSquares sums;
  for (int r = 1; r <= table.SizeRows(); ++r) sums.Add(table[r][c], residual[r][c]);
  return sums.Described();
}

void NoteIterations(std::size_t component, int iterations, Notes* notes) {
  if (iterations < kMaxIterations) return;
  notes->Add("component " + std::to_string(component) + " was still moving after " + std::to_string(kMaxIterations) +
             " iterations and is taken as it then was");
}

NCDataMatrix<float> FirstRows(const NCDataMatrix<float>* prim, int components) {
  NCDataMatrix<float> rows = *prim;
  const int surplus = rows.SizeRows() - components;
  if (surplus > 0) rows.RemoveRows(components + 1, surplus);
  return rows;
}

NCDataVector<float> ColumnSumsOfSquares(const NCDataMatrix<float>& table) {
  NCDataVector<float> sums(table.SizeColumns());
  for (int c = 1; c <= table.SizeColumns(); ++c) sums(c, static_cast<float>(table.GetColumnSS(c, 0.0)));
  return sums;
}

}  // namespace kalmia::analysis

#include "kalmia/analysis/fit/internal/FillColumns.h"

#include "kalmia/analysis/fit/internal/FillScaled.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

/// Rows and columns, from 1, that a model can be made of.
struct Modelled {
  std::vector<int> rows;
  std::vector<int> columns;
};

bool HasCell(const NCDataMatrix<float>& cells, int row, const std::vector<int>& columns) {
  for (const int column : columns) {
    if (cells[row][column] != kMissingCell<float>) return true;
  }
  return false;
}

Modelled Select(const NumberColumns& columns, FilledColumns* filled) {
  Modelled modelled;
  for (int c = 1; c <= columns.cells.SizeColumns(); ++c) {
    if (IsConstant(columns.cells, c)) {
      filled->constantColumns.push_back(columns.names[static_cast<std::size_t>(c) - 1]);
    } else {
      modelled.columns.push_back(c);
    }
  }
  for (int r = 1; r <= columns.cells.SizeRows(); ++r) {
    if (HasCell(columns.cells, r, modelled.columns)) {
      modelled.rows.push_back(r);
    } else {
      filled->emptyRows.push_back(r);
    }
  }
  return modelled;
}

/// Fills the holes of a constant column with its value.
void FillConstant(int column, const std::vector<int>& rows, NCDataMatrix<float>* cells) {
  float value = 0.0F;
  float same = 0.0F;
  cells->GetColumnMinMax(column, value, same);
  for (const int row : rows) (*cells)(row, column, value);
}

NCDataMatrix<float> Part(const NCDataMatrix<float>& cells, const Modelled& modelled) {
  NCDataMatrix<float> part(static_cast<int>(modelled.rows.size()), static_cast<int>(modelled.columns.size()));
  for (int r = 1; r <= part.SizeRows(); ++r) {
    const NCDataVector<float>& row = cells[modelled.rows[static_cast<std::size_t>(r) - 1]];
    for (int c = 1; c <= part.SizeColumns(); ++c) part(r, c, row[modelled.columns[static_cast<std::size_t>(c) - 1]]);
  }
  return part;
}

/// Puts what was filled back, as it was before scaling.
void TakeBack(const NCDataMatrix<float>& scaled, const ColumnScaling& scale, const Modelled& modelled,
              NCDataMatrix<float>* cells) {
  const NCDataMatrix<float>& before = *cells;
  for (int r = 1; r <= scaled.SizeRows(); ++r) {
    const int row = modelled.rows[static_cast<std::size_t>(r) - 1];
    for (int c = 1; c <= scaled.SizeColumns(); ++c) {
      const int column = modelled.columns[static_cast<std::size_t>(c) - 1];
      if (before[row][column] != kMissingCell<float>) continue;
      (*cells)(row, column,
               AvoidMissingValue(static_cast<float>(scaled[r][c] / FactorOf(scale, c) + CentreOf(scale, c))));
    }
  }
}

}  // namespace

bool IsConstant(const NCDataMatrix<float>& cells, int column) {
  float smallest = 0.0F;
  float largest = 0.0F;
  cells.GetColumnMinMax(column, smallest, largest);
  return smallest == largest;
}

FilledColumns FillColumns(const NumberColumns& columns, int components, NCProgress* progress) {
  FilledColumns filled;
  filled.cells = columns.cells;
  if (columns.cells.GetNumMisVal() == 0) return filled;
  const Modelled modelled = Select(columns, &filled);
  filled.modelRows = static_cast<int>(modelled.rows.size());
  filled.modelColumns = static_cast<int>(modelled.columns.size());
  for (int c = 1; c <= filled.cells.SizeColumns(); ++c) {
    if (IsConstant(columns.cells, c)) FillConstant(c, modelled.rows, &filled.cells);
  }
  if (modelled.rows.empty()) return filled;
  std::vector<std::string> names;
  for (const int c : modelled.columns) names.push_back(columns.names[static_cast<std::size_t>(c) - 1]);
  NCDataMatrix<float> scaled = Part(columns.cells, modelled);
  const ColumnScaling scale = ScaleColumns(NCScale::ScalingUnitVariance, names, &scaled);
  TakeBack(FillScaled(scaled, components, &filled.model, progress), scale, modelled, &filled.cells);
  return filled;
}

}  // namespace kalmia::analysis

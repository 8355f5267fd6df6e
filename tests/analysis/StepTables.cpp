#include "StepTables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "FailureOf.h"
#include "kalmia/analysis/text/Failure.h"

using kalmia::analysis::CellRows;
using kalmia::analysis::LearnChain;
using kalmia::analysis::Notes;
using kalmia::analysis::ParseSteps;
using kalmia::analysis::Signals;

namespace {

template <class T>
CellRows RowsOf(const NCDataMatrix<T>& cells) {
  CellRows rows(cells.SizeRows(), cells.SizeColumns());
  for (int r = 1; r <= cells.SizeRows(); ++r)
    for (int c = 1; c <= cells.SizeColumns(); ++c)
      if (cells[r][c] != kHole) rows.Row(r - 1)[c - 1] = cells[r][c];
  return rows;
}

Signals Named(CellRows cells, int distance) {
  Signals signals{"t", {}, {}, {}, std::move(cells)};
  for (int r = 1; r <= signals.cells.Rows(); ++r) signals.rowPlaces.push_back("row 'r" + std::to_string(r) + "'");
  for (int c = 0; c < signals.cells.Columns(); ++c) signals.names.push_back(std::to_string(100 + c * distance));
  return signals;
}

DoubleCells After(const std::string& steps, Signals signals) {
  Notes notes;
  LearnChain(ParseSteps(steps, "steps"), &signals, &notes);
  EXPECT_THAT(notes.Lines(), ::testing::Each(::testing::HasSubstr("no cell, but taken as a channel")));
  EXPECT_EQ(static_cast<int>(signals.names.size()), signals.cells.Columns());
  return MatrixOfCells(signals.cells);
}

DoubleCells InDouble(const FloatCells& cells) {
  DoubleCells doubles(cells.SizeRows(), cells.SizeColumns());
  for (int r = 1; r <= cells.SizeRows(); ++r)
    for (int c = 1; c <= cells.SizeColumns(); ++c) doubles(r, c, cells[r][c]);
  return doubles;
}

}  // namespace

CellRows CellsOf(const FloatCells& cells) { return RowsOf(cells); }

CellRows CellsOf(const DoubleCells& cells) { return RowsOf(cells); }

DoubleCells MatrixOfCells(const CellRows& cells) {
  DoubleCells matrix(cells.Rows(), cells.Columns());
  for (int r = 0; r < cells.Rows(); ++r)
    for (int c = 0; c < cells.Columns(); ++c) {
      const double cell = cells.Row(r)[c];
      const double there = cell == kHole ? std::nextafter(cell, -200.0) : cell;
      matrix(r + 1, c + 1, std::isnan(cell) ? kHole : there);
    }
  return matrix;
}

Signals SignalsOf(const FloatCells& cells, int distance) { return Named(CellsOf(cells), distance); }

Signals SignalsOf(const DoubleCells& cells, int distance) { return Named(CellsOf(cells), distance); }

FloatCells RandomCells(int rows, int columns, int holes) {
  std::mt19937 generator(static_cast<unsigned>(rows * 1000 + columns));
  FloatCells cells(rows, columns);
  int count = 0;
  for (int r = 1; r <= rows; ++r)
    for (int c = 1; c <= columns; ++c) {
      const auto number = static_cast<float>(0.5 + static_cast<double>(generator() % 2001U) / 1000.0);
      cells(r, c, holes > 0 && ++count % holes == 0 ? kHole : number);
    }
  return cells;
}

DoubleCells After(const std::string& steps, const FloatCells& cells, int distance) {
  return After(steps, SignalsOf(cells, distance));
}

DoubleCells After(const std::string& steps, const DoubleCells& cells, int distance) {
  return After(steps, SignalsOf(cells, distance));
}

std::string RefusalOf(const std::string& steps, const FloatCells& cells) {
  Signals signals = SignalsOf(cells);
  Notes notes;
  try {
    LearnChain(ParseSteps(steps, "steps"), &signals, &notes);
  } catch (const kalmia::analysis::Failure& failure) {
    EXPECT_TRUE(Is<kalmia::analysis::BadData>(failure));
    return failure.what();
  }
  return "";
}

DoubleCells Mapped(const FloatCells& cells, const std::function<double(double)>& function) {
  DoubleCells mapped = InDouble(cells);
  for (int r = 1; r <= cells.SizeRows(); ++r)
    for (int c = 1; c <= cells.SizeColumns(); ++c)
      if (cells[r][c] != kHole) mapped(r, c, function(static_cast<double>(cells[r][c])));
  return mapped;
}

FloatCells MappedRows(const FloatCells& cells,
                      const std::function<NCDataVector<float>(const NCDataVector<float>&)>& function) {
  FloatCells mapped;
  for (const NCDataVector<float>& row : cells) mapped.push_back(function(row));
  return mapped;
}

void ExpectSame(const DoubleCells& a, const DoubleCells& b) { ExpectNear(a, b, 0.0); }

void ExpectNear(const DoubleCells& a, const DoubleCells& b, double share) {
  ASSERT_EQ(a.SizeRows(), b.SizeRows());
  ASSERT_EQ(a.SizeColumns(), b.SizeColumns());
  EXPECT_EQ(a.GetNumMisVal(), b.GetNumMisVal());
  for (int r = 1; r <= a.SizeRows(); ++r) {
    double largest = 0.0;
    for (const double cell : b[r]) largest = std::max(largest, cell == kHole ? 0.0 : std::fabs(cell));
    for (int c = 1; c <= a.SizeColumns(); ++c) {
      EXPECT_EQ(a[r][c] == kHole, b[r][c] == kHole) << r << ' ' << c;
      EXPECT_NEAR(a[r][c], b[r][c], share * largest) << r << ' ' << c;
    }
  }
}

void ExpectNear(const DoubleCells& a, const FloatCells& b, double share) { ExpectNear(a, InDouble(b), share); }

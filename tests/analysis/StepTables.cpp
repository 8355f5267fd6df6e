#include "StepTables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "FailureOf.h"
#include "kalmia/analysis/text/Failure.h"

using kalmia::analysis::LearnChain;
using kalmia::analysis::Notes;
using kalmia::analysis::ParseSteps;
using kalmia::analysis::Signals;
using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;

Signals SignalsOf(const Matrix& cells, int distance) {
  Signals signals{"t", {}, {}, {}, cells};
  for (int r = 1; r <= cells.SizeRows(); ++r) signals.rowPlaces.push_back("row 'r" + std::to_string(r) + "'");
  for (int c = 0; c < cells.SizeColumns(); ++c) signals.names.push_back(std::to_string(100 + c * distance));
  return signals;
}

Matrix RandomCells(int rows, int columns, int holes) {
  std::mt19937 generator(static_cast<unsigned>(rows * 1000 + columns));
  Matrix cells(rows, columns);
  int count = 0;
  for (int r = 1; r <= rows; ++r)
    for (int c = 1; c <= columns; ++c) {
      const auto number = static_cast<float>(0.5 + static_cast<double>(generator() % 2001U) / 1000.0);
      cells(r, c, holes > 0 && ++count % holes == 0 ? kHole : number);
    }
  return cells;
}

Matrix After(const std::string& steps, const Matrix& cells, int distance) {
  Signals signals = SignalsOf(cells, distance);
  Notes notes;
  LearnChain(ParseSteps(steps, "steps"), &signals, &notes);
  EXPECT_THAT(notes.Lines(), ::testing::Each(::testing::HasSubstr("no cell, but taken as a channel")));
  EXPECT_EQ(static_cast<int>(signals.names.size()), signals.cells.SizeColumns());
  return signals.cells;
}

std::string RefusalOf(const std::string& steps, const Matrix& cells) {
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

Matrix Mapped(Matrix cells, const std::function<double(double)>& function) {
  for (int r = 1; r <= cells.SizeRows(); ++r)
    for (int c = 1; c <= cells.SizeColumns(); ++c)
      if (cells[r][c] != kHole) cells(r, c, static_cast<float>(function(static_cast<double>(cells[r][c]))));
  return cells;
}

Matrix MappedRows(const Matrix& cells, const std::function<Vector(const Vector&)>& function) {
  Matrix mapped;
  for (const Vector& row : cells) mapped.push_back(function(row));
  return mapped;
}

void ExpectSame(const Matrix& a, const Matrix& b) {
  ASSERT_EQ(a.SizeRows(), b.SizeRows());
  ASSERT_EQ(a.SizeColumns(), b.SizeColumns());
  EXPECT_EQ(a.GetNumMisVal(), b.GetNumMisVal());
  for (int r = 1; r <= a.SizeRows(); ++r)
    for (int c = 1; c <= a.SizeColumns(); ++c) EXPECT_EQ(a[r][c], b[r][c]) << r << ' ' << c;
}

#pragma once

#include <functional>
#include <string>

#include "kalmia/analysis/steps/StepChain.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/containers/NCDataMatrix.h"

// Small tables of signals for the tests of preprocessing steps. Here a hole is -99, and no present cell is.

constexpr float kHole = kalmia::kMissingCell<float>;

using FloatCells = NCDataMatrix<float>;
using DoubleCells = NCDataMatrix<double>;

/// The cells as steps take them, and back.
kalmia::analysis::CellRows CellsOf(const FloatCells& cells);
kalmia::analysis::CellRows CellsOf(const DoubleCells& cells);
DoubleCells MatrixOfCells(const kalmia::analysis::CellRows& cells);

/// Rows r1, r2... and columns from 100 on, `distance` apart.
kalmia::analysis::Signals SignalsOf(const FloatCells& cells, int distance = 1);
kalmia::analysis::Signals SignalsOf(const DoubleCells& cells, int distance = 1);

/// Numbers from 0.5 to 2.5, of which every `holes`-th is missing; 0: none.
FloatCells RandomCells(int rows, int columns, int holes = 0);

/// What the steps make of SignalsOf(cells, distance); no note is expected but of empty columns. A cell that becomes -99
/// itself is the next number.
DoubleCells After(const std::string& steps, const FloatCells& cells, int distance = 1);
DoubleCells After(const std::string& steps, const DoubleCells& cells, int distance = 1);

/// The message with which the steps refuse SignalsOf(cells), as bad data; "" if they do not.
std::string RefusalOf(const std::string& steps, const FloatCells& cells);

/// The cells, each replaced by a function of it; missing ones stay.
DoubleCells Mapped(const FloatCells& cells, const std::function<double(double)>& function);

/// The rows, each replaced by a function of it.
FloatCells MappedRows(const FloatCells& cells,
                      const std::function<NCDataVector<float>(const NCDataVector<float>&)>& function);

/// Same shape, same cells.
void ExpectSame(const DoubleCells& a, const DoubleCells& b);
/// The same but for so much of the largest cell of the row.
void ExpectNear(const DoubleCells& a, const DoubleCells& b, double share);
void ExpectNear(const DoubleCells& a, const FloatCells& b, double share);

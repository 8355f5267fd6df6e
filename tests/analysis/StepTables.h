#pragma once

#include <functional>
#include <string>

#include "kalmia/analysis/steps/StepChain.h"

// Small tables of signals for the tests of preprocessing steps.

constexpr float kHole = -99.0F;

/// Rows r1, r2... and columns from 100 on, `distance` apart.
kalmia::analysis::Signals SignalsOf(const NCDataMatrix<float>& cells, int distance = 1);

/// Numbers from 0.5 to 2.5, of which every `holes`-th is missing; 0: none.
NCDataMatrix<float> RandomCells(int rows, int columns, int holes = 0);

/// What the steps make of SignalsOf(cells, distance); no note is expected but of empty columns.
NCDataMatrix<float> After(const std::string& steps, const NCDataMatrix<float>& cells, int distance = 1);

/// The message with which the steps refuse SignalsOf(cells), as bad data; "" if they do not.
std::string RefusalOf(const std::string& steps, const NCDataMatrix<float>& cells);

/// The cells, each replaced by a function of it; missing ones stay.
NCDataMatrix<float> Mapped(NCDataMatrix<float> cells, const std::function<double(double)>& function);

/// The rows, each replaced by a function of it.
NCDataMatrix<float> MappedRows(const NCDataMatrix<float>& cells,
                               const std::function<NCDataVector<float>(const NCDataVector<float>&)>& function);

/// Same shape, same cells.
void ExpectSame(const NCDataMatrix<float>& a, const NCDataMatrix<float>& b);

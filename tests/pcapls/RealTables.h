#pragma once

#include <string>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"

// The tables of examples/data, and the numbers that other packages found for them.

/// The fields of the lines of a file in examples/data ("wine.csv"), or behind kReferenceFolder.
std::vector<std::vector<std::string>> ReadCsv(const std::string& name);

extern const char* const kReferenceFolder;  ///< where the numbers of other packages lie, as ReadCsv takes it

/// Columns first to last of a table, from 1 behind the column of names.
NCDataMatrix<float> ReadColumns(const std::string& table, int first, int last);

/// Scales to unit variance; returns the relative change of the scaled table by the rounding of its cells to float
/// beforehand, 2^-24 of a cell each.
double ScaleToUnitVariance(NCDataMatrix<float>* matrix);

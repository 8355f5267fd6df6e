#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/table/Table.h"

/// A table of `rows` rows, named in the column `name`, and columns `x1` to `xK` and `y`, where y follows the first
/// three x columns but for noise: the same text for the same arguments on every machine.
std::string LinearTable(int rows, int columns, unsigned seed);

/// A table of `rows` rows, `columns` columns x1.. and `yColumns` columns y1.., all independent of each other.
std::string UnrelatedTable(int rows, int columns, int yColumns, unsigned seed);

/// A table of `rows` rows and columns x1.. and y. Each x column varies less than the one before, by a fifth; y has a
/// share of each, of one size, and no noise: every component of the centred columns tells something of y.
std::string FadingTable(int rows, int columns, unsigned seed);

/// Two tables of the same rows, named in the column `name`.
struct TwoBlocks {
  std::string x;  ///< columns x1 to x6
  std::string y;  ///< columns y1 to y4
};

/// Blocks with one direction in common and one of its own each, of the same size, and noise of a tenth of them. In each
/// block the first column has nothing but what is common, the second one nothing but what is the block's own.
TwoBlocks SharedBlocks(int rows, unsigned seed);

/// The lines below the header turned about.
std::string WithRowsReversed(const std::string& table);

/// The table with every n-th of its cells emptied; the header, the first column and the last one stay whole.
std::string WithHoles(const std::string& table, int every);

/// A column of a CSV file as numbers; NaN where it is empty.
std::vector<double> NumbersOf(const kalmia::analysis::Table& table, const std::string& column);

/// The CSV file at the path.
kalmia::analysis::Table CsvAt(const std::string& path);

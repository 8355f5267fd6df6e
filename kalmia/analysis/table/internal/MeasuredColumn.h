#pragma once

#include <string>

#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/containers/NCDataVector.h"

namespace kalmia::analysis {

/// The measurements in the column of that name, in the order of the rows; missing ones are -99. Notes how many cells of
/// -99 were moved, and a column of which single precision keeps few digits.
/// Throws BadData: no such column, a column of text, a cell that is no finite number, a column without measurements.
NCDataVector<float> ReadMeasurements(const Table& table, const std::string& column, Notes* notes);

}  // namespace kalmia::analysis

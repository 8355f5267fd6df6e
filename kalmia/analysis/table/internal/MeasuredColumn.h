#pragma once

#include <string>

#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/containers/NCDataVector.h"

namespace kalmia::analysis {

/// The measurements in the column of that name, in the order of the rows, missing ones as -99. Notes what was moved
/// off -99, and where single precision keeps few digits of what varies.
/// Throws BadData: no such column, a column of text, a cell that is no finite number, not one measurement.
NCDataVector<float> ReadMeasurements(const Table& table, const std::string& column, Notes* notes);

}  // namespace kalmia::analysis

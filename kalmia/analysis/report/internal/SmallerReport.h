#pragma once

#include <cstddef>

#include "kalmia/analysis/report/ReportPage.h"

namespace kalmia::analysis {

// What makes a page smaller, and leaves what a reader of figures would miss.

/// Rounds all numbers to five digits of the range of their list, and cuts names after 200 bytes.
void Round(ReportPage* report);

/// Thins lists of more than `most` items: lines and bars keep the lowest and the highest of each stretch; of rows those
/// remain that a figure has selected or that are outermost along an axis, and others evenly between. Rows that go leave
/// the table too. Returns whether anything went.
bool Thin(std::size_t most, ReportPage* report);

}  // namespace kalmia::analysis

#pragma once

#include <algorithm>
#include <cmath>

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia {

// When a step may go over a table without looking for holes.

inline bool HasNoCells(const NCDataMatrix<float>& m) { return m.SizeRows() == 0 || m.SizeColumns() == 0; }

/// By the counts of the table and of its rows.
inline bool IsComplete(const NCDataMatrix<float>& m) {
  return m.GetNumMisVal() == 0 &&
         std::all_of(m.begin(), m.end(), [](const NCDataVector<float>& row) { return row.GetNumMisVal() == 0; });
}

/// Whether a deflation by this score empties its row: it does too where minus the score looks like the missing value.
inline bool EmptiesItsRow(float score) { return std::fabs(score) == -kMissing; }

inline bool HasEveryScore(const NCDataVector<float>& t) { return std::none_of(t.begin(), t.end(), EmptiesItsRow); }

}  // namespace kalmia

#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"

namespace kalmia {

/// How the rows of a table get their scores.
class RowScorer {
 public:
  virtual ~RowScorer() = default;

  /// Writes the scores of rows first to last, both included, into the 1-based `scores`; returns how many of them are
  /// missing. The threads of a team call this at the same time for different rows; `thread` is the caller's number, from
  /// 0 and below TeamForScoresAndLoadings. Must not throw.
  virtual int Score(int thread, int first, int last, float* scores) const = 0;
};

/// The largest team that goes over a table.
int TeamForScoresAndLoadings(const NCDataMatrix<float>& X);

/// Scores t of the rows of X, and p = X.SpecialNipalsRegressColumnsFix(t), in one pass: a block of rows gets its scores
/// and is added to the sums of the columns while it is still in cache. The bits are those of two passes.
/// Returns false, with t and p as they were, where a score is missing or a loading is a number that happens to be -99.
/// Shape: X has at least one cell, not checked; t and p of any size.
bool CalcScoresAndLoadingsInOnePass(const NCDataMatrix<float>& X, const RowScorer& scorer, NCDataVector<float>* t,
                                    NCDataVector<float>* p);

}  // namespace kalmia

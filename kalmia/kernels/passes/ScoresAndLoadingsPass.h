#pragma once

#include <functional>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"

namespace kalmia {

/// One pass over a table: scores of its rows, from 1, and the sums over its columns that the regression on those scores
/// is made of, from 0. Some rows at a time are scored and then, still in cache, added to the sums.
class ScoresAndLoadingsPass {
 public:
  /// Writes the scores of rows first to last, both included, to their places and returns how many of them are missing.
  /// Called by thread `me`, from 0, of a team; must not throw.
  using ScoreRows = std::function<int(int me, int first, int last, float* scores)>;

  /// How many threads go over a table, at most.
  static int TeamFor(const NCDataMatrix<float>& X);

  ScoresAndLoadingsPass(const NCDataMatrix<float>& X, ScoreRows scoreRows);

  /// Scores and loadings, or false, and t and p are what they were: where a score is missing, or a loading is a number
  /// that looks like the missing value.
  bool Run(NCDataVector<float>* t, NCDataVector<float>* p);

 private:
  int Sum();
  int RunThread(int me, int team);
  void AddToSums(int first, int last, int begin, int end);
  int Loadings(const NCDataVector<float>& t, float* loadings) const;

  const NCDataMatrix<float>& X_;
  const ScoreRows scoreRows_;
  const int team_;
  const int rowsPerBlock_;
  std::vector<float> scores_;
  std::vector<double> products_;
  std::vector<double> weights_;  ///< sums of t^2 over the pairs of each column; only if X has holes
  std::vector<float> holes_;     ///< what a hole of each column looks like; only if X has holes
};

}  // namespace kalmia

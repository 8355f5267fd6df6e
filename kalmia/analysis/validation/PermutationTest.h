#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "kalmia/analysis/model/Judgement.h"
#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/analysis/validation/RandomDraws.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

// Whether a model would be as good if Y had nothing to do with X: the rows of Y change places among the rows of X, and
// the same model is fitted and validated again, with the same groups and the same number of components.
// A permutation says for each row i from which row its Y comes, with the cells that are missing. `draws` are of
// RandomUse::Permutations; rows in any order are draws.Order(N).

/// Whether each group has as many rows as the others, so that groups can change places as wholes. Groups count from 0.
KALMIA_EXPORT bool AreGroupsOfOneSize(const std::vector<int>& groupOfRow);

/// Groups of rows that belong together, as repeated measurements of one sample do, in random order: the k-th row of a
/// group takes the Y of the k-th row of another one. The groups are of one size, not checked.
KALMIA_EXPORT std::vector<std::size_t> PermutedGroups(const std::vector<int>& groupOfRow, RandomDraws* draws);

/// How many of the orders in which such groups can stand differ in `y`, N x M: all of them, or fewer where groups have
/// the same cells. Two kinds of groups, as many of the one as of the other, make half of them: an order in which they
/// change places gives the same model of Y turned around. 1 at the least. Exact up to 2^53, then rounded, at last infinite.
KALMIA_EXPORT double OrdersOfGroups(const std::vector<int>& groupOfRow, const RealMatrix& y);

/// Pearson's correlation of the permuted with the original Y over the rows that have both, as a mean over the columns
/// that have one; not a number where none has.
KALMIA_EXPORT double CorrelationWithPermuted(const RealMatrix& y, const std::vector<std::size_t>& sources);

/// How good a model is, of the true Y or of a permuted one.
struct PermutationRun {
  double correlation = 1.0;  ///< with the true Y
  double r2 = kNotANumber;
  double q2 = kNotANumber;
  /// Of classes: the share of left-out rows that is found, of those that have a class and are predicted, as a mean over
  /// the repeats; otherwise not a number.
  double accuracy = kNotANumber;
};

struct PermutationRecipe {
  int runs = 999;          ///< n, at least 1 and at most kMostPermutations
  std::uint64_t seed = 1;  ///< of RandomUse::Permutations
};

constexpr int kMostPermutations = 1000000;

/// What the runs of a model say.
struct PermutationTest {
  PermutationRun original;  ///< the model of the true Y, by the same calculation as the runs
  std::vector<PermutationRun> runs;
  PermutationJudgement judgement;
  Notes notes;
};

/// Judges the original by n runs, one at least. A run without a figure counts as better in its p, and lies on no line.
/// Judge by p: n = 99 runs can give 0.01 at the least, 999 give 0.001.
/// Sources: B. Phipson, G. K. Smyth, Stat. Appl. Genet. Mol. Biol. 9 (2010) 39; E. Szymanska et al., Metabolomics 8
/// (2012) S3-S16; for the lines J. Westerhuis et al., Metabolomics 4 (2008) 81-89.
KALMIA_EXPORT PermutationJudgement JudgePermutations(const PermutationRun& original,
                                                     const std::vector<PermutationRun>& runs);

}  // namespace kalmia::analysis

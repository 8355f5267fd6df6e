#pragma once

#include <vector>

#include "OPLSCase.h"
#include "kalmia/containers/NCIntegralVector.h"

/// Tables to validate, and the size of the block that is asked for.
struct RoundsCase {
  const char* name;
  int rows, xVariables, yVariables;
  double holes;
  int predictive;  ///< 0: each round decides
  /// Where it is not -1, Y has two variables, and the second is a thousandth of itself outside of this group: the block
  /// of the round that leaves the group out then has one component, those of the others have two. Half of X stands
  /// beside its mirror image with some noise: which of both a component starts from, and so where it points, is up to
  /// the rows.
  int strongGroup = -1;
  unsigned seed = 27;  ///< of the cells; with 55 components have to be turned among blocks of different sizes
};

constexpr int kRounds = 4;

/// The cells of a case, for default groups.
Tables TablesOf(const RoundsCase& which);

/// Complete and with holes, with blocks of one size and of different ones.
const std::vector<RoundsCase>& RoundsCases();

/// The tables without a group, and the group.
struct Division {
  Tables kept;
  NCDataMatrix<float> leftOut;
  std::vector<int> keptRows, leftOutRows;  ///< where they stand in the whole
};

Division Divide(const Tables& tables, const NCIntegralVector<int, -99>& groups, int group);

/// How many components were turned along those of the first round.
struct Turns {
  int predictive = 0, orthogonal = 0;
  int amongDifferentSizes = 0;  ///< predictive ones of a block that has not the size of the first round's
};

/// The models of the rounds, made one step after the other in all of them; after each step their newest components are
/// turned along those of the first.
std::vector<NCOPLS> ModelsOf(const std::vector<Division>& rounds, int predictive, int orthogonal,
                             Turns* turns = nullptr);

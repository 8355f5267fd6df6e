#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

// How many components a model is to have, by the errors of rows that were left out. No component at all, a = 0, takes
// part as a model like the others.

/// With E_i,a the squared error of row i under a components, MSE_a its mean over the rows, PRESS_a its sum, and b the
/// least a with the least PRESS:
enum class SelectionRule {
  /// The least a with MSE_a <= MSE_b + sd_i(E_i,b) / sqrt(n), sd with divisor n - 1: more components have to gain what
  /// matters beside the spread of the errors.
  /// Sources: L. Breiman, J. Friedman, R. Olshen, C. Stone, Classification and Regression Trees (1984), 3.4.3;
  /// T. Hastie, R. Tibshirani, J. Friedman, Elements of Statistical Learning, 2nd ed. (2009), 7.10.
  OneSE,
  /// The least a with p_a > alpha. p_a = (1 + flips with sum_i s_i d_i >= sum_i d_i) / (flips + 1), d_i = E_i,a - E_i,b
  /// and s_i = +-1 at random; the flips of all a have the same signs.
  /// Source: H. van der Voet, Chemom. Intell. Lab. Syst. 25 (1994) 313-323.
  Randomisation,
  Min,  ///< b
  Q2    ///< the last a before the first one with 1 - PRESS_a / PRESS_(a-1) <= limit
};

/// The words for the rules, in their order: one-se, randomisation, min and q2. Nothing for another word.
KALMIA_EXPORT const std::vector<std::string>& SelectionRuleWords();
KALMIA_EXPORT std::optional<SelectionRule> SelectionRuleOfWord(const std::string& word);
KALMIA_EXPORT const std::string& WordOfSelectionRule(SelectionRule rule);

struct SelectionRecipe {
  SelectionRule rule = SelectionRule::OneSE;
  double alpha = 0.05;     ///< of Randomisation, above 0 and below 1
  int flips = 999;         ///< of Randomisation, at least 1
  std::uint64_t seed = 1;  ///< of Randomisation
  double q2Limit = 0.05;   ///< of Q2
};

/// A number of components, and what was compared with what to choose it.
struct ComponentChoice {
  SelectionRule rule = SelectionRule::OneSE;
  std::size_t chosen = 0;
  std::size_t best = 0;  ///< b
  /// For each a: MSE_a (OneSE, Min), p_a (Randomisation), 1 - PRESS_a / PRESS_(a-1) (Q2; not a number for a = 0, or
  /// where PRESS_(a-1) is 0, which ends the search).
  std::vector<double> compared;
  double limit = 0.0;  ///< with which it was compared: MSE_b + standard error, MSE_b, alpha, the limit of Q2
};

/// Chooses among the columns of `rowErrors`, E of N rows under 0, 1, ... components; rows without one (not a number,
/// in all columns) do not count, and one row at least has one (not checked). Where rows belong together, `groupOfRow`
/// gives each its group, from 0 on: then the standard error and the flips take the groups' means for the n units they
/// go by, and MSE and PRESS the rows as ever. With one unit the standard error is 0.
/// Throws BadRequest for another alpha or number of flips, Stopped where `progress`, which may be null, wants to stop.
KALMIA_EXPORT ComponentChoice ChooseComponents(const RealMatrix& rowErrors, const SelectionRecipe& recipe,
                                               const std::vector<int>* groupOfRow = nullptr,
                                               NCProgress* progress = nullptr);

}  // namespace kalmia::analysis

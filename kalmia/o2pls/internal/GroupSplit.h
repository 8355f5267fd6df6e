#pragma once

#include <cstddef>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCIntegralVector.h"

namespace kalmia {

/// The rows of a table as a round of cross-validation sees them, each part in the order of the rows, and with as many
/// columns as the table even without rows. The rows share their cells with the table's.
struct GroupSplit {
  NCDataMatrix<float> training;  ///< the rows of all other groups
  NCDataMatrix<float> heldOut;   ///< the rows of the group
};

/// `groups` has one cell per row, which is not checked.
GroupSplit SplitByGroup(const NCDataMatrix<float>& table, const NCIntegralVector<int, -99>& groups, int group);

/// One more than the largest group number; 0 where no group has a number from 0 on.
std::size_t CountRounds(const NCIntegralVector<int, -99>& groups);

/// Whether there are over 10 000 rounds more than rows. At least so many leave no row out, and each costs as much as a
/// full one: such numbers are an error, before memory is taken for them.
bool AreTooManyRounds(const NCIntegralVector<int, -99>& groups);

}  // namespace kalmia

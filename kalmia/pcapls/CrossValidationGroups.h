#pragma once

#include "kalmia/containers/NCIntegralVector.h"

namespace kalmia {

/// The groups of a cross-validation: those given or, for null, GetDeafultCVGroupsVector of the rounds; with less than 1
/// round there is still group 0. Throws NCError where there is not one group for each of `count` observations or
/// variables: `what` says which, in the plural.
NCIntegralVector<int, -99> GroupsOrDefault(const NCIntegralVector<int, -99>* given, int count, int rounds,
                                           const char* what);

}  // namespace kalmia

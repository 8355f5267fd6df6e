#pragma once

#include "kalmia/containers/NCIntegralVector.h"

namespace kalmia {

/// The groups of a cross-validation: a deep copy of those given or, for null, GetDeafultCVGroupsVector of `count`
/// observations or variables and the rounds; with less than 1 round there is still group 0.
NCIntegralVector<int, -99> GroupsOrDefault(const NCIntegralVector<int, -99>* given, int count, int rounds);

/// Throws NCError where there is not one group for each of `count` observations or variables: `what` says which, in the
/// plural.
void RequireGroupForEach(const NCIntegralVector<int, -99>& groups, int count, const char* what);

/// Throws NCError where the model has not the `size` observations or variables any more that its validation was made
/// for; `what` says which, in the plural.
void RequireSizeOfModel(int size, int sizeOfModel, const char* what);

/// Throws NCError where an argument of a validation has not one cell for each variable. `name` is the argument's.
void RequireCellPerVariable(int cells, int variables, const char* name);

}  // namespace kalmia

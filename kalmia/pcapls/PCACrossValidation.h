#pragma once

#include "kalmia/containers/NCIntegralVector.h"

/// The default cross-validation groups of all model families: `count` cells, cell i (from 1) being i mod `groups`.
/// Group values start at 0: with 7 groups the cells run 1, 2, 3, 4, 5, 6, 0, 1 and so on. `groups` is at least 1, which
/// is not checked.
NCIntegralVector<int, -99> GetDeafultCVGroupsVector(int count, int groups);

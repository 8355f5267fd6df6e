#pragma once

#include <functional>
#include <vector>

#include "kalmia/support/NCProgress.h"

/// A calculation whose parts open bars of their own, unless they are given the caller's, which may be null.
struct CalculationWithABar {
  const char* what;
  std::function<std::vector<std::vector<float>>(NCProgress*)> run;  ///< some of its results
};

/// Expects that each reports to the bar it is given, opens none of its own then, opens some without, and gives the same
/// results either way.
void ExpectTheCallersBarInPlaceOfTheOwn(const std::vector<CalculationWithABar>& calculations);

/// Expects that each ends with an NCError where the bar it is given wants to stop at its first question.
void ExpectNCErrorsOnceTheCallersBarStops(const std::vector<CalculationWithABar>& calculations);

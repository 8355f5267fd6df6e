#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/figure/Figure.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// Figures as JSON, format kalmia-figure. Names that have a key stand once, under it, whatever the number of figures;
/// figures with one key have one list (the first is taken, not checked). Numbers have the fewest digits that read back
/// as the same number, and what is not finite is null.
KALMIA_EXPORT std::string FigureJson(const std::vector<Figure>& figures);

/// A JSON output of this library, an object, with the same in a last field `figures`. Cost: the output is read again.
KALMIA_EXPORT std::string JsonWithFigures(const std::string& json, const std::vector<Figure>& figures);

}  // namespace kalmia::analysis

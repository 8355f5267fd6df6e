#pragma once

#include <string>

#include "kalmia/analysis/figure/Figure.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

constexpr double kSmallestPicture = 240, kLargestPicture = 4000;  ///< pixels of a side

struct SvgOptions {
  double width = 0.0;   ///< pixels, from kSmallestPicture to kLargestPicture, not checked; 0: what suits the figure
  double height = 0.0;  ///< likewise; a picture of many panels may become higher
};

/// The drawing of a figure, as an SVG file that needs nothing else: the same bytes on every machine.
///
/// Every text lies inside the picture and over no other one: what is too long ends in "...", ticks that would touch are
/// left out, and names of items stand at one of eight places around them, selected ones first and the outermost next,
/// where there is room. Classes differ by shapes and dashes besides colours. Of points that fall on one half of a
/// pixel one is drawn, of lines and bars that have more items than pixels the lowest and the highest of each pixel. A
/// line below the picture says what was left out of it.
/// Cost: one pass over the items, beside the names.
KALMIA_EXPORT std::string FigureSvg(const Figure& figure, const SvgOptions& options = {});

}  // namespace kalmia::analysis

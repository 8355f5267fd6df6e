#pragma once

#include <cstddef>
#include <string>

#include "kalmia/analysis/report/ReportPage.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// What a page is drawn with: the contents of the files of these names.
struct ReportAssets {
  std::string echarts, script, style, notice;
};

constexpr std::size_t kLargestReport = 6000000;  ///< bytes

/// The page as one HTML file that needs nothing else and asks for nothing, whatever names the data bring.
///
/// Where it would be larger than `most` bytes, numbers are rounded to five digits of their range and names are cut;
/// then lines keep the lowest and the highest item of each stretch, and of the rows those remain that stand out in a
/// figure, with others evenly between. A note of the page says so. Below the size of the assets and what cannot be left
/// out it does not shrink.
/// Cost: one pass over the items, and one for each halving.
KALMIA_EXPORT std::string HtmlText(ReportPage report, const ReportAssets& assets, std::size_t most = kLargestReport);

}  // namespace kalmia::analysis

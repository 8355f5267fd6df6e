#pragma once

#include <string>

namespace kalmia::analysis {

/// Texts of a drawing that somebody chose; an empty one takes its default.
struct PlotTexts {
  std::string title, xLabel, yLabel;
};

}  // namespace kalmia::analysis

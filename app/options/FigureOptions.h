#pragma once

#include <functional>
#include <string>

#include "app/Analysis.h"
#include "kalmia/analysis/figure/FigureSvg.h"
#include "kalmia/analysis/figure/ModelFigures.h"

namespace kalmia::app {

class CommandOptions;

/// What is to be drawn, as words of a command line.
struct FigureOptions {
  std::string folder;   ///< of --svg; empty: no drawings
  std::string axes;     ///< "2,3"; empty: the usual ones
  std::string size;     ///< "720x480"; empty: what suits each figure
  std::string title;
  bool inJson = false;  ///< whether --json has the figures
  std::string report;   ///< of --report, a page; empty: none

  bool AreAsked() const { return inJson || !folder.empty(); }
};

/// Declares --svg DIR, --axes, --size, --title and --figures. `json` says whether JSON is printed.
void DeclareFigures(CommandOptions* command, FigureOptions* options, const bool* json);

/// Declares --report FILE.html.
void DeclareReport(CommandOptions* command, FigureOptions* options);

/// Declares --size, for a drawing whose place is `svg`; empty where there is none.
void DeclareSize(CommandOptions* command, std::string* size, const std::string* svg);

FigureRecipe RecipeOf(const FigureOptions& options);
/// Of a size that the declarations have accepted; 0 by 0 of an empty one.
SvgOptions SizeOf(const std::string& size);

}  // namespace kalmia::app

#pragma once

#include <string>
#include <vector>

#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// Names of the files that a fit has written.
struct FitFiles {
  std::string saved;             ///< the stored model; empty if there is none
  std::string savedCv;           ///< the cross-validation to go on from; empty if there is none
  std::string report;            ///< the page; empty if there is none
  std::vector<std::string> csv;  ///< with the folder
  std::vector<std::string> svg;  ///< likewise
};

/// "Saved the model as ...", "Wrote 11 files into ...", each after an empty line; empty where nothing was written.
KALMIA_EXPORT std::string WrittenText(const FitFiles& files);

/// "Wrote ...", a line for each file after an empty line; empty where there are none.
KALMIA_EXPORT std::string WrittenText(const std::vector<std::string>& paths);

}  // namespace kalmia::analysis

#pragma once

#include <string>
#include <vector>

namespace kalmia::analysis {

/// How the text of a table is to be understood, beyond what the text itself tells.
struct ReadOptions {
  std::vector<std::string>
      missingWords;  ///< taken for missing cells, beside empty ones, NA, NaN and nan; blanks around them are dropped
  int skipLines = 0;                      ///< lines before the header
  std::string comment;                    ///< a character: lines that begin with it are passed over; empty for none
};

}  // namespace kalmia::analysis

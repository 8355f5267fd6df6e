#pragma once

#include <string>
#include <utility>
#include <vector>

#include "kalmia/analysis/text/Failure.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// What was done of its own accord, one line each: columns that were left out, numbers that were cut.
class KALMIA_EXPORT Notes {
 public:
  /// `remedy` is what may help, for whoever shows the line to say.
  void Add(std::string line, Remedy remedy = Remedy::None) {
    lines_.push_back(std::move(line));
    remedies_.push_back(remedy);
  }
  void Add(const Notes& others) {
    lines_.insert(lines_.end(), others.lines_.begin(), others.lines_.end());
    remedies_.insert(remedies_.end(), others.remedies_.begin(), others.remedies_.end());
  }
  const std::vector<std::string>& Lines() const { return lines_; }
  const std::vector<Remedy>& Remedies() const { return remedies_; }  ///< one for each line

 private:
  std::vector<std::string> lines_;
  std::vector<Remedy> remedies_;
};

}  // namespace kalmia::analysis

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// What was done of its own accord, one line each: columns that were left out, numbers that were cut.
class KALMIA_EXPORT Notes {
 public:
  void Add(std::string line) { lines_.push_back(std::move(line)); }
  void Add(const Notes& others) { lines_.insert(lines_.end(), others.lines_.begin(), others.lines_.end()); }
  const std::vector<std::string>& Lines() const { return lines_; }

 private:
  std::vector<std::string> lines_;
};

}  // namespace kalmia::analysis

#pragma once

#include <string>
#include <utility>
#include <vector>

namespace kalmia::analysis {

/// What the command did of its own accord, one line each: columns it left out, numbers it cut. Shown on standard error
/// once the work has succeeded, and part of the JSON output.
class Notes {
 public:
  void Add(std::string line) { lines_.push_back(std::move(line)); }
  const std::vector<std::string>& Lines() const { return lines_; }

 private:
  std::vector<std::string> lines_;
};

}  // namespace kalmia::analysis

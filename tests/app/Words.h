#pragma once

#include <string>
#include <vector>

/// What stands on a command line behind `kalmia`.
using Words = std::vector<std::string>;

inline Words operator+(Words first, const Words& more) {
  first.insert(first.end(), more.begin(), more.end());
  return first;
}

#pragma once

#include <string>

namespace kalmia::analysis {

/// A CSV file still in memory.
struct CsvFile {
  std::string name;  ///< within the folder
  std::string bytes;
};

}  // namespace kalmia::analysis
